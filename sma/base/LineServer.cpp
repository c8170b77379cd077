#include "sma/base/LineServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace sma {
namespace {

constexpr std::size_t kMostConnections = 16;
constexpr int kBacklog = 16;
constexpr mode_t kOwnerOnly = 0177;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw std::runtime_error(path + ": " + what);
}

[[noreturn]] void failWithCause(const std::string& path, const std::string& what) {
  fail(path, what + ": " + std::generic_category().message(errno));
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    fail(path, "the path of a socket has 1 to " + std::to_string(sizeof address.sun_path - 1) +
                   " characters");
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

const sockaddr* asSockaddr(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

msglyr::FileDescriptor makeSocket() {
  return {socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket"};
}

/// Removes what a simulator left that was killed.
void removeStale(const std::string& path, const sockaddr_un& address) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return;
  }
  if (!S_ISSOCK(status.st_mode)) {
    fail(path, "there is a file that is no socket");
  }
  const auto probe = makeSocket();
  if (connect(probe.get(), asSockaddr(address), sizeof address) == 0 || errno != ECONNREFUSED) {
    fail(path, "somebody listens there already");
  }
  unlink(path.c_str());
}

msglyr::FileDescriptor listenAt(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  removeStale(path, address);
  auto listener = makeSocket();
  // The mask is the process's own; this comes before any thread that makes files.
  const mode_t mask = umask(kOwnerOnly);
  const int bound = bind(listener.get(), asSockaddr(address), sizeof address);
  umask(mask);
  if (bound != 0 || listen(listener.get(), kBacklog) != 0) {
    failWithCause(path, "cannot listen there");
  }
  return listener;
}

}  // namespace

LineServer::LineServer(const std::string& path, Answer answer, std::string tooLong)
    : path_(path),
      answer_(std::move(answer)),
      tooLong_(std::move(tooLong)),
      listener_(listenAt(path)),
      thread_([this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
          serve();
        }
      }) {}

LineServer::~LineServer() {
  thread_.request_stop();
  wakeUp_.signal();
  thread_.join();
  unlink(path_.c_str());
}

void LineServer::serve() {
  std::vector<pollfd> waits{{wakeUp_.fd(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
  for (const Connection& each : connections_) {
    const bool sends = !each.toSend.empty();
    waits.push_back({each.socket.get(), static_cast<short>(sends ? POLLOUT : POLLIN), 0});
  }
  if (poll(waits.data(), waits.size(), -1) < 0) {
    return;
  }
  auto wait = waits.begin() + 2;
  for (auto each = connections_.begin(); each != connections_.end(); ++wait) {
    each = isAlive(*each, wait->revents) ? std::next(each) : connections_.erase(each);
  }
  if (waits[1].revents != 0) {
    accept();
  }
}

void LineServer::accept() {
  const int fd = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (fd < 0) {
    return;
  }
  msglyr::FileDescriptor socket(fd, "accept");
  if (connections_.size() < kMostConnections) {
    connections_.push_back({std::move(socket), "", ""});
  }
}

bool LineServer::isAlive(Connection& connection, short events) {
  if (events == 0) {
    return true;
  }
  // A peer that does not read its answers is asked no more.
  if (connection.toSend.empty() && !receive(connection)) {
    return false;
  }
  answerLines(connection);
  return send(connection);
}

bool LineServer::receive(Connection& connection) {
  std::array<char, 4096> piece{};
  const ssize_t got = recv(connection.socket.get(), piece.data(), piece.size(), 0);
  if (got > 0) {
    connection.received.append(piece.data(), static_cast<std::size_t>(got));
    return true;
  }
  return got < 0 && (errno == EAGAIN || errno == EINTR);
}

void LineServer::answerLines(Connection& connection) {
  std::string& received = connection.received;
  while (connection.toSend.empty() && !connection.isEnding) {
    const std::size_t end = received.find('\n');
    if (std::min(end, received.size()) > kMostLine) {
      connection.toSend = tooLong_ + '\n';
      connection.isEnding = true;
    } else if (end == std::string::npos) {
      return;
    } else {
      connection.toSend = answer_(received.substr(0, end)) + '\n';
      received.erase(0, end + 1);
    }
  }
}

bool LineServer::send(Connection& connection) {
  while (!connection.toSend.empty()) {
    const ssize_t sent = ::send(connection.socket.get(), connection.toSend.data(),
                                connection.toSend.size(), MSG_NOSIGNAL);
    if (sent < 0) {
      return errno == EAGAIN || errno == EINTR;
    }
    connection.toSend.erase(0, static_cast<std::size_t>(sent));
    if (connection.toSend.empty()) {
      answerLines(connection);
    }
  }
  return !connection.isEnding;
}

}  // namespace sma
