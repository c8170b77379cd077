#include "bench/command_round_trip/BareEcho.h"

#include <zmq.h>

#include <stdexcept>
#include <string_view>
#include <utility>

namespace command_round_trip {

BareEcho::BareEcho(const std::string& endPoint, std::vector<std::string> parts)
    : context_(zmq_ctx_new()), socket_(zmq_socket(context_, ZMQ_DEALER)), parts_(std::move(parts)) {
  if (zmq_connect(socket_, endPoint.c_str()) != 0) {
    throw std::runtime_error("cannot connect to " + endPoint);
  }
}

BareEcho::~BareEcho() {
  zmq_close(socket_);
  zmq_ctx_term(context_);
}

bool BareEcho::exchange() {
  for (const std::string& part : parts_) {
    const int flags = &part == &parts_.back() ? 0 : ZMQ_SNDMORE;
    if (zmq_send(socket_, part.data(), part.size(), flags) < 0) {
      return false;
    }
  }
  bool isSame = true;
  zmq_msg_t frame;
  zmq_msg_init(&frame);
  for (const std::string& part : parts_) {
    if (zmq_msg_recv(&frame, socket_, 0) < 0) {
      isSame = false;
      break;
    }
    const std::string_view bytes(static_cast<const char*>(zmq_msg_data(&frame)),
                                 zmq_msg_size(&frame));
    isSame = isSame && bytes == part && (zmq_msg_more(&frame) != 0) == (&part != &parts_.back());
  }
  zmq_msg_close(&frame);
  return isSame;
}

}  // namespace command_round_trip
