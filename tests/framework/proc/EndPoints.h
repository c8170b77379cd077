#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace test_support {

/// A port of the loopback interface that nobody listens on, below those that the system gives to
/// outgoing connections.
inline std::uint16_t freePort() {
  static std::uint16_t next = static_cast<std::uint16_t>(20000 + getpid() % 10000);
  for (;; ++next) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(next);
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isFree =
        bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(probe);
    if (isFree) {
      return next++;
    }
  }
}

/// An end point of the kind "inproc", "ipc" or "tcp" that nobody uses.
inline std::string freeEndPoint(const std::string& kind) {
  static std::atomic<unsigned> next{0};
  const std::string name = std::to_string(getpid()) + "-" + std::to_string(++next);
  if (kind == "inproc") {
    return "inproc://engine-" + name;
  }
  if (kind == "ipc") {
    return "ipc://" + testing::TempDir() + "zan-engine-" + name;
  }
  return "tcp://127.0.0.1:" + std::to_string(freePort());
}

}  // namespace test_support
