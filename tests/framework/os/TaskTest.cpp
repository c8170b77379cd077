#include "framework/os/Task.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/LogCapture.h"

namespace os {
namespace {

class Recorder : public Task {
 public:
  explicit Recorder(std::vector<std::string>& calls) : calls_(calls) {}
  ~Recorder() override { calls_.emplace_back("~"); }

  void logTaskInfo() override { calls_.emplace_back("logTaskInfo"); }
  void run() override {
    calls_.emplace_back("run");
    if (throwsText) {
      throw "a text";
    }
    if (throws) {
      throw std::runtime_error("no slot\n");
    }
  }
  void onExit() override {
    calls_.emplace_back("onExit");
    if (throws) {
      throw std::runtime_error("again");
    }
  }

  bool throws = false;
  bool throwsText = false;

 private:
  std::vector<std::string>& calls_;
};

class Plain final : public Task {
 public:
  void run() override {}
};

TEST(Task, Base_HasNoIdNoCloneAndNoPayload) {
  Plain task;
  int payload = 1;
  task.setPayload(&payload);
  EXPECT_EQ(task.getPayload(), nullptr);
  EXPECT_EQ(task.clone(), nullptr);
  EXPECT_EQ(task.id(), -1);
  task.logTaskInfo();
  task.onExit();
}

TEST(Task, Dealloc_DeletesTheTask) {
  std::vector<std::string> calls;
  (new Recorder(calls))->dealloc();
  EXPECT_EQ(calls, (std::vector<std::string>{"~"}));
}

TEST(RunTask, Task_GoesThroughItsSteps) {
  std::vector<std::string> calls;
  const TaskPtr task(new Recorder(calls));
  runTask(*task);
  EXPECT_EQ(calls, (std::vector<std::string>{"logTaskInfo", "run", "onExit"}));
}

TEST(RunTask, EveryStepThrows_IsLoggedAndOnExitStillRuns) {
  const test_support::LogCapture capture;
  std::vector<std::string> calls;
  Recorder task(calls);
  task.throws = true;
  runTask(task);
  EXPECT_EQ(calls, (std::vector<std::string>{"logTaskInfo", "run", "onExit"}));
  EXPECT_EQ(capture.lines(), (std::vector<test_support::LogLine>{
                                 {8, "run", "Task -1 ended by an exception: no slot\\x0A"},
                                 {8, "onExit", "Task -1 ended by an exception: again"}}));
}

TEST(RunTask, ThrowsATextOfItsOwn_IsLogged) {
  const test_support::LogCapture capture;
  std::vector<std::string> calls;
  Recorder task(calls);
  task.throwsText = true;
  runTask(task);
  EXPECT_TRUE(capture.contains(8, "Task -1 ended by an exception: not a std::exception"));
}

}  // namespace
}  // namespace os
