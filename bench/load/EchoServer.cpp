#include "bench/load/EchoServer.h"

#include <zmq.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace load {

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

void* bindRouter(void* context, std::string& endPoint) {
  void* router = zmq_socket(context, ZMQ_ROUTER);
  std::array<char, 256> text{};
  std::size_t size = text.size();
  if (zmq_bind(router, "tcp://127.0.0.1:*") != 0 ||
      zmq_getsockopt(router, ZMQ_LAST_ENDPOINT, text.data(), &size) != 0) {
    std::perror("bind");
    std::_Exit(1);
  }
  endPoint = text.data();
  return router;
}

void announceAndWait(const std::string& endPoint) {
  std::printf("%s\n", endPoint.c_str());
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  std::_Exit(0);
}

void serveRouter() {
  std::string endPoint;
  void* router = bindRouter(zmq_ctx_new(), endPoint);
  std::thread([=] { echoForever(router); }).detach();
  announceAndWait(endPoint);
}

}  // namespace load
