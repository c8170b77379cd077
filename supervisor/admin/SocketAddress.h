#pragma once

#include <string>

namespace supervisor::admin {

/// The path of a Unix socket in a form that fits a socket's address, however long it is: one that
/// does not fit goes through a descriptor of its directory. Move-only, to be kept as long as
/// path() is used.
class SocketAddress {
 public:
  /// When the directory cannot be opened, path() is the whole path, too long for an address.
  SocketAddress(const std::string& directory, const std::string& name);
  ~SocketAddress();
  SocketAddress(const SocketAddress&) = delete;
  SocketAddress& operator=(const SocketAddress&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  int directory_ = -1;
};

}  // namespace supervisor::admin
