#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "framework/msglyr/Message.h"

namespace msglyr {

// Thousands of sockets driven by one thread: connecting ones, each with its own connection to a
// server, and listening ones, each at its own end point. Waiting costs per socket that has
// something to say, not per socket.
//
// Everything but wake belongs to one thread. Operations that name an index throw
// std::out_of_range if it is not in use.
class DealerSet {
 public:
  using Index = std::size_t;

  // One message that arrived. `routing` is empty for a connecting socket; for a listener it is
  // the peer to give to reply. It may send, reply, add and remove, also the index at hand.
  using Handler = std::function<void(Index index, const std::string& routing, Message& message)>;

  DealerSet();
  ~DealerSet();
  DealerSet(const DealerSet&) = delete;
  DealerSet& operator=(const DealerSet&) = delete;

  // Connects in the background. Throws std::runtime_error if the end point is malformed or the
  // process is out of descriptors. An index is used again after remove.
  Index add(const std::string& endPoint);

  // Listens; "tcp://127.0.0.1:*" lets the system choose the port. Throws std::runtime_error if
  // the end point cannot be bound.
  Index addListener(const std::string& endPoint);

  // The end point that a listener is bound to, or a connecting socket was given.
  const std::string& endPoint(Index index) const;

  // Closes the socket; what it has not sent yet is given up.
  void remove(Index index);

  std::size_t size() const;

  // Sends on a connecting socket. False, and nothing is sent, if there is no connection at the
  // moment or the server does not read.
  bool send(Index index, const Message& message);

  // Answers a peer of a listener. False if it is gone or does not read.
  bool reply(Index index, const std::string& routing, const Message& message);

  // Waits up to `timeout` (negative: without limit) until a socket has something, hands over all
  // that has arrived, and returns the number of messages.
  std::size_t poll(std::chrono::milliseconds timeout, const Handler& handler);

  // Ends a poll that waits, or else the next one, early. Any thread, and signal handlers.
  void wake();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace msglyr
