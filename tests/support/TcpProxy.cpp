#include "tests/support/TcpProxy.h"

#include <linux/filter.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>
#include <vector>

namespace test_support {
namespace {

using msglyr::FileDescriptor;

constexpr std::chrono::seconds kPatience{30};

// Of the message transport's handshake: a greeting, and then a command that tells the socket's
// type: a byte 4, one that tells the size of the rest, and the rest.
constexpr std::size_t kGreetingBytes = 64;

bool hasWholeHandshake(const std::string& bytes) {
  return bytes.size() >= kGreetingBytes + 2 &&
         bytes.size() >= kGreetingBytes + 2 + static_cast<unsigned char>(bytes[kGreetingBytes + 1]);
}

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

FileDescriptor makeSocket() {
  return {::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"};
}

FileDescriptor listenAt(std::uint16_t port) {
  FileDescriptor listener = makeSocket();
  const int on = 1;
  ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in address = loopback(port);
  if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener.get(), 16) != 0) {
    throw std::system_error(errno, std::generic_category(), "listen");
  }
  return listener;
}

std::uint16_t portOf(const FileDescriptor& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

/// A filter that passes nothing. Segments are dropped as if they had never come.
void dropIncoming(int socket) {
  sock_filter nothing{BPF_RET | BPF_K, 0, 0, 0};
  const sock_fprog program{1, &nothing};
  if (::setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0) {
    throw std::system_error(errno, std::generic_category(), "attach a filter");
  }
}

void passIncoming(int socket) {
  const int unused = 0;
  ::setsockopt(socket, SOL_SOCKET, SO_DETACH_FILTER, &unused, sizeof unused);
}

bool write(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// False at the end of the connection.
bool read(int socket, std::string& bytes) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (count > 0) {
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

std::size_t countOf(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace

TcpProxy::TcpProxy(std::uint16_t server, std::uint16_t port)
    : listener_(listenAt(port)),
      server_(server),
      port_(portOf(listener_)),
      thread_([this] { run(); }) {}

TcpProxy::~TcpProxy() {
  {
    const std::lock_guard guard(mutex_);
    ends_ = true;
  }
  wakeUp_.signal();
  thread_.join();
}

void TcpProxy::cut() {
  const std::lock_guard guard(mutex_);
  setCut(true);
}

void TcpProxy::mend() {
  const std::lock_guard guard(mutex_);
  setCut(false);
  for (Connection& connection : connections_) {
    handOn(connection);
  }
}

void TcpProxy::cutBeforeTheFirstMessage() {
  const std::lock_guard guard(mutex_);
  cutsLater_ = true;
}

bool TcpProxy::waitForCut() const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [this] { return isCut_; });
}

void TcpProxy::hold() {
  const std::lock_guard guard(mutex_);
  holds_ = true;
}

void TcpProxy::release() {
  const std::lock_guard guard(mutex_);
  holds_ = false;
  for (Connection& connection : connections_) {
    handOn(connection);
  }
}

bool TcpProxy::waitForHeld(std::string_view text, std::size_t times) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] {
    std::size_t count = 0;
    for (const Connection& connection : connections_) {
      count += countOf(connection.held(), text);
    }
    return count >= times;
  });
}

void TcpProxy::disconnect() {
  const std::lock_guard guard(mutex_);
  for (Connection& connection : connections_) {
    ::shutdown(connection.client.get(), SHUT_RDWR);
    ::shutdown(connection.server.get(), SHUT_RDWR);
  }
}

void TcpProxy::setCut(bool isCut) {
  isCut_ = isCut;
  for (const Connection& connection : connections_) {
    if (isCut) {
      dropIncoming(connection.client.get());
    } else {
      passIncoming(connection.client.get());
    }
  }
  changed_.notify_all();
}

void TcpProxy::run() {
  std::vector<pollfd> polled;
  while (true) {
    polled = {{wakeUp_.fd(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
    std::vector<Connection*> polledConnections;
    {
      const std::lock_guard guard(mutex_);
      if (ends_) {
        return;
      }
      connections_.remove_if([](const Connection& connection) { return !connection.isOpen; });
      for (Connection& connection : connections_) {
        polledConnections.push_back(&connection);
        polled.push_back({connection.client.get(), POLLIN, 0});
        polled.push_back({connection.server.get(), POLLIN, 0});
      }
    }
    ::poll(polled.data(), polled.size(), -1);
    const std::lock_guard guard(mutex_);
    if (polled[1].revents != 0) {
      accept();
    }
    for (std::size_t i = 0; i < polledConnections.size(); ++i) {
      serve(*polledConnections[i], polled[2 + 2 * i].revents != 0, polled[3 + 2 * i].revents != 0);
    }
  }
}

void TcpProxy::accept() {
  const int accepted = ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
  if (accepted < 0) {
    return;
  }
  Connection connection{FileDescriptor(accepted, "accept"), makeSocket(), {}, {}, 0, true};
  const sockaddr_in address = loopback(server_);
  if (::connect(connection.server.get(), reinterpret_cast<const sockaddr*>(&address),
                sizeof address) == 0) {
    if (isCut_) {
      dropIncoming(accepted);
    }
    connections_.push_back(std::move(connection));
  }
}

void TcpProxy::serve(Connection& connection, bool clientHas, bool serverHas) {
  if (clientHas) {
    std::string bytes;
    connection.isOpen = read(connection.client.get(), bytes) && connection.isOpen;
    connection.isOpen = write(connection.server.get(), bytes) && connection.isOpen;
    connection.fromClient += cutsLater_ ? bytes : "";
  }
  if (serverHas) {
    connection.isOpen = read(connection.server.get(), connection.fromServer) && connection.isOpen;
    changed_.notify_all();
  }
  cutAfterHandshake(connection);
  handOn(connection);
}

/// The client sends its first message when it has the end of the handshake: that is handed on
/// behind the cut.
void TcpProxy::cutAfterHandshake(Connection& connection) {
  if (cutsLater_ && hasWholeHandshake(connection.fromClient) &&
      hasWholeHandshake(connection.fromServer)) {
    cutsLater_ = false;
    dropIncoming(connection.client.get());
    handOn(connection);
    setCut(true);
  }
}

void TcpProxy::handOn(Connection& connection) {
  if (isCut_ || holds_) {
    return;
  }
  std::string_view bytes = connection.held();
  if (cutsLater_) {
    bytes = bytes.substr(0, kGreetingBytes - std::min(kGreetingBytes, connection.handedOn));
  }
  connection.isOpen = write(connection.client.get(), bytes) && connection.isOpen;
  connection.handedOn += bytes.size();
}

}  // namespace test_support
