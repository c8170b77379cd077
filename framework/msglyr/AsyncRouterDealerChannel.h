#pragma once

#include <memory>
#include <string>

#include "framework/msglyr/MsgLyrChannel.h"

namespace msglyr {

// Which end of a channel an object is. The values are part of the service's vocabulary.
using role_t = int;
inline constexpr role_t kRoleClient = 4;         // connects, sends one request, takes the reply
inline constexpr role_t kRoleRequestWorker = 5;  // takes requests from a shared server end point

// A channel of request and reply over TCP.
//
// Role kRoleClient. setServerEndPoint names one server; called again, it leaves the former server
// first. The connection is made with the first request and given up after one that is not
// answered, and after one that was answered more than once; a channel that is not used costs no
// descriptor. The deadline is the receive time-out, counted from the start of send: send(m) and
// then receive(m, 10000) end together within ten seconds. send returns the number of parts, and
// the request goes out in receive as soon as the connection exists. A request that is not answered
// by the deadline is given up: it does not reach the server later, neither from here nor from the
// kernel, which repeats what a cut link has lost. So none goes out in the last second, and receive
// returns 0 then; with time-outs below two seconds the kernel may still deliver one too late.
// Several threads may use one channel under a lock of their own.
//
// Role kRoleRequestWorker. Channels of one process that name the same three texts (name, server
// end point, worker end point) share one listening socket, and each of them takes the next
// request as soon as it calls receive: a request waits for a busy worker only if all are busy, or
// for a moment until it shows that the worker at hand is. One that waits on an os::WaitableEvent
// shows it at once.
// send answers the peer whose request this channel received last, whatever the address; it
// never blocks, and returns -1 if that peer is gone or does not read its replies. Each channel
// belongs to one thread at a time.
//
// Both setters throw std::runtime_error naming the end point and the cause if the end point is
// malformed or, for a worker, cannot be bound. A channel may then be destroyed, or the setter be
// called again.
class AsyncRouterDealerChannel : public MsgLyrChannel {
 public:
  // Throws std::invalid_argument for another role. `name` is a label, never a wire identity.
  AsyncRouterDealerChannel(std::string name, role_t role);
  ~AsyncRouterDealerChannel() override;
  AsyncRouterDealerChannel(const AsyncRouterDealerChannel&) = delete;
  AsyncRouterDealerChannel& operator=(const AsyncRouterDealerChannel&) = delete;

  // Client: names the server. Worker: binds as soon as the worker end point is known too.
  void setServerEndPoint(std::string endPoint);

  // Worker: names the group of workers that share the server end point. Client: no effect.
  void setWorkerEndPoint(std::string endPoint);

  int send(const char* address, Message* message) override;
  int receive(char* address, Message* message, long timeoutMs) override;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace msglyr
