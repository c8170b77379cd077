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
//
// What was handed to the kernel is repeated by it until the server acknowledges it, whatever
// becomes of the socket. So each DEALER has a time after which the kernel gives up, and a request
// goes out only while that ends before the request's deadline.
class ClientEnd {
 public:
  using Clock = std::chrono::steady_clock;

  // Leaves the former server, with all that is under way. The connection is made with the next
  // request. Throws TransportError if the end point is malformed; the channel then has no server.
  void connect(const std::string& endPoint);

  // As MsgLyrChannel::send; never blocks. The request counts as sent and goes out in the receive
  // that follows, which knows how much time it has. It replaces one that still waits. Throws
  // std::logic_error if connect has not succeeded.
  int send(const Message& message);

  // As MsgLyrChannel::receive. The time-out counts from the last send, once, else from now. A
  // request that cannot go out in time for the kernel to give it up by then is given up, perhaps
  // before it passes, and the connection with it, as after every failure. Replies that arrived
  // before the request went out cannot be answers to it: they are dropped with the connection that
  // they came by. Throws TransportError if the process is out of descriptors.
  int receive(Message& message, std::optional<std::chrono::milliseconds> timeout);

  const std::string& endPoint() const { return endPoint_; }

 private:
  // A connection, or the making of one.
  struct Line {
    Socket socket;
    std::chrono::milliseconds life;  // of a request, once it has gone out
  };
  struct Deadline {
    Clock::time_point end;
    Clock::time_point lastMoments;  // from when on no request goes out
  };

  void giveUp();
  int await(Message& message, const std::optional<Deadline>& deadline);
  bool prepareLine(const std::optional<Deadline>& deadline);
  bool sendWaiting();
  bool hasArrived();
  bool waitUntil(const std::optional<Deadline>& deadline) const;

  std::string endPoint_;
  std::optional<Line> line_;
  Frame frame_;
  std::optional<std::vector<std::string>> waiting_;  // a request that has not gone out
  std::optional<Clock::time_point> sendBegan_;       // until the next receive
};

}  // namespace msglyr
