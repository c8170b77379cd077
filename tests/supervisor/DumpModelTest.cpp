#include "supervisor/DumpModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "dme/Engine.h"
#include "supervisor/admin/AdminInterface.h"
#include "tests/dme/support/TempDirectory.h"

namespace supervisor {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Dump {
  int exitCode;
  std::string out;
  std::string err;
};

Dump dump(const std::string& stateDir, const std::string& dn = "") {
  std::ostringstream out;
  std::ostringstream err;
  const int exitCode = dumpModel(stateDir, dn, out, err);
  return {exitCode, out.str(), err.str()};
}

class DumpModel : public testing::Test {
 protected:
  std::unique_ptr<dme::Engine> engine() const {
    auto opened = dme::Engine::open({state(), "", "inproc://unused", {}});
    EXPECT_TRUE(opened) << opened.error().text;
    return std::move(*opened);
  }
  std::string state() const { return directory_.file("state"); }

  const dme_test::TempDirectory directory_;
};

TEST_F(DumpModel, RunningAndStopped_PrintTheSame) {
  auto running = engine();
  auto interface = std::make_unique<admin::AdminInterface>(state(), "1.2.3", "", running.get());
  const Dump ofRunning = dump(state());
  EXPECT_EQ(ofRunning.exitCode, 0) << ofRunning.err;
  EXPECT_THAT(ofRunning.out, StartsWith("{\"objects\":[\n{\"dn\":\"sys\",\"class\":\"system\""));
  interface.reset();
  running.reset();
  const Dump ofStopped = dump(state());
  EXPECT_EQ(ofStopped.exitCode, 0) << ofStopped.err;
  EXPECT_EQ(ofStopped.out, ofRunning.out);
}

TEST_F(DumpModel, UnknownName_IsSaidTheSameWayByBoth) {
  const std::string expected =
      "zedd: no object is named 'sys/\"x&y'': read the whole tree to see the names, e.g. "
      "sys/chassis-1/slot-3\n";
  auto running = engine();
  auto interface = std::make_unique<admin::AdminInterface>(state(), "1.2.3", "", running.get());
  const Dump ofRunning = dump(state(), "sys/\"x&y'");
  EXPECT_EQ(ofRunning.exitCode, 3);
  EXPECT_EQ(ofRunning.out, "");
  EXPECT_EQ(ofRunning.err, expected);
  interface.reset();
  running.reset();
  const Dump ofStopped = dump(state(), "sys/\"x&y'");
  EXPECT_EQ(ofStopped.exitCode, 3);
  EXPECT_EQ(ofStopped.err, expected);
}

TEST_F(DumpModel, NoStateDirectory_IsSaidInOneLine) {
  const Dump none = dump(state());
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "zedd: " + state() +
                          "/engine.db is not there (No such file or directory): name the state "
                          "directory of a supervisor that has run\n");
}

TEST_F(DumpModel, InUseWithoutAnInterface_IsGivenUp) {
  const auto running = engine();
  const Dump silent = dump(state());
  EXPECT_EQ(silent.exitCode, 1);
  EXPECT_EQ(silent.err, "zedd: " + state() + " is in use by process " + std::to_string(::getpid()) +
                            ", which does not answer (No such file or directory): ask as the user "
                            "that it runs as, or look into its log\n");
}

TEST_F(DumpModel, EngineElsewhere_IsSaid) {
  const auto lock = [this] {
    std::filesystem::create_directory(state());
    return dme::StateLock::acquire(state());
  }();
  const admin::AdminInterface interface(state(), "1.2.3", "ipc:///run/dme", nullptr);
  const Dump refused = dump(state());
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err,
            "zedd: the engine is expected at ipc:///run/dme: ask the process that runs the "
            "engine\n");
}

TEST_F(DumpModel, OutputThatTakesNothing_IsAFailure) {
  engine().reset();
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  std::ostringstream err;
  EXPECT_EQ(dumpModel(state(), "", out, err), 1);
  EXPECT_THAT(err.str(), HasSubstr("standard output cannot be written to"));
}

}  // namespace
}  // namespace supervisor
