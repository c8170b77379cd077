#include <zmq.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "bench/request_path/Server.h"

namespace request_path {
namespace {

constexpr int kWorkers = 5;

// Takes a message, all frames of it, and sends it back.
void echoForever(void* socket) {
  zmq_msg_t frame;
  zmq_msg_init(&frame);
  while (zmq_msg_recv(&frame, socket, 0) >= 0) {
    const int flags = zmq_msg_more(&frame) != 0 ? ZMQ_SNDMORE : 0;
    if (zmq_msg_send(&frame, socket, flags) < 0) {
      break;
    }
  }
}

void* bindRouter(void* context, std::array<char, 256>& endPoint) {
  void* router = zmq_socket(context, ZMQ_ROUTER);
  std::size_t size = endPoint.size();
  if (zmq_bind(router, "tcp://127.0.0.1:*") != 0 ||
      zmq_getsockopt(router, ZMQ_LAST_ENDPOINT, endPoint.data(), &size) != 0) {
    std::perror("bind");
    std::_Exit(1);
  }
  return router;
}

}  // namespace

void announceAndWait(const char* endPoint) {
  std::printf("%s\n", endPoint);
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  std::_Exit(0);
}

int serveProxy() {
  void* context = zmq_ctx_new();
  std::array<char, 256> endPoint{};
  void* router = bindRouter(context, endPoint);
  void* dealer = zmq_socket(context, ZMQ_DEALER);
  zmq_bind(dealer, "inproc://worker-end-point");
  std::thread([=] { zmq_proxy(router, dealer, nullptr); }).detach();
  for (int i = 0; i < kWorkers; ++i) {
    void* worker = zmq_socket(context, ZMQ_DEALER);
    zmq_connect(worker, "inproc://worker-end-point");
    std::thread([=] { echoForever(worker); }).detach();
  }
  announceAndWait(endPoint.data());
}

int serveRouter() {
  void* context = zmq_ctx_new();
  std::array<char, 256> endPoint{};
  void* router = bindRouter(context, endPoint);
  std::thread([=] { echoForever(router); }).detach();
  announceAndWait(endPoint.data());
}

}  // namespace request_path
