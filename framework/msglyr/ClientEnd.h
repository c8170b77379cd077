#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "framework/msglyr/Message.h"
#include "framework/msglyr/Socket.h"

namespace msglyr {

// The connecting side of a channel: a DEALER that has a connection or holds its request back. The
// DEALER exists from the first request on, and no longer than to the first one that is not
// answered: a blade that is not commanded costs no descriptor, and one that is gone is not dialled
// for ever. Not synchronised.
class ClientEnd {
 public:
  using Clock = std::chrono::steady_clock;

  // Leaves the former server, with all that is under way. The connection is made with the next
  // request. Throws TransportError if the end point is malformed; the channel then has no server.
  void connect(const std::string& endPoint);

  // As MsgLyrChannel::send; never blocks. A request that waits for the connection counts as
  // sent. It replaces one that still waits, and replies that have arrived already are dropped:
  // they cannot be answers to it. Throws std::logic_error if connect has not succeeded, and
  // TransportError if the process is out of descriptors.
  int send(const Message& message);

  // As MsgLyrChannel::receive. The time-out counts from the last send, once, else from now; a
  // request that still waits for the connection when it passes is given up, and the connection
  // with it, as after every failure.
  int receive(Message& message, std::optional<std::chrono::milliseconds> timeout);

  const std::string& endPoint() const { return endPoint_; }

 private:
  const Socket& connected();
  int await(Message& message, std::optional<Clock::time_point> deadline);
  void dropArrived();
  bool sendWaiting();
  bool waitUntil(std::optional<Clock::time_point> deadline) const;

  std::string endPoint_;
  std::optional<Socket> socket_;
  Frame frame_;
  std::optional<std::vector<std::string>> waiting_;  // a request without a connection to go by
  std::optional<Clock::time_point> sendBegan_;       // until the next receive
};

}  // namespace msglyr
