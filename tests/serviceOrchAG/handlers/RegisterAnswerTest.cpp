#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framework/core_log/Log.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/serviceOrchAG/handlers/RegisterHarness.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ReplyDocument.h"
#include "tests/support/ValidationAnswer.h"

// The waits for the engine's answer and the calls that fail.

namespace zan_serviceOrchAG::register_test {
namespace {

using test_support::answerValidation;
using test_support::ManualClock;
using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::Pair;

// ----- Time-out ---------------------------------------------------------------------------------

TEST_F(Register, NoAnswer_TimesOutAfterTwentySecondsAndTheLateAnswerFindsNobody) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(20000)));
  clock.advance(std::chrono::milliseconds(20000));
  expectReply(request.get(), 506, "response time out during validating blade state.", "");
  EXPECT_TRUE(
      log_.contains(8, "DME timeout during ValidateBladeState for slot : 3, Message ID : id-1"));
  EXPECT_FALSE(is_bladeRegistered("3"));
  ASSERT_EQ(1U, svc_.sent().size()) << "the images are not reported";
  clock.advance(std::chrono::milliseconds(5000));
  answerValidation(svc_.sent()[0].cookie, true, false, "late");
  EXPECT_FALSE(is_bladeRegistered("3"));
}

TEST_F(Register, AnswerJustBeforeTheTimeOut_Counts) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(20000)));
  clock.advance(std::chrono::milliseconds(19999));
  answerValidation(svc_.sent()[0].cookie, true, false, "in time");
  expectReply(request.get(), 100, "OK", "in time");
}

// ----- Failures and threads ---------------------------------------------------------------------

TEST_F(Register, CallFails_WithdrawsItsCookie) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

TEST_F(Register, AddressIsRefused_LeavesNoClient) {
  channels_.onServerEndPoint(test_support::throws(std::runtime_error("no such host")));
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_EQ(0U, handler_.waitingCookies());
}

TEST_F(Register, TwoInFlight_GetTheirOwnAnswers) {
  neverAnswer();
  const auto requestOfSlot = [](const std::string& slot) {
    return requestOf("<bladeSlotId>" + slot + "</bladeSlotId><ip>h</ip><port>1</port>");
  };
  auto third = std::async(std::launch::async, [&] { return handle(requestOfSlot("3")); });
  ASSERT_TRUE(svc_.waitForSent(1));
  auto fourth = std::async(std::launch::async, [&] { return handle(requestOfSlot("4")); });
  ASSERT_TRUE(svc_.waitForSent(2));
  const auto calls = svc_.sent(ValidateBladeStateMe::kClassId);
  ASSERT_EQ(2U, calls.size());
  EXPECT_NE(calls[0].cookie, calls[1].cookie);
  answerValidation(calls[1].cookie, false, false, "of four");
  expectReply(fourth.get(), 511, "failed to recognized blade in DME", "of four");
  answerValidation(calls[0].cookie, true, false, "of three");
  expectReply(third.get(), 100, "OK", "of three");
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_FALSE(getBladeStatus("4"));
}

TEST_F(Register, AnsweredTwice_OneOfTheAnswersIsTaken) {
  std::vector<std::thread> engines;
  svc_.onSend([&engines](const RecordingSvc::Sent& call) {
    if (call.classId == ValidateBladeStateMe::kClassId) {
      for (const char* token : {"first", "second"}) {
        engines.emplace_back(
            [cookie = call.cookie, token] { answerValidation(cookie, true, false, token); });
      }
    }
  });
  for (int round = 0; round < 50; ++round) {
    const auto response = handle(kFull);
    const auto further = ReplyDocument::parse(response->body).further;
    EXPECT_THAT(further, ElementsAre(Pair("token", testing::AnyOf("first", "second")),
                                     Pair("zedPubKey", "host key")));
    for (std::thread& engine : engines) {
      engine.join();
    }
    engines.clear();
  }
}

TEST_F(Register, ThousandRegistrations_LeaveAThousandCookies) {
  core_log::setLevel(8);
  for (int call = 0; call < 1000; ++call) {
    handle(kFull);
  }
  EXPECT_EQ(1000U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

}  // namespace
}  // namespace zan_serviceOrchAG::register_test
