#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "dme/Chassis.h"
#include "dme/ObjectStore.h"
#include "model/sd/SlotMo.h"
#include "tests/dme/Acknowledged.h"
#include "tests/dme/TempDirectory.h"

// What the engine has acknowledged is there after its process was killed at any moment.

namespace dme {
namespace {

/// Runs the program beside this one, with `out` as its standard output.
pid_t spawnChild(std::string directory, std::uint32_t firstSlot, int out) {
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
  std::string program = self.parent_path() / "dme_durability_child";
  std::string number = std::to_string(firstSlot);
  char* arguments[] = {program.data(), directory.data(), number.data(), nullptr};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  pid_t child = -1;
  ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  return child;
}

class Durability : public testing::Test {
 protected:
  /// Runs an engine until it has acknowledged `enough` registrations, kills it, and adds what it
  /// acknowledged until then.
  void runAndKill(std::size_t enough, std::uint32_t firstSlot) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const pid_t child = spawnChild(directory_.path(), firstSlot, ends[1]);
    ::close(ends[1]);
    ASSERT_GT(child, 0);
    std::size_t count = 0;
    dme_test::Acknowledged record;
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

  void note(const dme_test::Acknowledged& record) {
    const std::string token(record.token, sizeof record.token);
    const auto [known, isNew] = tokens_.emplace(record.slot, token);
    EXPECT_EQ(known->second, token) << "slot " << record.slot << " was told two tokens";
  }

  void expectAllHeld() {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    const Chassis chassis(**store, std::nullopt);
    for (const auto& [number, token] : tokens_) {
      const Object* slot = chassis.slot(number);
      ASSERT_NE(slot, nullptr) << "slot " << number;
      EXPECT_EQ(slot->get(sd::SlotMo::kToken), token) << "slot " << number;
    }
  }

  dme_test::TempDirectory directory_;
  std::map<std::uint32_t, std::string> tokens_;  // every token that was acknowledged, by slot
};

TEST_F(Durability, KilledAtAnyMoment_HoldsEveryTokenThatWasAcknowledged) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (std::uint32_t round = 0; round < 12; ++round) {
    runAndKill(1 + random() % 60, round * 1200);
    expectAllHeld();
  }
  EXPECT_GT(tokens_.size(), 12u);
}

}  // namespace
}  // namespace dme
