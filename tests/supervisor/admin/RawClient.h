#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace supervisor::admin {

/// Speaks bytes on a Unix socket, as they are given. Waits generously; what does not come in time
/// fails the test.
class RawClient {
 public:
  explicit RawClient(const std::string& path)
      : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    EXPECT_EQ(::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0)
        << path << " errno " << errno;
  }
  ~RawClient() { close(); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  void close() {
    if (descriptor_ >= 0) {
      ::close(std::exchange(descriptor_, -1));
    }
  }
  /// False when the server has closed.
  bool send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
      const ssize_t step =
          ::send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (step < 0) {
        return false;
      }
      sent += static_cast<std::size_t>(step);
    }
    return true;
  }
  void shutdownSending() { ::shutdown(descriptor_, SHUT_WR); }

  /// One response: its head, and as much body as Content-Length says.
  std::string response() {
    while (received_.find("\r\n\r\n") == std::string::npos && more()) {
    }
    const std::size_t head = received_.find("\r\n\r\n");
    const std::size_t field = received_.find("Content-Length: ");
    if (head == std::string::npos || field == std::string::npos) {
      return std::exchange(received_, "");
    }
    const std::size_t size = head + 4 + std::stoul(received_.substr(field + 16));
    while (received_.size() < size && more()) {
    }
    std::string one = received_.substr(0, size);
    received_.erase(0, size);
    return one;
  }
  /// Everything up to the end that the server makes.
  std::string untilClosed() {
    while (more()) {
    }
    return std::exchange(received_, "");
  }
  /// Whether the server has closed, within the time.
  bool isClosed(int milliseconds = 0) {
    pollfd wait{descriptor_, POLLIN, 0};
    char byte = 0;
    return ::poll(&wait, 1, milliseconds) > 0 &&
           ::recv(descriptor_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) <= 0;
  }

 private:
  bool more() {
    constexpr int kWithin = 30'000;  // ms
    pollfd wait{descriptor_, POLLIN, 0};
    if (::poll(&wait, 1, kWithin) <= 0) {
      ADD_FAILURE() << "nothing came; until then: " << received_;
      return false;
    }
    char piece[65536];
    const ssize_t size = ::recv(descriptor_, piece, sizeof piece, 0);
    if (size > 0) {
      received_.append(piece, static_cast<std::size_t>(size));
    }
    return size > 0;
  }

  int descriptor_;
  std::string received_;
};

}  // namespace supervisor::admin
