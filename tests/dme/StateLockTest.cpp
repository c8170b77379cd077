#include "dme/StateLock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <type_traits>

#include "tests/dme/TempDirectory.h"

namespace dme {
namespace {

static_assert(!std::is_copy_constructible_v<StateLock>);
static_assert(std::is_nothrow_move_constructible_v<StateLock>);

TEST(StateLock, FreeDirectory_IsLockedAndNamesItsHolder) {
  const dme_test::TempDirectory directory;
  const Result<StateLock> lock = StateLock::acquire(directory.path());
  ASSERT_TRUE(lock) << lock.error().text;
  EXPECT_EQ(dme_test::readBytes(directory.file("lock")), std::to_string(::getpid()) + "\n");
  const auto mode = std::filesystem::status(directory.file("lock")).permissions();
  EXPECT_EQ(static_cast<unsigned>(mode), 0600u);
}

TEST(StateLock, SecondHolder_IsRefusedWithTheFirstOnesProcessId) {
  const dme_test::TempDirectory directory;
  const Result<StateLock> lock = StateLock::acquire(directory.path());
  ASSERT_TRUE(lock);
  const Result<StateLock> second = StateLock::acquire(directory.path());
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().text, directory.path() + " is in use by process " +
                                     std::to_string(::getpid()) +
                                     ": stop it, or configure another state directory");
}

TEST(StateLock, HolderGone_IsFree) {
  const dme_test::TempDirectory directory;
  { ASSERT_TRUE(StateLock::acquire(directory.path())); }
  EXPECT_TRUE(StateLock::acquire(directory.path()));
}

TEST(StateLock, HolderKilled_IsFree) {
  const dme_test::TempDirectory directory;
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const Result<StateLock> lock = StateLock::acquire(directory.path());
    ::kill(::getpid(), lock ? SIGKILL : SIGTERM);
    ::_exit(1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  EXPECT_TRUE(StateLock::acquire(directory.path()));
}

TEST(StateLock, MovedFrom_KeepsTheDirectoryLocked) {
  const dme_test::TempDirectory directory;
  Result<StateLock> lock = StateLock::acquire(directory.path());
  ASSERT_TRUE(lock);
  const StateLock moved = std::move(*lock);
  EXPECT_FALSE(StateLock::acquire(directory.path()));
}

TEST(StateLock, FileHoldsNonsense_NamesNoProcess) {
  const dme_test::TempDirectory directory;
  const Result<StateLock> lock = StateLock::acquire(directory.path());
  ASSERT_TRUE(lock);
  dme_test::writeBytes(directory.file("lock"), "x\n");
  const Result<StateLock> second = StateLock::acquire(directory.path());
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().text, directory.path() +
                                     " is in use by another process: stop it, or configure "
                                     "another state directory");
}

TEST(StateLock, DirectoryMissing_FailsNamingFileAndCause) {
  const dme_test::TempDirectory directory;
  const Result<StateLock> lock = StateLock::acquire(directory.file("none"));
  ASSERT_FALSE(lock);
  EXPECT_EQ(lock.error().text, directory.file("none/lock") +
                                   " cannot be opened (No such file or directory): give the "
                                   "directory to the user that runs this program");
}

}  // namespace
}  // namespace dme
