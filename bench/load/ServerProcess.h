#pragma once

#include <sys/types.h>
#include <time.h>

#include <cstddef>
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
  /// Memory of the process that is not on disk or swapped out; 0 when it has ended.
  std::size_t residentBytes() const;

 private:
  void end();

  pid_t pid_ = -1;
  int input_ = -1;
  std::string firstLine_;
  clockid_t cpuClock_{};
};

}  // namespace load
