#include "dme/link/ReportMethods.h"

#include <gtest/gtest.h>

#include "framework/core_log/LineBudget.h"
#include "framework/core_log/Log.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/link/MethodServerFixture.h"
#include "tests/support/LogCapture.h"

namespace dme {
namespace {

using dme_test::ServiceStandIn;
using serverapi::OsControllerUpgradeProgressMe;
using serviceorchapi::NotifyAppFailureMe;
using serviceorchapi::UpdateDiskFormatStatusMe;
using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::UpdateProgressMe;
using serviceorchapi::ValidateAppInstancesMe;

using ReportMethodsTest = dme_test::MethodServerFixture;

TEST_F(ReportMethodsTest, EveryReport_IsAnsweredWhenItIsStored) {
  admit(3);
  EXPECT_FALSE(call<UpdatePlatformInfoMe>({3, monitor("1.2"), {}}).failure);
  EXPECT_FALSE(call<ValidateAppInstancesMe>({3, instances({"a1"})}).failure);
  EXPECT_FALSE(call<NotifyAppFailureMe>({"a1"}).failure);
  EXPECT_FALSE(call<UpdateProgressMe>({"a1", 1, 50, 1, 100, ""}).failure);
  EXPECT_FALSE(call<UpdateDiskFormatStatusMe>({3, 1}).failure);
  EXPECT_FALSE(call<OsControllerUpgradeProgressMe>({0, 1, 3, "99.1.2.3", 50, 3, "nox-os"}).failure);
  store_.reset();
  auto reopened = ObjectStore::open(directory_.path());
  ASSERT_TRUE(reopened) << reopened.error().text;
  store_ = std::move(*reopened);
  const std::string slot = "sys/chassis-1/slot-3";
  for (const char* name : {"/monitor", "/reported-a1", "/reported-a1/fault-unexpected",
                           "/reported-a1/operation-installApp", "/operation-formatDisk",
                           "/operation-uploadPlatformImage"}) {
    EXPECT_NE(store_->find(mo::Dn(slot + name)), nullptr) << name;
  }
  const Object* monitorObject = store_->find(mo::Dn(slot + "/monitor"));
  EXPECT_EQ(monitorObject->get(sm::MonitorMo::kObservedAt), 1700000000000U);
}

TEST_F(ReportMethodsTest, ReportWithoutAnAnswerWanted_IsTakenSilently) {
  admit(3);
  tell(ServiceStandIn::encode<ValidateAppInstancesMe>({3, instances({"a1"})}, "c", false));
  tell(ServiceStandIn::encode<NotifyAppFailureMe>({"nobody"}, "c", false));
  EXPECT_NE(store_->find(mo::Dn("sys/chassis-1/slot-3/reported-a1")), nullptr);
  EXPECT_EQ(server_->counters().reports.refused, 1u);
}

TEST_F(ReportMethodsTest, RefusedReports_FailWithTheReasonAndAreCounted) {
  const test_support::LogCapture log;
  admit(3);
  call<ValidateAppInstancesMe>({3, instances({"a1"})});
  const std::uint64_t before = store_->counters().transactions;
  std::uint64_t refused = 0;
  const auto expectRefused = [&](const auto& answer, const char* reason) {
    ASSERT_TRUE(answer.failure) << reason;
    EXPECT_EQ(answer.failure->bits, 1u);
    EXPECT_EQ(answer.failure->code, 1003u);
    EXPECT_EQ(answer.failure->text, reason);
    EXPECT_EQ(server_->counters().reports.refused, ++refused);
  };
  expectRefused(call<UpdatePlatformInfoMe>({9, monitor("1"), {}}), "there is no slot 9");
  expectRefused(call<UpdatePlatformInfoMe>({3, {}, {}}), "class 0 is no monitor");
  expectRefused(call<ValidateAppInstancesMe>({9, {}}), "there is no slot 9");
  expectRefused(call<NotifyAppFailureMe>({"zz"}), "there is no application instance 'zz'");
  expectRefused(call<UpdateProgressMe>({"zz", 1, 50, 1, 100, ""}),
                "there is no application instance 'zz'");
  expectRefused(call<UpdateProgressMe>({"a1", 8, 50, 1, 100, ""}), "command 8 is unknown");
  expectRefused(call<UpdateProgressMe>({"a1", 1, 50, 4, 100, ""}), "status 4 is unknown");
  expectRefused(call<UpdateDiskFormatStatusMe>({9, 1}), "there is no slot 9");
  expectRefused(call<UpdateDiskFormatStatusMe>({3, 0}), "disk format status 0 is unknown");
  expectRefused(call<OsControllerUpgradeProgressMe>({0, 1, 9, "", 50, 3, ""}),
                "there is no slot 9");
  expectRefused(call<OsControllerUpgradeProgressMe>({0, 1, 3, "", 50, 4, ""}),
                "upgrade status 4 is unknown");
  EXPECT_TRUE(log.contains(6,
                           "serviceorchapi::NotifyAppFailure refused: there is no application "
                           "instance 'zz'"));
  store_->commit();
  EXPECT_EQ(store_->counters().transactions, before);
}

TEST_F(ReportMethodsTest, RefusedReportsWithoutEnd_AreAllRefusedButNotAllLogged) {
  const test_support::LogCapture log;
  constexpr std::size_t kBurst = 500;
  for (std::size_t i = 0; i < kBurst; ++i) {
    EXPECT_TRUE(call<NotifyAppFailureMe>({"zz" + std::to_string(i)}).failure);
    EXPECT_TRUE(call<UpdateDiskFormatStatusMe>({9, 1}).failure);
    handle("no stimulus");
  }
  EXPECT_EQ(server_->counters().reports.refused, 2 * kBurst);
  EXPECT_EQ(server_->counters().undecodable, kBurst);
  EXPECT_EQ(log.lines().size(), 3 * core_log::LineBudget::kMostLines);

  ASSERT_TRUE(server_->deadline());
  server_->tick(*server_->deadline());
  const std::string rest = std::to_string(kBurst - core_log::LineBudget::kMostLines) +
                           " more lines like those before were left out";
  EXPECT_TRUE(log.contains(6, "serviceorchapi::NotifyAppFailure refused: " + rest));
  EXPECT_TRUE(
      log.contains(6, "serviceorchapi::UpdateDiskFormatStatus refused for slot 9: " + rest));
  EXPECT_TRUE(log.contains(6, "bytes that are no stimulus: " + rest));
  EXPECT_EQ(log.lines().size(), 3 * core_log::LineBudget::kMostLines + 3);
  EXPECT_FALSE(server_->deadline());
}

TEST_F(ReportMethodsTest, ReportThatCannotBeStored_FailsWithTheReason) {
  admit(3);
  store_->close();  // from now on nothing is stored
  const auto answer = call<UpdatePlatformInfoMe>({3, monitor("1.2"), {}});
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code, 1005u);
  EXPECT_EQ(answer.failure->text, "the report could not be stored");
  EXPECT_EQ(server_->counters().notDurable, 1u);
}

TEST_F(ReportMethodsTest, WhatWasNotTakenAsItCame_IsCounted) {
  admit(3);
  method::ConfigSet disks;
  for (int i = 0; i < 1000; ++i) {
    disks.append(sm::DiskFileSystemMo().toConfig());
  }
  EXPECT_FALSE(call<UpdatePlatformInfoMe>({3, monitor(std::string(1048576, 'x')), disks}).failure);
  const ReportCounters counters = server_->counters().reports;
  EXPECT_EQ(counters.surplusDisks, 936u);
  EXPECT_EQ(counters.cutTexts, 1u);
}

}  // namespace
}  // namespace dme
