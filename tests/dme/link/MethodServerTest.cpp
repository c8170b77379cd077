#include "dme/link/MethodServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "framework/core_log/Log.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/sd/SlotMo.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sysdebug/Methods.h"
#include "tests/dme/link/MethodServerFixture.h"
#include "tests/support/LogCapture.h"

namespace dme {
namespace {

using dme_test::ServiceStandIn;
using serverapi::OsControllerUpgradeProgressMe;
using serverapi::OsControllerVersionMe;
using serviceorchapi::NotifyAppFailureMe;
using serviceorchapi::UpdateDiskFormatStatusMe;
using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::UpdateProgressMe;
using serviceorchapi::UpdateSmaHeartbeatMe;
using serviceorchapi::ValidateAppInstancesMe;
using serviceorchapi::ValidateBladeStateMe;
using testing::MatchesRegex;

using Server = dme_test::MethodServerFixture;

TEST_F(Server, Registration_IsToldToRetryWithATokenAndThenValid) {
  const auto first = call<ValidateBladeStateMe>({3, "1.2", ""});
  ASSERT_FALSE(first.failure);
  const auto [token, isValid, shouldRetry] = first.me->out;
  EXPECT_THAT(token.str(), MatchesRegex("[0-9a-f]{32}"));
  EXPECT_FALSE(isValid);
  EXPECT_TRUE(shouldRetry);
  EXPECT_EQ(first.me->cookie(), base::Buffer("cookie", 6));
  EXPECT_FALSE(monitor_.isWatching());

  const auto second = call<ValidateBladeStateMe>({3, "1.2", token});
  EXPECT_EQ(second.me->out, std::make_tuple(token, true, false));
  EXPECT_TRUE(monitor_.isWatching());
}

TEST_F(Server, RegistrationWithAForeignToken_IsNotValidAndNotWatched) {
  admit(3);
  const auto answer = call<ValidateBladeStateMe>({3, "1.2", "foreign"});
  ASSERT_FALSE(answer.failure);
  EXPECT_EQ(answer.me->out, std::make_tuple(base::String(""), false, false));
  EXPECT_FALSE(monitor_.isWatching());
}

TEST_F(Server, RegistrationOfAnImpossibleSlot_FailsWithTheReason) {
  const auto answer = call<ValidateBladeStateMe>({0, "1.2", ""});
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->bits, 1u);
  EXPECT_EQ(answer.failure->code, 1003u);
  EXPECT_EQ(answer.failure->text, "slot 0 is not within 1 and 16384");
  EXPECT_EQ(server_->counters().refused, 1u);
}

TEST_F(Server, RegistrationsOfOneSlotAtOnce_AllLearnTheOneToken) {
  constexpr std::size_t kCalls = 50;
  for (std::size_t i = 0; i < kCalls; ++i) {
    handle(ServiceStandIn::encode<ValidateBladeStateMe>({7, "1.2", ""}));
  }
  std::set<std::string> tokens;
  for (const ServiceStandIn::Sent& sent : service_.waitFor(kCalls)) {
    const auto answer = dme_test::decode<ValidateBladeStateMe>(sent.bytes);
    ASSERT_TRUE(answer && !answer->failure);
    tokens.insert(std::get<0>(answer->me->out).str());
  }
  EXPECT_EQ(tokens.size(), 1u);
  EXPECT_FALSE(tokens.contains(""));
}

TEST_F(Server, RegistrationWithoutAnAnswerWanted_IsCarriedOutSilently) {
  handle(ServiceStandIn::encode<ValidateBladeStateMe>({3, "1.2", ""}, "c", false));
  store_->close();
  EXPECT_EQ(service_.count(), 0u);
  EXPECT_FALSE(chassis_->slot(3)->get(sd::SlotMo::kToken).empty());
}

TEST_F(Server, RegistrationThatCannotBeStored_IsToldToRetryWithoutAToken) {
  store_->close();  // from now on nothing is stored
  const auto answer = call<ValidateBladeStateMe>({3, "1.2", ""});
  ASSERT_FALSE(answer.failure);
  EXPECT_EQ(answer.me->out, std::make_tuple(base::String(""), false, true));
  EXPECT_EQ(server_->counters().notDurable, 1u);
}

TEST_F(Server, Heartbeats_ReachTheMonitor) {
  admit(3);
  tell(ServiceStandIn::encode<UpdateSmaHeartbeatMe>({3, 10, 5}, "c", false));
  tell(ServiceStandIn::encode<UpdateSmaHeartbeatMe>({3, 12, 5}, "c", false));
  tell(ServiceStandIn::encode<UpdateSmaHeartbeatMe>({4, 1, 5}, "c", false));
  tell(ServiceStandIn::encode<UpdateSmaHeartbeatMe>({4294967295U, 1, 5}, "c", false));
  const BladeMonitor::Blade* blade = monitor_.find(3);
  ASSERT_NE(blade, nullptr);
  EXPECT_EQ(blade->state, BladeMonitor::State::kAlive);
  EXPECT_EQ(blade->beats, 2u);
  EXPECT_EQ(blade->missed, 1u);
  EXPECT_EQ(blade->lastTimer, 5u);
  EXPECT_EQ(blade->lastBeat, now_);
  EXPECT_EQ(server_->counters().strayBeats, 2u);
  EXPECT_EQ(callsOf("serviceorchapi::UpdateSmaHeartbeat"), 4u);
}

TEST_F(Server, HeartbeatThatWantsAnAnswer_GetsOne) {
  admit(3);
  EXPECT_FALSE(call<UpdateSmaHeartbeatMe>({3, 1, 1}).failure);
}

OsControllerVersionMe::InTuple versionArguments(std::uint32_t slot, base::String image) {
  return {0, 1, slot, "", "1.2", std::move(image), 1000, "1.1", "cached", 0, true, 1, 6, "vendor"};
}

TEST_F(Server, OsControllerVersion_IsRecordedAndSurvives) {
  admit(3);
  tell(ServiceStandIn::encode<OsControllerVersionMe>(versionArguments(3, "image"), "c", false));
  store_.reset();
  auto reopened = ObjectStore::open(directory_.path());
  ASSERT_TRUE(reopened) << reopened.error().text;
  store_ = std::move(*reopened);
  const Object* slot = store_->find(mo::Dn("sys/chassis-1/slot-3"));
  ASSERT_NE(slot, nullptr);
  EXPECT_EQ(slot->get(sd::SlotMo::kRunningVersion), "1.2");
  EXPECT_EQ(slot->get(sd::SlotMo::kRunningImage), "image");
  EXPECT_EQ(slot->get(sd::SlotMo::kRunningImageSize), 1000u);
  EXPECT_EQ(slot->get(sd::SlotMo::kCachedVersion), "1.1");
  EXPECT_EQ(slot->get(sd::SlotMo::kCachedImage), "cached");
  EXPECT_EQ(slot->get(sd::SlotMo::kCachedImageSize), 0u);
  EXPECT_EQ(slot->get(sd::SlotMo::kVendor), "vendor");
}

TEST_F(Server, OsControllerVersionThatWantsAnAnswer_IsOfferedNoImage) {
  admit(3);
  const auto answer =
      call<OsControllerVersionMe>(versionArguments(3, base::String(std::string(300, 'i'))));
  ASSERT_FALSE(answer.failure);
  EXPECT_EQ(answer.me->out, std::make_tuple(base::String(""), base::String(""), 0U));
  EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kRunningImage), std::string(255, 'i'));
}

TEST_F(Server, OsControllerVersionOfAnUnknownSlot_IsRefused) {
  const auto answer = call<OsControllerVersionMe>(versionArguments(9, "image"));
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->text, "there is no slot 9");
  EXPECT_EQ(chassis_->slot(9), nullptr);
}

TEST_F(Server, ClusterStateRequest_IsAnsweredAndFollowedByTheState) {
  handle(ServiceStandIn::encode<dmeapi::ClusterStateRequestMe>({}));
  const auto sent = service_.waitFor(2);
  EXPECT_TRUE(dme_test::decode<dmeapi::ClusterStateRequestMe>(sent[0].bytes));
  EXPECT_EQ(sent[1].peer, kPeer);
  const auto state = method::decodeCall<dmeapi::ClusterStateMe>(
      reinterpret_cast<const unsigned char*>(sent[1].bytes.data()), sent[1].bytes.size());
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(state->in, std::make_tuple(chassis_->clusterId(), std::uint8_t{1}, chassis_->epoch()));
  EXPECT_FALSE(state->isResponseRequired());
  EXPECT_EQ(state->address().service, 9u);
  EXPECT_EQ(state->address().sender, 26u);
  EXPECT_FALSE(state->cookie().empty());
}

TEST_F(Server, ClusterStateRequestWithoutAnAnswerWanted_StillBringsTheState) {
  const std::string bytes =
      ask(ServiceStandIn::encode<dmeapi::ClusterStateRequestMe>({}, "c", false));
  EXPECT_NE(method::decodeCall<dmeapi::ClusterStateMe>(
                reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()),
            nullptr);
}

TEST_F(Server, Bootstrap_BringsFourEmptySets) {
  const auto answer = call<agboot::BootstrapMe>({});
  ASSERT_FALSE(answer.failure);
  std::apply([](const auto&... set) { EXPECT_EQ((set.size() + ...), 0u); }, answer.me->out);
  EXPECT_FALSE(call<agboot::BootstrapDoneMe>({}).failure);
}

TEST_F(Server, RefreshLogControl_BringsTheLevelInForce) {
  const test_support::LogCapture log(3);
  EXPECT_EQ(std::get<0>(call<sysdebug::RefreshLogControlMe>({}).me->out), 3);
}

TEST_F(Server, UnknownMethod_FailsAndIsCounted) {
  const test_support::LogCapture log;
  const std::string bytes = ask(ServiceStandIn::encode<dmeapi::ClusterStateMe>({1, 1, 1}));
  const auto answer = dme_test::decode<dmeapi::ClusterStateMe>(bytes);
  ASSERT_TRUE(answer && answer->failure);
  EXPECT_EQ(answer->failure->code, 1u);
  EXPECT_EQ(answer->failure->text, "the engine has no such method");
  EXPECT_EQ(server_->counters().unknownMethods, 1u);
  EXPECT_TRUE(log.contains(6, "call of unknown method 445: not carried out"));
}

TEST_F(Server, BytesThatAreNoStimulus_AreCountedAndLogged) {
  const test_support::LogCapture log;
  tell("");
  tell("nonsense");
  tell(std::string(1000, '\xff'));
  EXPECT_EQ(server_->counters().undecodable, 3u);
  EXPECT_TRUE(log.contains(6, "8 bytes are no stimulus: dropped"));
}

TEST_F(Server, ArgumentsCutOrTooLong_FailWithoutEffect) {
  const std::string whole = ServiceStandIn::encode<ValidateBladeStateMe>({3, "1.2", "token"});
  const std::size_t arguments = 4 + 4 + 3 + 4 + 5;
  for (std::size_t cut = 1; cut <= arguments; ++cut) {
    const auto answer =
        dme_test::decode<ValidateBladeStateMe>(ask(whole.substr(0, whole.size() - cut)));
    ASSERT_TRUE(answer && answer->failure) << cut;
    EXPECT_EQ(answer->failure->code, 2u);
    EXPECT_EQ(answer->failure->text, "the arguments do not decode");
  }
  EXPECT_TRUE(dme_test::decode<ValidateBladeStateMe>(ask(whole + "x"))->failure);
  EXPECT_EQ(server_->counters().undecodable, arguments + 1);
  EXPECT_EQ(chassis_->slot(3), nullptr);
}

TEST_F(Server, AnswerThatArrives_IsCountedOnly) {
  dmeapi::ClusterStateMe state;
  const base::OBioStream bytes = method::encodeAnswer(state, {});
  tell({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  EXPECT_EQ(server_->counters().answers, 1u);
  EXPECT_EQ(server_->counters().undecodable, 0u);
}

TEST_F(Server, BytesChangedAtRandom_NeverBreakIt) {
  const test_support::LogCapture quiet(8);
  std::mt19937 random(20240501);
  const std::vector<std::string> calls{
      ServiceStandIn::encode<ValidateBladeStateMe>({3, "1.2", "token"}),
      ServiceStandIn::encode<OsControllerVersionMe>(versionArguments(3, "image")),
      ServiceStandIn::encode<UpdateSmaHeartbeatMe>({3, 1, 1}),
      ServiceStandIn::encode<UpdatePlatformInfoMe>({3, monitor("1.2"), instances({"a1"})}),
      ServiceStandIn::encode<ValidateAppInstancesMe>({3, instances({"a1", "a2"})}),
      ServiceStandIn::encode<NotifyAppFailureMe>({"a1"}),
      ServiceStandIn::encode<UpdateProgressMe>({"a1", 1, 50, 1, 100, "text"}),
      ServiceStandIn::encode<UpdateDiskFormatStatusMe>({3, 1}),
      ServiceStandIn::encode<OsControllerUpgradeProgressMe>({0, 1, 3, "v", 50, 3, "i"})};
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = calls[random() % calls.size()];
    for (unsigned i = 0; i <= random() % 4; ++i) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    bytes.resize(random() % 8 == 0 ? random() % bytes.size() : bytes.size());
    handle(bytes);
  }
  // By its cookie: answers that wait for the disk may come before it or after.
  handle(ServiceStandIn::encode<agboot::BootstrapDoneMe>({}, "last"));
  const auto answer = dme_test::decode<agboot::BootstrapDoneMe>(service_.waitForAnswer("last"));
  ASSERT_TRUE(answer);
  EXPECT_FALSE(answer->failure);
}

}  // namespace
}  // namespace dme
