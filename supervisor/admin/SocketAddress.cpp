#include "supervisor/admin/SocketAddress.h"

#include <fcntl.h>
#include <sys/un.h>
#include <unistd.h>

namespace supervisor::admin {

SocketAddress::SocketAddress(const std::string& directory, const std::string& name)
    : path_(directory + "/" + name) {
  if (path_.size() < sizeof(sockaddr_un::sun_path)) {
    return;
  }
  directory_ = ::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (directory_ >= 0) {
    path_ = "/proc/self/fd/" + std::to_string(directory_) + "/" + name;
  }
}

SocketAddress::~SocketAddress() {
  if (directory_ >= 0) {
    ::close(directory_);
  }
}

}  // namespace supervisor::admin
