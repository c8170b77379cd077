#include "dme/running/JobTurns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "tests/dme/running/JobFixture.h"

// Which commands go to the gateway, in which order, and what the others wait for.

namespace dme {
namespace {

using dme_test::cancel;
using dme_test::forApp;
using dme_test::forSlot;

using JobTurnsTest = dme_test::JobFixture;
using Gateway = dme_test::ScriptedGateway;

TEST_F(JobTurnsTest, WithoutABlade_WaitsForIt) {
  describe("a1", 3);
  const std::uint64_t install = ordered(forApp(JobVerb::kInstall, "a1"));
  const std::uint64_t format = ordered(forSlot(JobVerb::kFormatDisk, 4));
  EXPECT_EQ(engine_->job(install)->reason, JobReason::kWaitsForBlade);
  settle();
  EXPECT_EQ(waitForReason(install, JobReason::kWaitsForBlade).cause,
            "no blade is registered in slot 3");
  gateway_->admit(3);
  gateway_->waitForStages(1);
  waitFor(install, JobState::kSending);
  EXPECT_EQ(engine_->job(format)->state, JobState::kAccepted);
}

TEST_F(JobTurnsTest, ForeignBlade_IsFormattedAndNothingElse) {
  gateway_->admit(3);
  gateway_->call<serviceorchapi::ValidateBladeStateMe>({3, "1.2", "another's"});
  const std::uint64_t level = ordered(forSlot(JobVerb::kLogLevel, 3));
  EXPECT_EQ(waitForReason(level, JobReason::kWaitsForBlade).cause,
            "the blade in slot 3 must be formatted");
  ASSERT_TRUE(cancel(*engine_, level));
  const std::uint64_t format = ordered(forSlot(JobVerb::kFormatDisk, 3));
  const auto stage = gateway_->waitForStage(1);
  const auto call = stage.as<zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe>();
  ASSERT_NE(call, nullptr);
  EXPECT_NE(std::get<4>(call->in).find(sd::SlotMo::kToken.id), nullptr);
  gateway_->succeed(stage);
  waitFor(format, JobState::kRunning);
  gateway_->formatStatus(3, 1);
  gateway_->formatStatus(3, 2);
  EXPECT_EQ(waitFor(format, JobState::kSucceeded).percentage, 100u);
}

std::vector<std::uint32_t> slotsOf(const std::vector<Gateway::Stage>& stages) {
  std::vector<std::uint32_t> slots;
  for (const auto& stage : stages) {
    const auto call = stage.as<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe>();
    const auto other = stage.as<serviceorchapi::ClearSystemLogDataMe>();
    slots.push_back(call != nullptr ? std::get<std::uint32_t>(
                                          *std::get<4>(call->in).find(sd::SlotMo::kNumber.id))
                                    : std::get<0>(other->in));
  }
  return slots;
}

TEST_F(JobTurnsTest, Turns_GoRoundTheSlotsFourAtATimeAndOneASlot) {
  std::vector<std::uint64_t> ids;
  for (std::uint32_t slot = 1; slot <= 6; ++slot) {
    ids.push_back(ordered(forSlot(JobVerb::kLogLevel, slot)));
    ids.push_back(ordered(forSlot(JobVerb::kClearSystemLogs, slot)));
  }
  for (std::uint32_t slot = 1; slot <= 6; ++slot) {
    gateway_->admit(slot);
  }
  gateway_->waitForStages(4);
  pass(std::chrono::seconds(1));  // until then clearing logs is kept back
  EXPECT_EQ(gateway_->stages().size(), 4u);
  EXPECT_EQ(waitForReason(ids[1], JobReason::kWaitsForTurn).state, JobState::kAccepted);
  for (std::size_t done = 1; done <= 12; ++done) {
    gateway_->succeed(gateway_->waitForStage(done));
    settle();
    gateway_->waitForStages(std::min<std::size_t>(12, done + 4));
    EXPECT_LE(gateway_->stages().size(), done + 4);
  }
  for (const std::uint64_t id : ids) {
    waitFor(id, JobState::kSucceeded);
  }
  const auto slots = slotsOf(gateway_->stages());
  EXPECT_EQ(slots, (std::vector<std::uint32_t>{1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6}));
}

TEST_F(JobTurnsTest, BladeAtWork_TakesOtherCommands) {
  gateway_->admit(3);
  describe("a1", 3);
  describe("a2", 3);
  const std::uint64_t first = ordered(forApp(JobVerb::kInstall, "a1"));
  const std::uint64_t second = ordered(forApp(JobVerb::kInstall, "a2"));
  const auto stage = gateway_->waitForStage(1);
  settle();
  EXPECT_EQ(gateway_->stages().size(), 1u) << "one of a slot is with the gateway at a time";
  gateway_->succeed(stage);
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(first, JobState::kRunning);
  waitFor(second, JobState::kRunning);
}

}  // namespace
}  // namespace dme
