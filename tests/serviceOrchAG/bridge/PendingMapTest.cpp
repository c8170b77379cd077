#include "serviceOrchAG/bridge/PendingMap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framework/mo/Mo.h"
#include "framework/noxxml/AgFactory.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/bridge/ResponseSync.h"

namespace zan_serviceOrchAG {
namespace {

class Pending : public MsgHandlerBase {
 public:
  void AG_handleServiceOrchapiRespCb(const base::Buffer& /*cookie*/, method::Config* /*config*/,
                                     bool /*flag*/) override {}
};

base::Buffer cookieOf(const std::string& text) {
  return {text.data(), text.size()};
}

/// What a callback of the engine's answer does. False when nobody waits.
bool answer(MsgHandlerBase& pending, const base::Buffer& cookie, bool result,
            const std::string& token = "") {
  ResponseSync* const waiter = pending.lockPending(cookie);
  if (waiter == nullptr) {
    return false;
  }
  waiter->result = result;
  waiter->token = token;
  waiter->event.set();
  waiter->lock.unlock();
  return true;
}

TEST(ResponseSync, New_HoldsNothingButItsResponseAndAFactory) {
  Response response;
  const ResponseSync waiter(&response);
  EXPECT_EQ(&response, waiter.response);
  EXPECT_TRUE(waiter.cookie.empty());
  EXPECT_EQ(nullptr, waiter.config);
  EXPECT_FALSE(waiter.result);
  EXPECT_FALSE(waiter.shouldRetry);
  EXPECT_EQ("", waiter.token);
  EXPECT_EQ("", waiter.imagePath);
  EXPECT_EQ(0U, waiter.imageSize);
  EXPECT_EQ("", waiter.checksum);
  EXPECT_NE(nullptr, waiter.factory);
  EXPECT_EQ("", waiter.text);
}

TEST(ResponseSync, NewEvent_IsNotSet) {
  ResponseSync waiter(nullptr);
  EXPECT_EQ(1U, waiter.event.wait(0));
}

TEST(ResponseSync, AttachedObject_IsFreedWithIt) {
  class Attached : public mo::Mo {
   public:
    explicit Attached(bool& freed) : Mo(1, mo::Dn()), freed_(freed) {}
    ~Attached() override { freed_ = true; }

   private:
    bool& freed_;
  };
  bool freed = false;
  {
    ResponseSync waiter(nullptr);
    waiter.config = new Attached(freed);
  }
  EXPECT_TRUE(freed);
}

TEST(ResponseSync, ResponseOfTheRequest_IsNotFreedWithIt) {
  auto response = std::make_unique<Response>();
  response->status = 506;
  { const ResponseSync waiter(response.get()); }
  EXPECT_EQ(506U, response->status);
}

class PendingMap : public testing::Test {
 protected:
  std::unique_ptr<ResponseSync> makeWaiter(const std::string& cookie) {
    auto waiter = std::make_unique<ResponseSync>(nullptr);
    waiter->cookie = cookieOf(cookie);
    return waiter;
  }

  Pending pending_;
};

TEST_F(PendingMap, Answer_ReachesTheWaiterOfItsCookie) {
  const auto waiter = makeWaiter("a");
  const PendingResponse filed(pending_, *waiter);
  EXPECT_TRUE(answer(pending_, cookieOf("a"), true, "secret"));
  EXPECT_EQ(0U, waiter->event.wait(0));
  EXPECT_TRUE(waiter->result);
  EXPECT_EQ("secret", waiter->token);
}

TEST_F(PendingMap, FailureAnswer_WakesTheWaiterWithResultFalse) {
  const auto waiter = makeWaiter("a");
  waiter->result = true;
  const PendingResponse filed(pending_, *waiter);
  std::thread engine([this] { answer(pending_, cookieOf("a"), false); });
  EXPECT_EQ(0U, waiter->event.wait(20000));
  engine.join();
  EXPECT_FALSE(waiter->result);
}

TEST_F(PendingMap, TwoInFlight_AreSignalledIndependently) {
  const auto first = makeWaiter("a");
  const auto second = makeWaiter("b");
  const PendingResponse filedFirst(pending_, *first);
  const PendingResponse filedSecond(pending_, *second);
  EXPECT_TRUE(answer(pending_, cookieOf("b"), true, "of b"));
  EXPECT_EQ(1U, first->event.wait(0));
  EXPECT_EQ(0U, second->event.wait(0));
  EXPECT_EQ("", first->token);
  EXPECT_EQ("of b", second->token);
}

TEST_F(PendingMap, LateAnswer_FindsNobodyAndChangesNothing) {
  const auto waiter = makeWaiter("a");
  PendingResponse filed(pending_, *waiter);
  filed.withdraw();
  EXPECT_FALSE(answer(pending_, cookieOf("a"), true, "late"));
  EXPECT_EQ(1U, waiter->event.wait(0));
  EXPECT_EQ("", waiter->token);
}

TEST_F(PendingMap, UnknownCookie_FindsNobodyAndStaysKnown) {
  EXPECT_FALSE(answer(pending_, cookieOf("never filed"), true));
  EXPECT_EQ(1U, pending_.knownCookies());
  EXPECT_EQ(0U, pending_.waitingCookies());
}

TEST_F(PendingMap, EmptyCookie_IsACookieLikeAnyOther) {
  const auto waiter = makeWaiter("");
  const PendingResponse filed(pending_, *waiter);
  EXPECT_TRUE(answer(pending_, base::Buffer(), true));
}

TEST_F(PendingMap, SecondAnswer_StillFindsTheWaiterUntilItWithdraws) {
  const auto waiter = makeWaiter("a");
  PendingResponse filed(pending_, *waiter);
  EXPECT_TRUE(answer(pending_, cookieOf("a"), true, "first"));
  EXPECT_TRUE(answer(pending_, cookieOf("a"), true, "second"));
  filed.withdraw();
  EXPECT_FALSE(answer(pending_, cookieOf("a"), true, "third"));
  EXPECT_EQ("second", waiter->token);
}

TEST_F(PendingMap, ThousandCalls_LeaveAThousandCookiesWithoutAWaiter) {
  for (int call = 0; call < 1000; ++call) {
    const auto waiter = makeWaiter("cookie " + std::to_string(call));
    const PendingResponse filed(pending_, *waiter);
    EXPECT_EQ(1U, pending_.waitingCookies());
  }
  EXPECT_EQ(1000U, pending_.knownCookies());
  EXPECT_EQ(0U, pending_.waitingCookies());
}

TEST_F(PendingMap, RmResp_LeavesTheWaitersLockTakenByTheCaller) {
  const auto waiter = makeWaiter("a");
  pending_.fileResp(*waiter);
  EXPECT_FALSE(waiter->lock.isHeldByCaller());
  pending_.rmResp(cookieOf("a"));
  EXPECT_TRUE(waiter->lock.isHeldByCaller());
}

TEST_F(PendingMap, RmRespTwice_IsHarmless) {
  const auto waiter = makeWaiter("a");
  pending_.fileResp(*waiter);
  pending_.rmResp(cookieOf("a"));
  pending_.rmResp(cookieOf("a"));
  EXPECT_EQ(1U, pending_.knownCookies());
}

TEST_F(PendingMap, RmRespOfAnUnknownCookie_MakesItKnown) {
  pending_.rmResp(cookieOf("a"));
  EXPECT_EQ(1U, pending_.knownCookies());
  EXPECT_EQ(0U, pending_.waitingCookies());
}

TEST_F(PendingMap, Exception_WithdrawsTheWaiter) {
  const auto failing = [this] {
    const auto waiter = makeWaiter("a");
    const PendingResponse filed(pending_, *waiter);
    throw std::runtime_error("handler failed");
  };
  EXPECT_THROW(failing(), std::runtime_error);
  EXPECT_EQ(0U, pending_.waitingCookies());
  EXPECT_FALSE(answer(pending_, cookieOf("a"), true));
}

TEST_F(PendingMap, WithdrawTwice_WithdrawsOnce) {
  const auto waiter = makeWaiter("a");
  PendingResponse filed(pending_, *waiter);
  filed.withdraw();
  const auto other = makeWaiter("a");
  pending_.fileResp(*other);
  filed.withdraw();
  EXPECT_EQ(1U, pending_.waitingCookies()) << "the second withdrawal took the other waiter out";
  pending_.rmResp(cookieOf("a"));
}

TEST_F(PendingMap, CallbackIsWriting_WithdrawalWaitsUntilItIsThrough) {
  auto waiter = makeWaiter("a");
  pending_.fileResp(*waiter);
  ResponseSync* const found = pending_.lockPending(cookieOf("a"));
  ASSERT_EQ(waiter.get(), found);
  std::string tokenAfterWithdrawal;
  std::thread handler([&] {
    pending_.rmResp(cookieOf("a"));
    tokenAfterWithdrawal = waiter->token;
    waiter.reset();  // with its lock held
  });
  while (found->lock.waiterCount() == 0) {
    std::this_thread::yield();
  }
  found->token = "written late";
  found->event.set();
  found->lock.unlock();
  handler.join();
  EXPECT_EQ("written late", tokenAfterWithdrawal);
}

TEST_F(PendingMap, CallbackWaitsForAnotherCallback_GetsTheWaiterAfterIt) {
  const auto waiter = makeWaiter("a");
  pending_.fileResp(*waiter);
  ResponseSync* const first = pending_.lockPending(cookieOf("a"));
  std::thread second([this] { EXPECT_TRUE(answer(pending_, cookieOf("a"), true, "second")); });
  while (waiter->lock.waiterCount() == 0) {
    std::this_thread::yield();
  }
  first->token = "first";
  first->lock.unlock();
  second.join();
  EXPECT_EQ("second", waiter->token);
  pending_.rmResp(cookieOf("a"));
}

TEST_F(PendingMap, CallbackHasFoundTheWaiterButNotItsLock_NobodyGetsPastIt) {
  const auto waiter = makeWaiter("a");
  pending_.fileResp(*waiter);
  ResponseSync* const first = pending_.lockPending(cookieOf("a"));
  std::thread second([this] { answer(pending_, cookieOf("a"), true); });
  while (waiter->lock.waiterCount() == 0) {
    std::this_thread::yield();
  }
  // A withdrawal that came through here could be followed by the end of the waiter.
  std::atomic<bool> hasBegun = false;
  std::atomic<bool> isThrough = false;
  std::thread third([&] {
    hasBegun = true;
    hasBegun.notify_all();
    pending_.knownCookies();
    isThrough = true;
  });
  hasBegun.wait(false);
  for (int i = 0; i < 10000 && !isThrough; ++i) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(isThrough);
  first->lock.unlock();
  second.join();
  third.join();
  pending_.rmResp(cookieOf("a"));
}

TEST_F(PendingMap, CallbacksRaceWithdrawals_NothingIsTouchedAfterItsEnd) {
  constexpr int kCalls = 500;
  std::vector<std::thread> engines;
  for (int engine = 0; engine < 3; ++engine) {
    engines.emplace_back([this] {
      for (int call = 0; call < kCalls; ++call) {
        answer(pending_, cookieOf(std::to_string(call)), true, "token " + std::to_string(call));
      }
    });
  }
  for (int call = 0; call < kCalls; ++call) {
    ResponseSync waiter(nullptr);
    waiter.cookie = cookieOf(std::to_string(call));
    const PendingResponse filed(pending_, waiter);
    if (waiter.event.wait(0) == 0) {
      const os::CriticalSection::Guard guard(waiter.lock);
      EXPECT_EQ("token " + std::to_string(call), waiter.token);
    }
  }
  for (std::thread& engine : engines) {
    engine.join();
  }
  EXPECT_EQ(0U, pending_.waitingCookies());
}

}  // namespace
}  // namespace zan_serviceOrchAG
