#pragma once

#include <string>

namespace os {

/// The path of a Unix socket in a form that fits a socket's address, however long it is: one that
/// does not fit goes through a descriptor of its directory. To be kept as long as path() is used.
class SocketAddress {
 public:
  /// Blocks on the disk.
  explicit SocketAddress(const std::string& path);
  ~SocketAddress();
  SocketAddress(const SocketAddress&) = delete;
  SocketAddress& operator=(const SocketAddress&) = delete;

  /// What to bind or connect to; the path as it was given where there is an error.
  const std::string& path() const { return path_; }
  /// Why there is no form that fits, as an error number: the directory cannot be opened, or the
  /// name in it is too long itself. 0 when path() fits.
  int error() const { return error_; }

 private:
  std::string path_;
  int directory_ = -1;
  int error_ = 0;
};

}  // namespace os
