#pragma once

#include <sys/types.h>
#include <time.h>

#include <string>
#include <vector>

namespace load {

/// A server in a process of its own, started by a command line. It prints a line when it can be
/// used, and ends when its standard input does or at SIGTERM.
class ServerProcess {
 public:
  /// Throws std::runtime_error if the program cannot be run or prints no line within ten seconds.
  explicit ServerProcess(const std::vector<std::string>& command);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// What it printed.
  const std::string& firstLine() const { return firstLine_; }
  clockid_t cpuClock() const { return cpuClock_; }

 private:
  void end();

  pid_t pid_ = -1;
  int input_ = -1;
  std::string firstLine_;
  clockid_t cpuClock_{};
};

}  // namespace load
