#include "framework/core_log/Log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LogCapture.h"

namespace core_log {
namespace {

using test_support::LogCapture;
using test_support::LogLine;

/// Gives lines back to stderr, at the default level, when a test ends.
class Log : public ::testing::Test {
 protected:
  Log() {
    std::string name = (std::filesystem::temp_directory_path() / "log-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    folder_ = name;
  }

  ~Log() override {
    init(nullptr, false);
    EXPECT_FALSE(setFile(""));
    setLevel(5);
    std::filesystem::remove_all(folder_);
  }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ / name; }

  static std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static unsigned mode(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
  }

 private:
  std::filesystem::path folder_;
};

TEST_F(Log, LineAtTheLevel_IsEmitted) {
  const LogCapture capture(5);
  logPrintf("initCb", serviceLevel(), 5, "Starting worker %d", 2);
  EXPECT_EQ(capture.lines(), (std::vector<LogLine>{{5, "initCb", "Starting worker 2"}}));
}

TEST_F(Log, LineBelowTheLevel_IsNotEmitted) {
  const LogCapture capture(5);
  logPrintf("initCb", serviceLevel(), 4, "Handling");
  EXPECT_TRUE(capture.lines().empty());
}

TEST_F(Log, DefaultLevel_IsFive) {
  EXPECT_EQ(serviceLevel().get(), 5);
  EXPECT_EQ(LevelCell().get(), 5);
}

TEST_F(Log, CellOfItsOwn_DecidesInPlaceOfTheServices) {
  const LogCapture capture(0);
  const LevelCell quiet(8);
  logPrintf("run", quiet, 7, "dropped");
  logPrintf("run", quiet, 8, "kept");
  EXPECT_EQ(capture.lines(), (std::vector<LogLine>{{8, "run", "kept"}}));
}

TEST_F(Log, LevelOutOfRange_IsRefusedAndChangesNothing) {
  EXPECT_TRUE(setLevel(0));
  EXPECT_FALSE(setLevel(-1));
  EXPECT_FALSE(setLevel(9));
  EXPECT_EQ(serviceLevel().get(), 0);
  EXPECT_TRUE(setLevel(8));
  EXPECT_EQ(serviceLevel().get(), 8);
}

TEST_F(Log, NullText_PrintsNull) {
  const LogCapture capture;
  const char* const null = nullptr;
  char* const mutableNull = nullptr;
  logPrintf("run", serviceLevel(), 5, "[%s] [%s] [%.3s] [%8s]", null, mutableNull, null, null);
  EXPECT_TRUE(capture.contains(5, "[(null)] [(null)] [(nu] [  (null)]"));
}

TEST_F(Log, NullFunction_PrintsAQuestionMark) {
  const LogCapture capture;
  logPrintf(nullptr, serviceLevel(), 5, "text");
  EXPECT_EQ(capture.lines(), (std::vector<LogLine>{{5, "?", "text"}}));
}

TEST_F(Log, EveryKindOfArgument_IsPrinted) {
  const LogCapture capture;
  enum Unscoped { kSeven = 7 };
  const std::uint64_t large = 18446744073709551615U;
  logPrintf("run", serviceLevel(), 5, "%d %u %ld %lu %lld %zu %hhx %c %s %% %5.2f %-4d| %*d %i", -1,
            2U, -3L, large, -4LL, std::size_t{5}, 0xAB, 'x', "text", 1.5, 6, 3, 9, kSeven);
  logPrintf("run", serviceLevel(), 5, "%d %d %p", true, std::int16_t{-2}, nullptr);
  EXPECT_TRUE(
      capture.contains(5, "-1 2 -3 18446744073709551615 -4 5 ab x text %  1.50 6   |   9 7"));
  EXPECT_TRUE(capture.contains(5, "1 -2 (nil)"));
}

TEST_F(Log, FormatKeptInATable_IsAccepted) {
  const LogCapture capture;
  static constexpr FormatString<const char*, unsigned> kText = "INSTALLAPP: FilePath=%s Timeout=%u";
  logPrintf("run", serviceLevel(), 1, kText, "/a", 60U);
  EXPECT_TRUE(capture.contains(1, "INSTALLAPP: FilePath=/a Timeout=60"));
}

TEST_F(Log, LineInTheFile_HasTimeLevelFunctionAndText) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  logPrintf("initCb", serviceLevel(), 6, "Waiting %s\n", "now");
  logPrintf("mainCb", serviceLevel(), 8, "done");
  const std::string time =
      "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}[+-][0-9]{2}:[0-9]{2}";
  EXPECT_THAT(content(file), ::testing::MatchesRegex(time + " 6 initCb: Waiting now\n" + time +
                                                     " 8 mainCb: done\n"));
}

TEST_F(Log, ForgedLineInAnArgument_StaysInsideItsLine) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  logPrintf("run", serviceLevel(), 5, "token %s", "x\n2026-01-01T00:00:00.000+00:00 8 run: boo\r");
  const std::string text = content(file);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
  EXPECT_TRUE(text.ends_with("token x\\x0A2026-01-01T00:00:00.000+00:00 8 run: boo\\x0D\n"));
}

TEST_F(Log, NewFile_IsItsOwnersOnly) {
  const mode_t before = ::umask(0);
  const std::string file = path("log");
  EXPECT_FALSE(setFile(file));
  ::umask(before);
  EXPECT_EQ(mode(file), 0600U);
}

TEST_F(Log, FileThatOthersCanRead_IsTightenedAndAppendedTo) {
  const std::string file = path("log");
  std::ofstream(file) << "before\n";
  ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
  ASSERT_FALSE(setFile(file));
  EXPECT_EQ(mode(file), 0600U);
  logPrintf("run", serviceLevel(), 5, "after");
  EXPECT_TRUE(content(file).starts_with("before\n"));
  EXPECT_TRUE(content(file).ends_with(" 5 run: after\n"));
}

TEST_F(Log, SetFileAgainAfterARename_ReopensThePath) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  logPrintf("run", serviceLevel(), 5, "first");
  std::filesystem::rename(file, path("log.1"));
  ASSERT_FALSE(setFile(file));
  logPrintf("run", serviceLevel(), 5, "second");
  EXPECT_TRUE(content(path("log.1")).ends_with(" 5 run: first\n"));
  EXPECT_TRUE(content(file).ends_with(" 5 run: second\n"));
  EXPECT_EQ(content(file).find("first"), std::string::npos);
}

TEST_F(Log, PathThatCannotBeOpened_IsAnErrorAndTheOldFileStays) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  EXPECT_EQ(setFile(path("no/such/log")), std::errc::no_such_file_or_directory);
  logPrintf("run", serviceLevel(), 5, "still here");
  EXPECT_TRUE(content(file).ends_with(" 5 run: still here\n"));
}

TEST_F(Log, SymbolicLinkFolderOrFifo_IsRefused) {
  std::filesystem::create_symlink(path("target"), path("link"));
  EXPECT_EQ(setFile(path("link")), std::errc::too_many_symbolic_link_levels);
  EXPECT_FALSE(std::filesystem::exists(path("target")));
  EXPECT_TRUE(setFile(path("")));
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_TRUE(setFile(path("fifo")));
  const int reader = ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_EQ(setFile(path("fifo")), std::errc::invalid_argument);
  ::close(reader);
}

TEST_F(Log, FullDisk_LosesAndCountsTheLineAndKeepsErrno) {
  const int savedStderr = ::dup(STDERR_FILENO);
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  ASSERT_EQ(::dup2(full, STDERR_FILENO), STDERR_FILENO);
  const std::uint64_t before = lostLines();
  errno = ENOENT;
  logPrintf("run", serviceLevel(), 5, "lost");
  const int errnoAfter = errno;
  const std::uint64_t after = lostLines();
  ::dup2(savedStderr, STDERR_FILENO);
  ::close(full);
  ::close(savedStderr);
  EXPECT_EQ(after - before, 1U);
  EXPECT_EQ(errnoAfter, ENOENT);
}

class Collector final : public LogProvider {
 public:
  void write(int level, std::string_view function, std::string_view text) override {
    if (throwing) {
      throw std::runtime_error("no");
    }
    lines.push_back({level, std::string(function), std::string(text)});
  }

  bool throwing = false;
  std::vector<LogLine> lines;
};

TEST_F(Log, Provider_TakesTheLinesInPlaceOfTheFile) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  Collector collector;
  init(&collector, false);
  logPrintf("run", serviceLevel(), 5, "to the provider\n");
  init(nullptr, false);
  logPrintf("run", serviceLevel(), 5, "to the file");
  EXPECT_EQ(collector.lines, (std::vector<LogLine>{{5, "run", "to the provider"}}));
  EXPECT_EQ(content(file).find("provider"), std::string::npos);
  EXPECT_TRUE(content(file).ends_with(" 5 run: to the file\n"));
}

TEST_F(Log, ProviderThatThrows_LosesAndCountsTheLine) {
  Collector collector;
  collector.throwing = true;
  init(&collector, false);
  const std::uint64_t before = lostLines();
  logPrintf("run", serviceLevel(), 5, "lost");
  EXPECT_EQ(lostLines() - before, 1U);
}

TEST_F(Log, InitWithSyslog_StillWritesTheFile) {
  const std::string file = path("log");
  ASSERT_FALSE(setFile(file));
  init(nullptr, true);
  logPrintf("run", serviceLevel(), 5, "both");
  EXPECT_TRUE(content(file).ends_with(" 5 run: both\n"));
}

TEST_F(Log, ManyThreadsWhileLevelFileAndObserverChange_EveryLineIsWhole) {
  ASSERT_FALSE(setFile(path("a")));
  std::atomic<bool> stop{false};
  std::vector<std::jthread> loggers;
  for (int id = 0; id < 3; ++id) {
    loggers.emplace_back([id, &stop] {
      while (!stop.load()) {
        logPrintf("run", serviceLevel(), 8, "thread %d %s", id, "0123456789");
        logPrintf("run", serviceLevel(), 4, "thread %d %s", id, "0123456789");
      }
    });
  }
  for (int round = 0; round < 50; ++round) {
    const LogCapture capture(round % 9);
    ASSERT_FALSE(setFile(path(round % 2 == 0 ? "b" : "a")));
    init(nullptr, false);
    ASSERT_TRUE(capture.waitFor(8, "thread 1 0123456789"));
  }
  stop = true;
  loggers.clear();
  std::istringstream lines(content(path("a")) + content(path("b")));
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_TRUE(line.ends_with(" 0123456789")) << line;
    ASSERT_EQ(line.find("thread"), line.rfind("thread")) << line;
  }
  EXPECT_GE(count, 50U);
}

}  // namespace
}  // namespace core_log
