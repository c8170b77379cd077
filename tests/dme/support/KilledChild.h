#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace dme_test {

/// Runs a program that stands beside this one, with `out` as its standard output.
inline pid_t spawnBeside(const std::string& name, std::string directory, std::uint32_t first,
                         int out) {
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
  std::string program = self.parent_path() / name;
  std::string number = std::to_string(first);
  char* arguments[] = {program.data(), directory.data(), number.data(), nullptr};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  pid_t child = -1;
  ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  return child;
}

/// Runs the program, whose arguments are a state directory and a number to begin with, until it
/// has written `enough` records, kills it, and gives every record that it wrote to `note`.
template <class Record, class Note>
void runAndKill(const std::string& program, const std::string& directory, std::uint32_t first,
                std::size_t enough, Note note) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const pid_t child = spawnBeside(program, directory, first, ends[1]);
  ::close(ends[1]);
  ASSERT_GT(child, 0);
  std::size_t count = 0;
  Record record;
  while (::read(ends[0], &record, sizeof record) == sizeof record) {
    note(record);
    if (++count == enough) {
      ::kill(child, SIGKILL);
    }
  }
  ::close(ends[0]);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child failed";
  ASSERT_GE(count, enough);
}

}  // namespace dme_test
