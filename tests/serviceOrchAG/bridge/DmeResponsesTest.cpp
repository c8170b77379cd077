#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "framework/agboot/AgBootstrap.h"
#include "framework/base/Buffer.h"
#include "framework/method/Config.h"
#include "framework/proc/StateRequest.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/PendingMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/bridge/ResponseSync.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::InstalledMsgHandler;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::RecordingSvc;

base::Buffer cookieOf(const std::string& text) {
  base::Buffer cookie;
  cookie.allocate(text.data(), text.size());
  return cookie;
}

/// A method object as the framework hands it to a callback.
template <class Me>
struct Answer {
  explicit Answer(const std::string& cookie) { me.setCookie(cookieOf(cookie)); }
  Me me;
};

/// A request handler that waits under a cookie, as far as a callback can tell.
struct Waiter {
  explicit Waiter(const std::string& cookie) : sync(&response) { sync.cookie = cookieOf(cookie); }
  bool isWoken() { return sync.event.wait(0) != 1; }

  Response response;
  ResponseSync sync;
};

class DmeResponses : public testing::Test {
 protected:
  MsgHandler handler_;
  const InstalledMsgHandler installed_{handler_};
  LogCapture log_;
};

TEST_F(DmeResponses, ValidationSucceeded_HandsOverTokenAndBothAnswers) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::ValidateBladeStateMe> answer("c");
  Svc::successRspServiceorchapiValidateBladeStateCb(answer.me, "token-3", false, true);
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_EQ(waiter.sync.token, "token-3");
  EXPECT_FALSE(waiter.sync.result);
  EXPECT_TRUE(waiter.sync.shouldRetry);
}

TEST_F(DmeResponses, ValidationSucceededWithAValidBlade_HasResultTrue) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::ValidateBladeStateMe> answer("c");
  Svc::successRspServiceorchapiValidateBladeStateCb(answer.me, "", true, false);
  EXPECT_TRUE(waiter.sync.result);
  EXPECT_FALSE(waiter.sync.shouldRetry);
}

TEST_F(DmeResponses, ValidationFailed_WakesWithResultFalseAndLogsNeitherCodeNorText) {
  Waiter waiter("c");
  waiter.sync.result = true;
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::ValidateBladeStateMe> answer("c");
  Svc::failedRspServiceorchapiValidateBladeStateCb(answer.me, 77, "no such slot");
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_FALSE(waiter.sync.result);
  EXPECT_EQ(waiter.sync.token, "");
  ASSERT_EQ(log_.lines().size(), 1U);
}

TEST_F(DmeResponses, PlatformInfoSucceeded_WakesWithResultTrue) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::UpdatePlatformInfoMe> answer("c");
  Svc::successRspServiceorchapiUpdatePlatformInfoCb(answer.me);
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_TRUE(waiter.sync.result);
}

TEST_F(DmeResponses, PlatformInfoFailed_WakesWithResultFalse) {
  Waiter waiter("c");
  waiter.sync.result = true;
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::UpdatePlatformInfoMe> answer("c");
  Svc::failedRspServiceorchapiUpdatePlatformInfoCb(answer.me, 1, "text");
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_FALSE(waiter.sync.result);
}

TEST_F(DmeResponses, PlatformImage_BecomesATftpUrlWithoutASeparator) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serverapi::OsControllerVersionMe> answer("c");
  Svc::successRspServerapiOsControllerVersionCb(answer.me, "/images/p.bin", "0xAB", 4096);
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_EQ(waiter.sync.imagePath, "tftp://127.128.254.1/images/p.bin");
  EXPECT_EQ(waiter.sync.checksum, "0xAB");
  EXPECT_EQ(waiter.sync.imageSize, 4096U);
  EXPECT_FALSE(waiter.sync.result);
}

TEST_F(DmeResponses, PlatformImageWithoutAPath_LeavesTheUrlEmpty) {
  Waiter waiter("c");
  waiter.sync.result = true;
  PendingResponse pending(handler_, waiter.sync);
  Answer<serverapi::OsControllerVersionMe> answer("c");
  Svc::successRspServerapiOsControllerVersionCb(answer.me, "", "0xAB", 4096);
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_EQ(waiter.sync.imagePath, "");
  EXPECT_EQ(waiter.sync.checksum, "0xAB");
  EXPECT_EQ(waiter.sync.imageSize, 4096U);
  EXPECT_TRUE(waiter.sync.result);
}

TEST_F(DmeResponses, PlatformImageRejected_WakesNobody) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serverapi::OsControllerVersionMe> answer("c");
  Svc::failedRspServerapiOsControllerVersionCb(answer.me, 1, "text");
  EXPECT_FALSE(waiter.isWoken());
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(DmeResponses, WithdrawnCookie_ChangesNoWaiter) {
  Waiter waiter("c");
  { PendingResponse pending(handler_, waiter.sync); }
  Answer<serviceorchapi::ValidateBladeStateMe> answer("c");
  Svc::successRspServiceorchapiValidateBladeStateCb(answer.me, "late", true, true);
  EXPECT_FALSE(waiter.isWoken());
  EXPECT_EQ(waiter.sync.token, "");
  EXPECT_FALSE(waiter.sync.result);
  EXPECT_FALSE(waiter.sync.shouldRetry);
}

TEST_F(DmeResponses, SecondAnswer_IsWrittenToTheSameWaiter) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::UpdatePlatformInfoMe> answer("c");
  Svc::successRspServiceorchapiUpdatePlatformInfoCb(answer.me);
  Svc::failedRspServiceorchapiUpdatePlatformInfoCb(answer.me, 1, "text");
  EXPECT_TRUE(waiter.isWoken());
  EXPECT_FALSE(waiter.sync.result);
}

TEST_F(DmeResponses, CookieNeverFiled_LeavesAnEntryWithoutAWaiter) {
  Answer<serverapi::OsControllerVersionMe> answer("unknown");
  Svc::successRspServerapiOsControllerVersionCb(answer.me, "/p", "c", 1);
  EXPECT_EQ(handler_.knownCookies(), 1U);
  EXPECT_EQ(handler_.waitingCookies(), 0U);
}

TEST_F(DmeResponses, TwoWaiters_AreWokenByTheirOwnAnswers) {
  Waiter first("first");
  Waiter second("second");
  PendingResponse pendingFirst(handler_, first.sync);
  PendingResponse pendingSecond(handler_, second.sync);
  Answer<serviceorchapi::ValidateBladeStateMe> answer("second");
  Svc::successRspServiceorchapiValidateBladeStateCb(answer.me, "t", true, false);
  EXPECT_FALSE(first.isWoken());
  EXPECT_TRUE(second.isWoken());
}

TEST_F(DmeResponses, EverySignallingCallback_LogsItsName) {
  Answer<serviceorchapi::ValidateBladeStateMe> validate("c");
  Answer<serviceorchapi::UpdatePlatformInfoMe> update("c");
  Answer<serverapi::OsControllerVersionMe> image("c");
  Svc::successRspServiceorchapiValidateBladeStateCb(validate.me, "", true, true);
  Svc::failedRspServiceorchapiValidateBladeStateCb(validate.me, 1, "");
  Svc::successRspServiceorchapiUpdatePlatformInfoCb(update.me);
  Svc::failedRspServiceorchapiUpdatePlatformInfoCb(update.me, 1, "");
  Svc::successRspServerapiOsControllerVersionCb(image.me, "/p", "c", 1);
  const std::vector<LogLine> expected = {
      {1, "successRspServiceorchapiValidateBladeStateCb",
       "successRspServiceorchapiValidateBladeStateCb"},
      {1, "failedRspServiceorchapiValidateBladeStateCb", "failedRspAppapiGetInterfaceMappingCb"},
      {1, "successRspServiceorchapiUpdatePlatformInfoCb",
       "successRspServiceorchapiUpdatePlatformInfoCb"},
      {1, "failedRspServiceorchapiUpdatePlatformInfoCb",
       "failedRspServiceorchapiUpdatePlatformInfoCb"},
      {1, "successRspServerapiOsControllerVersionCb", "successRspServerapiOsControllerVersionCb"},
  };
  EXPECT_EQ(log_.lines(), expected);
}

TEST_F(DmeResponses, AnswersWhileWaitersComeAndGo_NeverTouchAWaiterThatIsGone) {
  core_log::setLevel(8);
  std::thread engine([] {
    for (int i = 0; i < 500; ++i) {
      Answer<serviceorchapi::ValidateBladeStateMe> answer("c");
      Svc::successRspServiceorchapiValidateBladeStateCb(answer.me, "a token that is on the heap",
                                                        true, true);
    }
  });
  for (int i = 0; i < 500; ++i) {
    Waiter waiter("c");
    PendingResponse pending(handler_, waiter.sync);
    if (waiter.isWoken()) {
      // An engine that answers again may be writing just now.
      const os::CriticalSection::Guard guard(waiter.sync.lock);
      EXPECT_EQ(waiter.sync.token, "a token that is on the heap");
    }
    pending.withdraw();
    EXPECT_EQ(waiter.isWoken(), !waiter.sync.token.empty()) << "a callback went on after that";
  }
  engine.join();
  EXPECT_EQ(handler_.knownCookies(), 1U);
  EXPECT_EQ(handler_.waitingCookies(), 0U);
}

TEST_F(DmeResponses, ClusterState_IsPassedOnUnchanged) {
  proc::StateRequest::get().reset();
  dmeapi::ClusterStateMe me;
  Svc::executeDmeapiClusterStateCb(me, 0x1122334455667788UL, 200, 9UL);
  const proc::StateRequest::State state = proc::StateRequest::get().state();
  EXPECT_EQ(state.clusterId, 0x1122334455667788UL);
  EXPECT_EQ(state.state, 200);
  EXPECT_EQ(state.epoch, 9UL);
  EXPECT_EQ(proc::StateRequest::get().wait(0), 0U);
  proc::StateRequest::get().reset();
}

TEST_F(DmeResponses, BootstrapAnswer_IsPassedOn) {
  RecordingSvc service;
  agboot::AgBootstrap::get().reset();
  agboot::AgBootstrap::get().submitBootstrapRequest();
  ASSERT_FALSE(agboot::AgBootstrap::get().isDone());
  agboot::BootstrapMe me;
  const method::ConfigSet none;
  Svc::successRspAgbootBootstrapCb(me, none, none, none, none);
  EXPECT_TRUE(agboot::AgBootstrap::get().isDone());
  EXPECT_EQ(service.sent(576).size(), 1U);
  agboot::AgBootstrap::get().reset();
}

TEST_F(DmeResponses, AnswersThatAreNotUsed_LeaveEverythingAsItIs) {
  Waiter waiter("c");
  PendingResponse pending(handler_, waiter.sync);
  Answer<serviceorchapi::NotifyAppFailureMe> failure("c");
  Svc::successRspServiceorchapiNotifyAppFailureCb(failure.me);
  Svc::failedRspServiceorchapiNotifyAppFailureCb(failure.me, 1, "text");
  Answer<serviceorchapi::UpdateSmaHeartbeatMe> heartbeat("c");
  Svc::successRspServiceorchapiUpdateSmaHeartbeatCb(heartbeat.me);
  Svc::failedRspServiceorchapiUpdateSmaHeartbeatCb(heartbeat.me, 1, "text");
  Answer<serviceorchapi::ValidateAppInstancesMe> apps("c");
  Svc::successRspServiceorchapiValidateAppInstancesCb(apps.me);
  Svc::failedRspServiceorchapiValidateAppInstancesCb(apps.me, 1, "text");
  Answer<serviceorchapi::UpdateDiskFormatStatusMe> format("c");
  Svc::successRspServiceorchapiUpdateDiskFormatStatusCb(format.me);
  Svc::failedRspServiceorchapiUpdateDiskFormatStatusCb(format.me, 1, "text");
  Answer<serviceorchapi::UpdateProgressMe> progress("c");
  Svc::successRspServiceorchapiUpdateProgressCb(progress.me);
  Svc::failedRspServiceorchapiUpdateProgressCb(progress.me, 1, "text");
  Answer<serverapi::OsControllerUpgradeProgressMe> upgrade("c");
  Svc::successRspServerapiOsControllerUpgradeProgressCb(upgrade.me);
  Svc::failedRspServerapiOsControllerUpgradeProgressCb(upgrade.me, 1, "text");
  Answer<dmeapi::ClusterStateRequestMe> request("c");
  Svc::successRspDmeapiClusterStateRequestCb(request.me);
  Svc::failedRspDmeapiClusterStateRequestCb(request.me, 1, "text");
  Answer<dmeapi::ClusterStateMe> state("c");
  Svc::formatSuccessRspDmeapiClusterStateCb(state.me);
  Svc::formatFailedRspDmeapiClusterStateCb(state.me);
  Answer<agboot::BootstrapMe> bootstrap("c");
  Svc::failedRspAgbootBootstrapCb(bootstrap.me, 1, "text");
  Answer<agboot::BootstrapDoneMe> done("c");
  Svc::successRspAgbootBootstrapDoneCb(done.me);
  Svc::failedRspAgbootBootstrapDoneCb(done.me, 1, "text");
  EXPECT_FALSE(waiter.isWoken());
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_EQ(handler_.knownCookies(), 1U);
}

}  // namespace
}  // namespace zan_serviceOrchAG
