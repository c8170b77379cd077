#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/support/Configured.h"

namespace zan_serviceOrchAG {

void PrintTo(const Executor& executor, std::ostream* out) {
  *out << executor.name;
}

namespace {

using method::Config;
using test_support::Configured;

std::string nameOf(const testing::TestParamInfo<Executor>& info) {
  return info.param.name;
}

std::vector<Executor> executorsWithHooks() {
  std::vector<Executor> found;
  for (const Executor& each : executors()) {
    if (each.hookStem != nullptr) {
      found.push_back(each);
    }
  }
  return found;
}

class EveryExecutor : public testing::TestWithParam<Executor> {};
INSTANTIATE_TEST_SUITE_P(Executors, EveryExecutor, testing::ValuesIn(executors()), nameOf);

TEST_P(EveryExecutor, OnEveryPlatform_SendsItsDocumentToTheByte) {
  for (const char* platform : {"standard", "qvm1", "qvm2", "qvm3"}) {
    const std::string document = goldenOn(platform, GetParam().name);
    ASSERT_FALSE(document.empty());
    const Configured configured({std::string("supervisor.platform=") + platform});
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.hasFailed) << outcome.failure.text.c_str();
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_EQ(blades.sent(), (std::vector<SentCommand>{{"3", document, GetParam().command}}))
        << platform;
  }
}

TEST_P(EveryExecutor, SendQueued_CountsAsFailed) {
  const ScriptedBlades blades(101);
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_TRUE(outcome.hasFailed);
  EXPECT_EQ(outcome.failure.bits, 1U);
  EXPECT_EQ(outcome.failure.code, GetParam().command == std::string("clearLogData") ? 1003U : 101U);
}

class HookedExecutor : public testing::TestWithParam<Executor> {
 protected:
  std::string hook(const char* kind) const { return std::string(kind) + GetParam().hookStem; }
};
INSTANTIATE_TEST_SUITE_P(Executors, HookedExecutor, testing::ValuesIn(executorsWithHooks()),
                         nameOf);

TEST_P(HookedExecutor, HookBeforeWantsAReturn_NothingIsSentAndTheStageSucceeds) {
  for (const std::int32_t mask : {2, 3, 6, -1}) {
    const ActivityAt activity(hook("FINJ_PRE_"), mask);
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.hasFailed);
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_TRUE(blades.sent().empty());
  }
}

TEST_P(HookedExecutor, HookBeforeWithAnotherActivity_LeavesTheStageUnanswered) {
  const ActivityAt activity(hook("FINJ_PRE_"), 1);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_FALSE(outcome.hasFailed);
  EXPECT_FALSE(outcome.isAnswered);
  EXPECT_TRUE(blades.sent().empty());
}

TEST_P(HookedExecutor, CrashAtAnyHook_EndsTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto run = [this](const char* kind) {
    const ActivityAt activity(hook(kind), 4);
    const ScriptedBlades blades;
    runExecutor(GetParam());
  };
  EXPECT_DEATH(run("FINJ_PRE_"), "");
  EXPECT_DEATH(run("FINJ_FSM_FAIL_"), "");
  EXPECT_DEATH(run("FINJ_POST_"), "");
}

TEST_P(HookedExecutor, InjectedFailure_ReportsTheBitsThatTheActivityWrote) {
  for (const std::int32_t bits : {2048, 0}) {
    const ActivityAt activity(hook("FINJ_FSM_FAIL_"), 8, bits);
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    ASSERT_TRUE(outcome.hasFailed);
    EXPECT_EQ(outcome.failure.bits, static_cast<std::uint32_t>(bits));
    EXPECT_EQ(outcome.failure.code, 0U);
    EXPECT_EQ(outcome.failure.text, "FINJ_INJECTED");
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_TRUE(blades.sent().empty());
  }
}

TEST_P(HookedExecutor, ReturnAtTheFailureHook_SendsNothingAndSucceeds) {
  const ActivityAt activity(hook("FINJ_FSM_FAIL_"), 2, 2048);
  const ScriptedBlades blades;
  EXPECT_FALSE(runExecutor(GetParam()).hasFailed);
  EXPECT_TRUE(blades.sent().empty());
}

TEST_P(HookedExecutor, HookAfter_RunsAfterASendWhateverItsOutcome) {
  const ActivityAt activity(hook("FINJ_POST_"), 1);
  for (const unsigned int status : {100U, 578U}) {
    const ScriptedBlades blades(status);
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.isAnswered);
    EXPECT_EQ(outcome.hasFailed, status != 100);
    EXPECT_EQ(blades.sent().size(), 1U);
  }
}

TEST_P(HookedExecutor, HookAfterWithAReturn_ChangesNothing) {
  const ActivityAt activity(hook("FINJ_POST_"), 2);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_FALSE(outcome.hasFailed);
}

TEST_P(HookedExecutor, RefusedStage_SkipsTheHookAfter) {
  const ActivityAt activity(hook("FINJ_POST_"), 1);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam(), Config());
  EXPECT_TRUE(outcome.hasFailed);
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_TRUE(blades.sent().empty());
}

TEST(CreateChildNode, ValuesThatCountAsNotSet_AddNothing) {
  CommandDocument document("r");
  for (const char* value : {"", "0", "::"}) {
    EXPECT_EQ(createChildNode("e", value, document.root(), document.converter()), nullptr);
  }
  EXPECT_EQ(document.text(), "<r/>");
  for (const char* value : {"00", " ", "0.0.0.0", ":", "::1"}) {
    EXPECT_NE(createChildNode("e", value, document.root(), document.converter()), nullptr) << value;
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
