#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "framework/msglyr/FileDescriptor.h"

namespace msglyr::test {

// An end point that nobody listens at. It lies below the ephemeral range, so that nobody is given
// it meanwhile and the channel cannot connect to itself.
inline std::string vacantEndPoint() {
  for (int port = 20000 + static_cast<int>(getpid()) % 10000; port < 32000; ++port) {
    const FileDescriptor probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(probe.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      return "tcp://127.0.0.1:" + std::to_string(port);
    }
  }
  throw std::runtime_error("no vacant port");
}

}  // namespace msglyr::test
