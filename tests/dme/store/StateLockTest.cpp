#include "dme/store/StateLock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <future>
#include <type_traits>

#include "tests/dme/support/TempDirectory.h"

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

TEST(StateLock, Readers_ShareAndChangeNothing) {
  const dme_test::TempDirectory directory;
  dme_test::writeBytes(directory.file("lock"), "4711\n");
  const auto first = StateLock::acquireForReading(directory.path());
  const auto second = StateLock::acquireForReading(directory.path());
  EXPECT_TRUE(first && *first && second && *second);
  EXPECT_EQ(dme_test::readBytes(directory.file("lock")), "4711\n");
  EXPECT_EQ(StateLock::holder(directory.path()), "process 4711");
}

TEST(StateLock, HolderThere_ReaderGetsNothing) {
  const dme_test::TempDirectory directory;
  const Result<StateLock> lock = StateLock::acquire(directory.path());
  ASSERT_TRUE(lock);
  const auto reader = StateLock::acquireForReading(directory.path());
  ASSERT_TRUE(reader);
  EXPECT_FALSE(*reader);
}

TEST(StateLock, ReaderThere_HolderWaitsForItsEnd) {
  const dme_test::TempDirectory directory;
  { ASSERT_TRUE(StateLock::acquire(directory.path())); }
  auto reader = StateLock::acquireForReading(directory.path());
  ASSERT_TRUE(reader && *reader);
  auto holder =
      std::async(std::launch::async, [&directory] { return StateLock::acquire(directory.path()); });
  EXPECT_EQ(holder.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  reader->reset();
  const Result<StateLock> lock = holder.get();
  EXPECT_TRUE(lock) << lock.error().text;
}

TEST(StateLock, NothingToRead_ReaderFailsNamingTheFileAndMakesNone) {
  const dme_test::TempDirectory directory;
  const auto reader = StateLock::acquireForReading(directory.path());
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error().text, directory.file("lock") +
                                     " cannot be opened (No such file or directory): run as the "
                                     "user that owns the directory");
  EXPECT_FALSE(std::filesystem::exists(directory.file("lock")));
}

}  // namespace
}  // namespace dme
