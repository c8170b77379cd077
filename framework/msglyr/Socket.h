#pragma once

#include <zmq.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "framework/msglyr/Bounds.h"

// The thin C++ over the C library. Only this folder's sources include it.

namespace msglyr {

// A failure of the transport: "what: cause", or "what 'end point': cause".
class TransportError : public std::runtime_error {
 public:
  TransportError(const std::string& what, int error);
  TransportError(const std::string& what, const std::string& endPoint, int error);
};

// The process's one transport context. It is made on first use, after the C library's random
// generator was seeded: the transport derives the identities of anonymous peers from it. It is
// never destroyed, so that threads which still use a socket at the end of the process are safe.
class Context {
 public:
  static void* handle();
};

// Owns one socket. Operations belong to one thread at a time; a lock around them is fence enough
// to move between threads.
class Socket {
 public:
  explicit Socket(int type);  // throws TransportError
  ~Socket();
  Socket(Socket&& other) noexcept;
  Socket& operator=(Socket&& other) noexcept;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  void set(int option, int value);  // throws TransportError
  void set(int option, std::string_view value);
  void setMaxFrameBytes(std::size_t bytes);
  int get(int option) const;
  int fd() const { return get(ZMQ_FD); }
  int events() const { return get(ZMQ_EVENTS); }  // also re-arms fd

  void bind(const std::string& endPoint);  // these throw TransportError
  void connect(const std::string& endPoint);
  void disconnect(const std::string& endPoint);
  std::string lastEndPoint() const;

  void* handle() const { return handle_; }

 private:
  void* handle_;
};

// Owns one frame's memory; reused from frame to frame.
class Frame {
 public:
  Frame() { zmq_msg_init(&message_); }
  ~Frame() { zmq_msg_close(&message_); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // Takes the next frame if there is one. False with errno otherwise (EAGAIN: nothing there).
  bool receive(const Socket& socket) {
    return zmq_msg_recv(&message_, socket.handle(), ZMQ_DONTWAIT) >= 0;
  }
  std::string_view bytes() {
    return {static_cast<const char*>(zmq_msg_data(&message_)), zmq_msg_size(&message_)};
  }
  bool hasMore() const { return zmq_msg_more(&message_) != 0; }

 private:
  zmq_msg_t message_;
};

enum class Io { Done, WouldBlock, Refused, Failed };

// What one multipart message may hold.
struct MessageLimits {
  std::size_t maxBytes;
  unsigned maxParts;
};

struct Received {
  Io outcome = Io::WouldBlock;
  bool tooManyParts = false;  // if refused: for its parts, not for its bytes
};

// Takes one whole message without waiting. A message beyond the limits is drained and refused.
// With `routing`, the first frame is the peer's and goes there. On anything but Done the content
// of `parts` is unspecified. Frame is scratch.
Received receiveMessage(const Socket& socket, Frame& frame, const MessageLimits& limits,
                        std::string* routing, std::vector<std::string>& parts);

// Sends one whole message without waiting, all of it or nothing. WouldBlock: the peer does not
// read, or there is none; Failed: with errno. With `routing`, that peer's frame goes first.
Io sendMessage(const Socket& socket, const std::string* routing,
               const std::vector<std::string>& parts);

// Linger, sizes, high-water marks, time-outs and heartbeats, as the bounds say.
void applyBounds(Socket& socket, const Bounds& bounds);

}  // namespace msglyr
