#include "framework/os/SocketAddress.h"

#include <fcntl.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace os {
namespace {

constexpr std::size_t kRoom = sizeof(sockaddr_un::sun_path) - 1;

}  // namespace

SocketAddress::SocketAddress(const std::string& path) : path_(path) {
  if (path.size() <= kRoom) {
    return;
  }
  const std::filesystem::path whole(path);
  const std::string directory = whole.has_parent_path() ? whole.parent_path().string() : ".";
  directory_ = ::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (directory_ < 0) {
    error_ = errno;
    return;
  }
  std::string shorter =
      "/proc/self/fd/" + std::to_string(directory_) + "/" + whole.filename().string();
  if (shorter.size() > kRoom) {
    error_ = ENAMETOOLONG;
    return;
  }
  path_ = std::move(shorter);
}

SocketAddress::~SocketAddress() {
  if (directory_ >= 0) {
    ::close(directory_);
  }
}

}  // namespace os
