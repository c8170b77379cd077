#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "framework/msglyr/RequestDispatcher.h"
#include "tests/framework/msglyr/TestPeer.h"

namespace msglyr::test {

// Threads that serve one end point as the gateway's workers do: each with a channel of its own,
// receiving without a time limit, handling, and sending the same message back. They end when each
// has got a message of its own that says so.
class RequestWorkers {
 public:
  using Handler = std::function<void(Message&)>;

  // `group` keeps apart what different tests bind.
  RequestWorkers(const std::string& group, int count, Handler handler)
      : group_(group), dispatcher_(RequestDispatcher::join(group, kServer, kWorker)) {
    for (int i = 0; i < count; ++i) {
      threads_.emplace_back([this, handler] { serve(handler); });
    }
  }
  ~RequestWorkers() {
    TestPeer peer = TestPeer::connected(endPoint());
    for (std::size_t i = 0; i < threads_.size(); ++i) {
      peer.send({kStop});
    }
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }
  RequestWorkers(const RequestWorkers&) = delete;
  RequestWorkers& operator=(const RequestWorkers&) = delete;

  std::string endPoint() { return dispatcher_->endPoint(); }

  static constexpr const char* kServer = "tcp://127.0.0.1:*";
  static constexpr const char* kWorker = "inproc://worker-end-point";

 private:
  static constexpr const char* kStop = "stop this worker";

  void serve(const Handler& handler) {
    AsyncRouterDealerChannel channel(group_, kRoleRequestWorker);
    channel.setServerEndPoint(kServer);
    channel.setWorkerEndPoint(kWorker);
    while (true) {
      Message message;
      if (channel.receive(nullptr, &message, -1) > 0) {
        if (message[0] == kStop) {
          return;
        }
        handler(message);
        channel.send("", &message);
      }
    }
  }

  const std::string group_;
  const std::shared_ptr<RequestDispatcher> dispatcher_;
  std::vector<std::thread> threads_;
};

}  // namespace msglyr::test
