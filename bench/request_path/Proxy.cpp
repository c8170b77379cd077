#include <zmq.h>

#include <string>
#include <thread>

#include "bench/load/EchoServer.h"
#include "bench/request_path/Server.h"

namespace request_path {

void serveProxy() {
  constexpr int kWorkers = 5;
  void* context = zmq_ctx_new();
  std::string endPoint;
  void* router = load::bindRouter(context, endPoint);
  void* dealer = zmq_socket(context, ZMQ_DEALER);
  zmq_bind(dealer, "inproc://worker-end-point");
  std::thread([=] { zmq_proxy(router, dealer, nullptr); }).detach();
  for (int i = 0; i < kWorkers; ++i) {
    void* worker = zmq_socket(context, ZMQ_DEALER);
    zmq_connect(worker, "inproc://worker-end-point");
    std::thread([=] { load::echoForever(worker); }).detach();
  }
  load::announceAndWait(endPoint);
}

}  // namespace request_path
