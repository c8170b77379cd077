#include "tests/serviceOrchAG/bridge/RawBlade.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace zan_serviceOrchAG {
namespace {

using msglyr::FileDescriptor;

constexpr int kPatienceMs = 30000;

// The transport's protocol, version 3: a greeting of 64 bytes, then frames of a byte with flags,
// one of eight with the size, and the body. The first frame is a command that tells the socket's
// type.
constexpr std::size_t kGreetingBytes = 64;
constexpr unsigned kMore = 1;
constexpr unsigned kLong = 2;
constexpr unsigned kCommand = 4;

std::string greeting() {
  std::string bytes(kGreetingBytes, '\0');
  bytes[0] = '\xff';
  bytes[9] = '\x7f';
  bytes[10] = 3;
  bytes.replace(12, 4, "NULL");
  return bytes;
}

std::string ready() {
  using std::string_literals::operator""s;
  const std::string body = "\x05READY\x0bSocket-Type\0\0\0\x06ROUTER"s;
  return std::string{static_cast<char>(kCommand), static_cast<char>(body.size())} + body;
}

FileDescriptor listen() {
  FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener.get(), 64) != 0) {
    throw std::system_error(errno, std::generic_category(), "listen");
  }
  return listener;
}

void waitFor(int socket) {
  pollfd polled{socket, POLLIN, 0};
  if (::poll(&polled, 1, kPatienceMs) <= 0) {
    throw std::runtime_error("the other side of a blade's connection is silent");
  }
}

}  // namespace

RawBlade::RawBlade()
    : listener_(listen()),
      connection_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket") {}

std::uint16_t RawBlade::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

void RawBlade::accept() {
  close();
  waitFor(listener_.get());
  connection_ =
      FileDescriptor(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC), "accept");
}

bool RawBlade::shakeHands() {
  std::string theirs;
  Frame command;
  return write(greeting()) && read(theirs, kGreetingBytes) && write(ready()) && readFrame(command);
}

void RawBlade::acceptAlive() {
  do {
    accept();
  } while (!shakeHands());
}

std::string RawBlade::takeDocument() {
  Frame frame;
  do {
    if (!readFrame(frame)) {
      throw std::runtime_error("the connection ended before a whole command");
    }
  } while ((frame.flags & (kMore | kCommand)) != 0);
  return frame.body;
}

bool RawBlade::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(connection_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void RawBlade::waitForEnd() {
  std::string passedOver;
  while (read(passedOver, 1)) {
  }
}

void RawBlade::close() {
  ::shutdown(connection_.get(), SHUT_RDWR);
  connection_ = FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
}

std::string RawBlade::part(std::string_view body, bool hasMore) {
  return partHeader(body.size(), hasMore).append(body);
}

std::string RawBlade::partHeader(std::uint64_t size, bool hasMore) {
  std::string bytes(1, static_cast<char>(kLong | (hasMore ? kMore : 0)));
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(size >> shift & 0xff);
  }
  return bytes;
}

bool RawBlade::read(std::string& bytes, std::size_t size) {
  bytes.resize(size);
  for (std::size_t got = 0; got < size;) {
    waitFor(connection_.get());
    const ssize_t count = ::recv(connection_.get(), bytes.data() + got, size - got, 0);
    if (count <= 0) {
      return false;
    }
    got += static_cast<std::size_t>(count);
  }
  return true;
}

bool RawBlade::readFrame(Frame& frame) {
  std::string bytes;
  if (!read(bytes, 1)) {
    return false;
  }
  frame.flags = static_cast<unsigned char>(bytes[0]);
  if (!read(bytes, (frame.flags & kLong) != 0 ? 8 : 1)) {
    return false;
  }
  std::uint64_t size = 0;
  for (const char byte : bytes) {
    size = size << 8 | static_cast<unsigned char>(byte);
  }
  return read(frame.body, size);
}

}  // namespace zan_serviceOrchAG
