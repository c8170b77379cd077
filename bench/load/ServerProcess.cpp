#include "bench/load/ServerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace load {
namespace {

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  return ends;
}

// Empty when no whole line comes in time.
std::string readLine(int fd) {
  constexpr int kPatienceMs = 10'000;
  std::string line;
  char c = 0;
  pollfd ready{fd, POLLIN, 0};
  while (poll(&ready, 1, kPatienceMs) == 1 && read(fd, &c, 1) == 1) {
    if (c == '\n') {
      return line;
    }
    line += c;
  }
  return {};
}

}  // namespace

ServerProcess::ServerProcess(const std::vector<std::string>& command) {
  const auto input = makePipe();
  const auto output = makePipe();
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& word : command) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  input_ = input[1];
  firstLine_ = readLine(output[0]);
  close(output[0]);
  if (pid_ < 0 || firstLine_.empty() || clock_getcpuclockid(pid_, &cpuClock_) != 0) {
    end();
    throw std::runtime_error(command.front() + " cannot be run or is not ready in time");
  }
}

ServerProcess::~ServerProcess() {
  end();
}

std::size_t ServerProcess::residentBytes() const {
  std::ifstream statistics("/proc/" + std::to_string(pid_) + "/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  statistics >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void ServerProcess::end() {
  close(input_);
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
}

}  // namespace load
