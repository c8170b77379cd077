#include "supervisor/admin/AdminSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

#include "framework/os/SocketAddress.h"

namespace supervisor::admin {
namespace {

constexpr int kBacklog = 64;

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
  return address;
}

}  // namespace

AdminSocket::AdminSocket(const std::string& stateDir) : file_(stateDir + "/" + kFileName) {
  const std::string draft = file_ + ".new";
  ::unlink(draft.c_str());  // of a process that died in here
  descriptor_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) {
    fail(std::generic_category().message(errno));
  }
  try {
    listenAt(draft);
    if (::rename(draft.c_str(), file_.c_str()) != 0) {
      fail(std::generic_category().message(errno));
    }
  } catch (...) {
    ::unlink(draft.c_str());
    ::close(descriptor_);
    throw;
  }
}

void AdminSocket::listenAt(const std::string& path) {
  const os::SocketAddress where(path);
  if (where.error() != 0) {
    fail(std::generic_category().message(where.error()));
  }
  const sockaddr_un address = addressOf(where.path());
  // The file takes over the mode that the socket has when it is bound.
  if (::fchmod(descriptor_, 0600) != 0 ||
      ::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(descriptor_, kBacklog) != 0) {
    fail(std::generic_category().message(errno));
  }
}

AdminSocket::~AdminSocket() {
  ::unlink(file_.c_str());
  ::close(descriptor_);
}

int AdminSocket::duplicate() const {
  const int copy = ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) {
    fail(std::generic_category().message(errno));
  }
  return copy;
}

void AdminSocket::fail(const std::string& cause) const {
  throw std::runtime_error(file_ + " cannot be made (" + cause +
                           "): keep the state directory on a file system with sockets, "
                           "and nothing else of this name in it");
}

}  // namespace supervisor::admin
