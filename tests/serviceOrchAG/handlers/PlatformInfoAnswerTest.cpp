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
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"
#include "tests/support/ManualClock.h"

// The engine's answers, the waits for them and the calls that fail.

namespace zan_serviceOrchAG::platform_info_test {
namespace {

using test_support::ManualClock;

TEST_F(PlatformInfo, EngineRefuses_IsAnsweredAsFailed) {
  answer(false);
  expectReply(handle(kFull), 508, "Failed to update PlatformInfo in DME.");
  for (const LogLine& line : log_.lines()) {
    EXPECT_EQ(1, line.level) << line.text;
  }
}

TEST_F(PlatformInfo, AnswerToTheValidation_HasNoEffect) {
  svc_.onSend([](const RecordingSvc::Sent& call) {
    if (call.classId == ValidateAppInstancesMe::kClassId) {
      ValidateAppInstancesMe me;
      me.setCookie(call.cookie);
      Svc::failedRspServiceorchapiValidateAppInstancesCb(me, 7, "no such slot");
    } else {
      signal(call.cookie, true);
    }
  });
  expectReply(handle(kFull), 100, "OK");
}

TEST_F(PlatformInfo, NoAnswer_TimesOutAfterTenSecondsAndTheLateAnswerFindsNobody) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  EXPECT_EQ(1U, handler_.waitingCookies());
  clock.advance(std::chrono::milliseconds(10000));
  expectReply(request.get(), 506, "response time out.");
  EXPECT_EQ(own(8, "DME timeout during UpdatePlatformInfo for slot 3, Message ID : id-1"),
            log_.lines().back());
  EXPECT_EQ(0U, handler_.waitingCookies());
  EXPECT_EQ(1U, handler_.knownCookies());
  clock.advance(std::chrono::milliseconds(5000));
  signal(svc_.sent().at(1).cookie, true);
  EXPECT_EQ(1U, handler_.knownCookies());
}

TEST_F(PlatformInfo, AnswerJustBeforeTheTimeOut_Counts) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(9999));
  signal(svc_.sent().at(1).cookie, true);
  expectReply(request.get(), 100, "OK");
}

TEST_F(PlatformInfo, RefusalWhileWaiting_WakesAtOnce) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  signal(svc_.sent().at(1).cookie, false);
  expectReply(request.get(), 508, "Failed to update PlatformInfo in DME.");
}

// ----- Failures and threads ---------------------------------------------------------------------

TEST_F(PlatformInfo, UpdateFails_LeavesNoWaiterBehind) {
  svc_.onSend([](const RecordingSvc::Sent& call) {
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      throw std::runtime_error("no memory");
    }
  });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
  signal(svc_.sent().at(1).cookie, true);  // would write into what is gone
}

TEST_F(PlatformInfo, ValidationFails_NothingIsFiled) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, svc_.sent().size());
  EXPECT_EQ(0U, handler_.knownCookies());
}

TEST_F(PlatformInfo, TwoInFlight_GetTheirOwnAnswersInReverseOrder) {
  neverAnswer();
  auto third = std::async(std::launch::async, [this] { return handle(kFull, 3, "of three"); });
  ASSERT_TRUE(svc_.waitForSent(2));
  auto fourth =
      std::async(std::launch::async, [this] { return handle(reportOf(kTop), 4, "of four"); });
  ASSERT_TRUE(svc_.waitForSent(4));
  const auto calls = svc_.sent(UpdatePlatformInfoMe::kClassId);
  ASSERT_EQ(2U, calls.size());
  EXPECT_NE(calls[0].cookie, calls[1].cookie);
  signal(calls[1].cookie, false);
  expectReply(fourth.get(), 508, "Failed to update PlatformInfo in DME.");
  EXPECT_EQ(1U, handler_.waitingCookies());
  signal(calls[0].cookie, true);
  expectReply(third.get(), 100, "OK");
}

TEST_F(PlatformInfo, OneTimesOut_TheOtherIsAnswered) {
  std::future<std::unique_ptr<Response>> first;  // outlive the clock, whose end lets them end
  std::future<std::unique_ptr<Response>> second;
  ManualClock clock;
  neverAnswer();
  first = std::async(std::launch::async, [this] { return handle(kFull, 3); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(4000));
  second = std::async(std::launch::async, [this] { return handle(kFull, 4); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(6000));
  expectReply(first.get(), 506, "response time out.");
  const auto calls = svc_.sent(UpdatePlatformInfoMe::kClassId);
  signal(calls.at(0).cookie, false);
  signal(calls.at(1).cookie, true);
  expectReply(second.get(), 100, "OK");
}

TEST_F(PlatformInfo, AnsweredTwice_OneOfTheAnswersIsTaken) {
  std::vector<std::thread> engines;
  svc_.onSend([&engines](const RecordingSvc::Sent& call) {
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      for (const bool isTaken : {true, false}) {
        engines.emplace_back([cookie = call.cookie, isTaken] { signal(cookie, isTaken); });
      }
    }
  });
  for (int round = 0; round < 50; ++round) {
    const auto response = handle(reportOf(kTop));
    EXPECT_THAT(response->status, testing::AnyOf(100U, 508U));
    for (std::thread& engine : engines) {
      engine.join();
    }
    engines.clear();
  }
}

TEST_F(PlatformInfo, ManyReportsAtOnce_GetTheirOwnObjects) {
  std::vector<std::thread> workers;
  for (int slot = 1; slot <= 5; ++slot) {
    workers.emplace_back([this, slot] {
      const std::string name = "disk" + std::to_string(slot);
      for (int request = 0; request < 40; ++request) {
        expectReply(
            handle(reportOf(disksOf("<Disk><DiskName>" + name + "</DiskName></Disk>")), slot), 100,
            "OK");
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  const auto calls = svc_.calls<UpdatePlatformInfoMe>();
  EXPECT_EQ(200U, calls.size());
  for (const auto& [slot, monitor, disks] : calls) {
    ASSERT_EQ(1U, disks.size());
    EXPECT_EQ((Values{{0x841, base::String("disk" + std::to_string(slot))}}),
              valuesOf(disks.configs()[0]));
  }
}

TEST_F(PlatformInfo, ThousandReports_LeaveAThousandCookies) {
  core_log::setLevel(8);
  for (int report = 0; report < 1000; ++report) {
    handle(kFull);
  }
  EXPECT_EQ(1000U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

}  // namespace
}  // namespace zan_serviceOrchAG::platform_info_test
