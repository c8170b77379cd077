#include "framework/finj/FinjManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "tests/support/ManualClock.h"

namespace {

using finj::FinjManager;
using namespace std::chrono_literals;

class FinjManagerTest : public testing::Test {
 protected:
  ~FinjManagerTest() override { manager_.clear(); }
  FinjManager& manager_ = FinjManager::getInstance();
};

TEST_F(FinjManagerTest, NothingConfigured_IsZero) {
  EXPECT_EQ(manager_.executeActivities("FINJ_PRE_Stop"), 0);
}

TEST_F(FinjManagerTest, Activity_ReturnsItsBitsAtItsHookOnly) {
  manager_.setActivity("FINJ_PRE_Stop", {.result = 6, .assignments = {}, .times = 0});
  EXPECT_EQ(manager_.executeActivities("FINJ_PRE_Stop"), 6);
  EXPECT_EQ(manager_.executeActivities("FINJ_PRE_Stop"), 6);
  EXPECT_EQ(manager_.executeActivities("FINJ_POST_Stop"), 0);
}

TEST_F(FinjManagerTest, ActivityForTwoTimes_EndsAfterThem) {
  manager_.setActivity("hook", {.result = 1, .assignments = {}, .times = 2});
  EXPECT_EQ(manager_.executeActivities("hook"), 1);
  EXPECT_EQ(manager_.executeActivities("hook"), 1);
  EXPECT_EQ(manager_.executeActivities("hook"), 0);
}

TEST_F(FinjManagerTest, Activities_ShowWhatIsSetAndHowOftenItWillHappen) {
  EXPECT_TRUE(manager_.activities().empty());
  manager_.setActivity("a", {.result = 4, .assignments = {{"lBits", 8}}, .times = 2});
  manager_.setActivity("b", {.result = 2, .assignments = {}, .times = 0});
  manager_.executeActivities("a");
  manager_.executeActivities("b");
  const auto activities = manager_.activities();
  ASSERT_EQ(activities.size(), 2u);
  EXPECT_EQ(activities.at("a").result, 4);
  EXPECT_EQ(activities.at("a").assignments.at("lBits"), 8);
  EXPECT_EQ(activities.at("a").times, 1u);
  EXPECT_EQ(activities.at("b").times, 0u);
}

TEST_F(FinjManagerTest, RemovedActivity_IsGone) {
  manager_.setActivity("hook", {.result = 1, .assignments = {}, .times = 0});
  EXPECT_TRUE(manager_.removeActivity("hook"));
  EXPECT_FALSE(manager_.removeActivity("hook"));
  EXPECT_EQ(manager_.executeActivities("hook"), 0);
}

TEST_F(FinjManagerTest, Assignment_WritesTheBoundVariable) {
  manager_.setActivity("hook", {.result = 8, .assignments = {{"lBits", 2048}}, .times = 0});
  const FinjManager::Frame frame;
  std::int32_t bits = 0;
  manager_.setLocalVar("lBits", &bits);
  EXPECT_EQ(manager_.executeActivities("hook"), 8);
  EXPECT_EQ(bits, 2048);
}

TEST_F(FinjManagerTest, AssignmentToAnUnboundName_IsIgnored) {
  manager_.setActivity("hook", {.result = 8, .assignments = {{"other", 1}}, .times = 0});
  const FinjManager::Frame frame;
  std::int32_t bits = 7;
  manager_.setLocalVar("lBits", &bits);
  manager_.executeActivities("hook");
  EXPECT_EQ(bits, 7);
}

TEST_F(FinjManagerTest, FrameThatEnded_HasUnboundItsVariables) {
  manager_.setActivity("hook", {.result = 8, .assignments = {{"lBits", 1}}, .times = 0});
  std::int32_t bits = 0;
  {
    const FinjManager::Frame frame;
    manager_.setLocalVar("lBits", &bits);
  }
  manager_.executeActivities("hook");
  EXPECT_EQ(bits, 0);
}

TEST_F(FinjManagerTest, NullBinding_Unbinds) {
  manager_.setActivity("hook", {.result = 8, .assignments = {{"lBits", 1}}, .times = 0});
  std::int32_t bits = 0;
  manager_.setLocalVar("lBits", &bits);
  manager_.setLocalVar("lBits", nullptr);
  manager_.executeActivities("hook");
  EXPECT_EQ(bits, 0);
}

TEST_F(FinjManagerTest, EachThread_HasItsOwnVariable) {
  manager_.setActivity("hook", {.result = 8, .assignments = {{"lBits", 5}}, .times = 0});
  const FinjManager::Frame frame;
  std::int32_t bitsHere = 0;
  manager_.setLocalVar("lBits", &bitsHere);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([this] {
        const FinjManager::Frame own;
        std::int32_t bits = 0;
        manager_.setLocalVar("lBits", &bits);
        for (int round = 0; round < 200; ++round) {
          bits = 0;
          ASSERT_EQ(manager_.executeActivities("hook"), 8);
          ASSERT_EQ(bits, 5);
        }
      });
    }
  }
  EXPECT_EQ(bitsHere, 0);
}

TEST_F(FinjManagerTest, Delay_HoldsTheHooksThreadAndNoOther) {
  test_support::ManualClock clock;
  manager_.setActivity("slow", {.result = 2, .assignments = {}, .times = 1, .delay = 5s});
  manager_.setActivity("quick", {.result = 1, .assignments = {}, .times = 0, .delay = 0s});
  std::atomic<std::int32_t> result{-1};
  std::jthread hooked([&] { result = manager_.executeActivities("slow"); });
  ASSERT_TRUE(clock.waitForDeadline(5s));
  EXPECT_EQ(manager_.executeActivities("quick"), 1);
  EXPECT_FALSE(manager_.removeActivity("slow")) << "its one time has begun";
  clock.advance(4999ms);
  EXPECT_EQ(result, -1);
  clock.advance(1ms);
  hooked.join();
  EXPECT_EQ(result, 2);
}

}  // namespace
