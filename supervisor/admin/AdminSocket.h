#pragma once

#include <string>

namespace supervisor::admin {

/// The listening Unix socket "admin.sock" in a state directory. Only the directory's user can
/// connect to it, from its first moment.
class AdminSocket {
 public:
  static constexpr const char* kFileName = "admin.sock";

  /// Only for the process that holds the state directory's lock: what is there under the name, say
  /// of a process that was killed, gives way. Whoever connects meanwhile gets the old or the new
  /// one, never one that does not listen yet. Throws std::runtime_error with one line that names
  /// the file, the cause and the remedy.
  explicit AdminSocket(const std::string& stateDir);
  /// Removes the file.
  ~AdminSocket();
  AdminSocket(const AdminSocket&) = delete;
  AdminSocket& operator=(const AdminSocket&) = delete;

  /// A second descriptor of the socket, for its owner to close. Throws like the constructor.
  int duplicate() const;

 private:
  [[noreturn]] void fail(const std::string& cause) const;
  void listenAt(const std::string& path);

  const std::string file_;
  int descriptor_ = -1;
};

}  // namespace supervisor::admin
