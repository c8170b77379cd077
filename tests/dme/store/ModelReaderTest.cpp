#include "dme/store/ModelReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <future>
#include <tuple>

#include "dme/store/ObjectStore.h"
#include "dme/store/StateLock.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/SlotMo.h"
#include "model/sd/SystemMo.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

using ::testing::HasSubstr;

/// Everything that a reader could change without being told to.
using Trace = std::map<std::string, std::tuple<std::string, ino_t, mode_t, std::int64_t, long>>;

Trace traceOf(const std::string& directory) {
  Trace trace;
  const auto add = [&trace](const std::filesystem::path& path) {
    struct stat status {};
    ASSERT_EQ(::lstat(path.c_str(), &status), 0);
    trace[path.string()] = {std::filesystem::is_regular_file(path) ? dme_test::readBytes(path) : "",
                            status.st_ino, status.st_mode, status.st_mtim.tv_sec,
                            status.st_mtim.tv_nsec};
  };
  add(directory);
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    add(entry.path());
  }
  return trace;
}

/// Makes a tree of a system, a chassis and slot 3 in a store that goes on running.
std::unique_ptr<ObjectStore> filledStore(const std::string& directory) {
  auto store = ObjectStore::open(directory);
  EXPECT_TRUE(store) << store.error().text;
  Object& system = (*store)->create<sd::SystemMo>(mo::Dn("sys"));
  (*store)->set(system, sd::SystemMo::kClusterId, std::uint64_t{18446744073709551615U});
  (*store)->create<sd::ChassisMo>(mo::Dn("sys/chassis-1"));
  Object& slot = (*store)->create<sd::SlotMo>(mo::Dn("sys/chassis-1/slot-3"));
  (*store)->set(slot, sd::SlotMo::kNumber, 3U);
  (*store)->set(slot, sd::SlotMo::kToken, base::String("s3cret"));
  std::promise<void> stored;
  (*store)->commit([&stored](const Result<void>&) { stored.set_value(); });
  stored.get_future().get();
  return std::move(*store);
}

const ObjectView kSlotThree{"sys/chassis-1/slot-3",
                            "slot",
                            {{"number", method::Value(std::uint32_t{3})}, {"hasToken", true}}};

class ModelReaderFixture : public testing::Test {
 protected:
  ModelReaderFixture() { std::filesystem::create_directory(temporary_.file("tmp")); }
  void SetUp() override {
    const char* before = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): one thread
    before_ = before == nullptr ? "" : before;
    ::setenv("TMPDIR", temporary_.file("tmp").c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
  }
  void TearDown() override {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
    before_.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", before_.c_str(), 1);
    EXPECT_TRUE(std::filesystem::is_empty(temporary_.file("tmp"))) << "a copy was left behind";
  }

  std::string state() const { return temporary_.file("state"); }
  std::string errorOf(const std::string& directory) const {
    const auto read = readStoppedModel(directory, mo::Dn());
    return read ? "read" : read.error().text;
  }

 private:
  dme_test::TempDirectory temporary_;
  std::string before_;
};

TEST_F(ModelReaderFixture, Stopped_IsReadWithoutATrace) {
  filledStore(state()).reset();
  const Trace before = traceOf(state());
  const auto read = readStoppedModel(state(), mo::Dn());
  ASSERT_TRUE(read) << read.error().text;
  ASSERT_TRUE(*read);
  ASSERT_EQ((*read)->size(), 3u);
  EXPECT_EQ((**read)[0],
            (ObjectView{"sys", "system", {{"clusterId", method::Value(18446744073709551615ULL)}}}));
  EXPECT_EQ((**read)[1].dn, "sys/chassis-1");
  EXPECT_EQ((**read)[2], kSlotThree);
  EXPECT_EQ(traceOf(state()), before);
}

TEST_F(ModelReaderFixture, KilledWithALogToReplay_IsReadWithoutATrace) {
  const std::string killed = state() + "-killed";
  std::filesystem::create_directory(killed);
  const auto running = filledStore(state());
  for (const char* file : {"engine.db", "engine.db-wal", "lock"}) {
    std::filesystem::copy_file(state() + "/" + file, killed + "/" + file);
  }
  ASSERT_GT(std::filesystem::file_size(killed + "/engine.db-wal"), 0u);
  const Trace before = traceOf(killed);
  const auto read = readStoppedModel(killed, mo::Dn("sys/chassis-1/slot-3"));
  ASSERT_TRUE(read) << read.error().text;
  EXPECT_EQ(**read, std::vector<ObjectView>{kSlotThree});
  EXPECT_EQ(traceOf(killed), before);
}

TEST_F(ModelReaderFixture, BackupWithoutALock_IsReadAndGetsNone) {
  filledStore(state()).reset();
  std::filesystem::remove(state() + "/lock");
  const auto read = readStoppedModel(state(), mo::Dn("sys/chassis-1/slot-3"));
  ASSERT_TRUE(read) << read.error().text;
  EXPECT_EQ(**read, std::vector<ObjectView>{kSlotThree});
  EXPECT_FALSE(std::filesystem::exists(state() + "/lock"));
}

TEST_F(ModelReaderFixture, UnknownName_IsEmpty) {
  filledStore(state()).reset();
  const auto read = readStoppedModel(state(), mo::Dn("sys/chassis-1/slot-4"));
  ASSERT_TRUE(read && *read);
  EXPECT_TRUE((*read)->empty());
}

TEST_F(ModelReaderFixture, InUse_IsLeftAlone) {
  const auto running = filledStore(state());
  const Trace before = traceOf(state());
  const auto read = readStoppedModel(state(), mo::Dn());
  ASSERT_TRUE(read) << read.error().text;
  EXPECT_FALSE(*read);
  EXPECT_EQ(traceOf(state()), before);
}

TEST_F(ModelReaderFixture, Damaged_IsRefusedInTheNameOfTheOriginal) {
  filledStore(state()).reset();
  dme_test::writeBytes(state() + "/engine.db", std::string(8192, 'x'));
  const Trace before = traceOf(state());
  EXPECT_EQ(errorOf(state()),
            state() +
                "/engine.db is damaged (file is not a database) and was left as it is: "
                "restore a copy of it, or move it away to start with an empty database");
  EXPECT_EQ(traceOf(state()), before);
}

TEST_F(ModelReaderFixture, LogWithoutDatabase_IsRefused) {
  std::filesystem::create_directory(state());
  dme_test::writeBytes(state() + "/engine.db-wal", "x");
  EXPECT_THAT(errorOf(state()), HasSubstr(state() + "/engine.db is missing but its log"));
}

TEST_F(ModelReaderFixture, NoDatabaseOrNoDirectory_IsSaid) {
  const std::string expected = state() +
                               "/engine.db is not there (No such file or directory): name the "
                               "state directory of a supervisor that has run";
  EXPECT_EQ(errorOf(state()), expected);
  std::filesystem::create_directory(state());
  EXPECT_EQ(errorOf(state()), expected);
  EXPECT_TRUE(std::filesystem::is_empty(state()));
}

}  // namespace
}  // namespace dme
