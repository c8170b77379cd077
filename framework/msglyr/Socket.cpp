#include "framework/msglyr/Socket.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace msglyr {
namespace {

// The most that the transport supports. A simulator opens thousands of sockets; an unused slot
// costs one pointer.
constexpr int kMaxSockets = 65535;

void seedGenerator() {
  unsigned seed = 0;
  if (getrandom(&seed, sizeof seed, 0) == static_cast<ssize_t>(sizeof seed)) {
    std::srand(seed);
  }
}

void* makeContext() {
  seedGenerator();
  void* context = zmq_ctx_new();
  if (context == nullptr) {
    throw TransportError("cannot create the transport context", errno);
  }
  zmq_ctx_set(context, ZMQ_MAX_SOCKETS, kMaxSockets);
  return context;
}

}  // namespace

TransportError::TransportError(const std::string& what, int error)
    : std::runtime_error(what + ": " + zmq_strerror(error)) {}

TransportError::TransportError(const std::string& what, const std::string& endPoint, int error)
    : TransportError(what + " '" + endPoint + "'", error) {}

void* Context::handle() {
  static void* const context = makeContext();
  return context;
}

Socket::Socket(int type) : handle_(zmq_socket(Context::handle(), type)) {
  if (handle_ == nullptr) {
    throw TransportError("cannot create a socket", errno);
  }
}

Socket::~Socket() {
  if (handle_ != nullptr) {
    zmq_close(handle_);
  }
}

Socket::Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

void Socket::set(int option, int value) {
  if (zmq_setsockopt(handle_, option, &value, sizeof value) != 0) {
    throw TransportError("cannot set socket option " + std::to_string(option), errno);
  }
}

void Socket::set(int option, std::string_view value) {
  if (zmq_setsockopt(handle_, option, value.data(), value.size()) != 0) {
    throw TransportError("cannot set socket option " + std::to_string(option), errno);
  }
}

void Socket::setMaxFrameBytes(std::size_t bytes) {
  const auto value = static_cast<std::int64_t>(bytes);
  if (zmq_setsockopt(handle_, ZMQ_MAXMSGSIZE, &value, sizeof value) != 0) {
    throw TransportError("cannot set the maximum message size", errno);
  }
}

int Socket::get(int option) const {
  int value = 0;
  std::size_t size = sizeof value;
  if (zmq_getsockopt(handle_, option, &value, &size) != 0) {
    throw TransportError("cannot read socket option " + std::to_string(option), errno);
  }
  return value;
}

void Socket::bind(const std::string& endPoint) {
  if (zmq_bind(handle_, endPoint.c_str()) != 0) {
    throw TransportError("cannot bind", endPoint, errno);
  }
}

void Socket::connect(const std::string& endPoint) {
  if (zmq_connect(handle_, endPoint.c_str()) != 0) {
    throw TransportError("cannot connect to", endPoint, errno);
  }
}

void Socket::disconnect(const std::string& endPoint) {
  if (zmq_disconnect(handle_, endPoint.c_str()) != 0) {
    throw TransportError("cannot disconnect from", endPoint, errno);
  }
}

std::string Socket::lastEndPoint() const {
  std::array<char, 512> text{};
  std::size_t size = text.size();
  if (zmq_getsockopt(handle_, ZMQ_LAST_ENDPOINT, text.data(), &size) != 0) {
    throw TransportError("cannot read the end point", errno);
  }
  return text.data();
}

namespace {

void drain(const Socket& socket, Frame& frame) {
  while (frame.hasMore() && frame.receive(socket)) {
  }
}

}  // namespace

Received receiveMessage(const Socket& socket, Frame& frame, const MessageLimits& limits,
                        std::string* routing, std::vector<std::string>& parts) {
  if (!frame.receive(socket)) {
    return {errno == EAGAIN || errno == EINTR ? Io::WouldBlock : Io::Failed};
  }
  if (routing != nullptr) {
    routing->assign(frame.bytes());
    // A routing frame always has a successor: the transport discards a bare one.
    if (!frame.hasMore() || !frame.receive(socket)) {
      return {Io::Failed};
    }
  }
  parts.clear();
  std::size_t total = 0;
  while (true) {
    const std::string_view bytes = frame.bytes();
    total += bytes.size();
    const bool tooMany = parts.size() == limits.maxParts;
    if (tooMany || total > limits.maxBytes) {
      drain(socket, frame);
      return {Io::Refused, tooMany};
    }
    parts.emplace_back(bytes);
    if (!frame.hasMore()) {
      return {Io::Done};
    }
    if (!frame.receive(socket)) {  // cannot be: a message is visible only as a whole
      return {Io::Failed};
    }
  }
}

namespace {

int sendFrame(const Socket& socket, const std::string& bytes, bool more) {
  const int flags = ZMQ_DONTWAIT | (more ? ZMQ_SNDMORE : 0);
  return zmq_send(socket.handle(), bytes.data(), bytes.size(), flags);
}

}  // namespace

Io sendMessage(const Socket& socket, const std::string* routing,
               const std::vector<std::string>& parts) {
  if (parts.empty()) {
    return Io::Done;
  }
  bool started = false;
  if (routing != nullptr) {
    if (sendFrame(socket, *routing, true) < 0) {
      return errno == EAGAIN ? Io::WouldBlock : Io::Failed;
    }
    started = true;
  }
  bool lost = false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (sendFrame(socket, parts[i], i + 1 < parts.size()) < 0) {
      if (!started) {
        return errno == EAGAIN ? Io::WouldBlock : Io::Failed;
      }
      // The peer vanished in the middle. The transport now discards up to the end of this
      // message, so the end has to be shown to it, or the next message would be discarded.
      lost = true;
    }
    started = true;
  }
  return lost ? Io::WouldBlock : Io::Done;
}

void applyBounds(Socket& socket, const Bounds& bounds) {
  socket.set(ZMQ_LINGER, 0);
  socket.setMaxFrameBytes(bounds.maxMessageBytes);
  socket.set(ZMQ_RCVHWM, bounds.receiveHwm);
  socket.set(ZMQ_SNDHWM, bounds.sendHwm);
  socket.set(ZMQ_BACKLOG, bounds.maxHandshakes);
  socket.set(ZMQ_HANDSHAKE_IVL, static_cast<int>(bounds.handshakeTimeout.count()));
  socket.set(ZMQ_HEARTBEAT_IVL, static_cast<int>(bounds.heartbeatInterval.count()));
  socket.set(ZMQ_HEARTBEAT_TIMEOUT, static_cast<int>(bounds.heartbeatTimeout.count()));
}

}  // namespace msglyr
