#include "dme/reports/Operations.h"

#include <gtest/gtest.h>

#include "model/sd/AppInstanceMo.h"
#include "model/sd/OperationMo.h"
#include "tests/dme/reports/ReportFixture.h"

namespace dme {
namespace {

using dme_test::Lines;
using sd::OperationMo;

constexpr const char* kInstance = "sys/chassis-1/slot-3/app-a1";
constexpr const char* kSlotSeven = "sys/chassis-1/slot-7";

class OperationsTest : public dme_test::ReportFixture {
 protected:
  Result<void> progress(std::uint8_t command, std::uint32_t percentage, std::uint8_t status,
                        std::uint64_t now = kNow, const base::String& instance = "a1") {
    return operations_->noteProgress(instance, command, percentage, status, 100, "", now);
  }
  std::uint64_t startOf(const std::string& dn) const {
    return store_->find(mo::Dn(dn))->get(OperationMo::kStartedAt);
  }
};

TEST_F(OperationsTest, Progress_StandsBelowItsInstance) {
  ASSERT_TRUE(operations_->noteProgress("a1", 1, 40, 1, 100, "", kNow));
  ASSERT_TRUE(operations_->noteProgress("a1", 1, 60, 2, 506, "disk full", kNow + 5));
  const Lines expected{
      "operation-installApp: operation command='installApp' percentage=60 status='failed' "
      "code=506 errorText='disk full' startedAt=1700000000000 observedAt=1700000000005"};
  EXPECT_EQ(linesBelow(kInstance), expected);
  open();
  EXPECT_EQ(linesBelow(kInstance), expected);
}

TEST_F(OperationsTest, ErrorTextOfAnEarlierReport_DoesNotStay) {
  ASSERT_TRUE(operations_->noteProgress("a1", 1, 40, 1, 1, "retrying", kNow));
  ASSERT_TRUE(operations_->noteProgress("a1", 1, 100, 3, 100, "", kNow));
  EXPECT_FALSE(store_->find(mo::Dn(std::string(kInstance) + "/operation-installApp"))
                   ->has(OperationMo::kErrorText));
}

TEST_F(OperationsTest, EachCommandAndStatusCode_HasItsWord) {
  const struct {
    std::uint8_t code;
    const char* word;
  } kCommands[] = {{1, "installApp"},         {2, "uninstallApp"}, {3, "upgradeApp"},
                   {4, "startApp"},           {5, "stopApp"},      {6, "formatDisk"},
                   {7, "uploadPlatformImage"}};
  const char* const kStatus[] = {"", "running", "failed", "succeeded"};
  for (const auto& command : kCommands) {
    for (std::uint8_t status = 1; status <= 3; ++status) {
      ASSERT_TRUE(progress(command.code, 1, status));
      const Object* operation =
          store_->find(mo::Dn(std::string(kInstance) + "/operation-" + command.word));
      ASSERT_NE(operation, nullptr) << command.word;
      EXPECT_EQ(operation->get(OperationMo::kCommand), command.word);
      EXPECT_EQ(operation->get(OperationMo::kStatus), kStatus[status]);
    }
  }
  EXPECT_EQ(namesBelow(kInstance).size(), 7u);
}

TEST_F(OperationsTest, UnknownCodesAndInstances_AreRefusedWithoutEffect) {
  EXPECT_EQ(errorOf(progress(0, 1, 1)), "command 0 is unknown");
  EXPECT_EQ(errorOf(progress(8, 1, 1)), "command 8 is unknown");
  EXPECT_EQ(errorOf(progress(255, 1, 1)), "command 255 is unknown");
  EXPECT_EQ(errorOf(progress(1, 1, 0)), "status 0 is unknown");
  EXPECT_EQ(errorOf(progress(1, 1, 4)), "status 4 is unknown");
  EXPECT_EQ(errorOf(progress(1, 1, 1, kNow, "zz")), "there is no application instance 'zz'");
  EXPECT_TRUE(linesBelow(kInstance).empty());
}

TEST_F(OperationsTest, Percentage_IsKeptWithinZeroAndHundred) {
  const struct {
    std::uint32_t reported;
    std::uint32_t kept;
  } kCases[] = {{0, 0},          {100, 100},        {101, 100},
                {1000, 100},     {2147483647, 100}, {4294967295U, 0},  // -1 on its way
                {2147483648U, 0}};
  for (const auto& each : kCases) {
    ASSERT_TRUE(progress(1, each.reported, 1));
    EXPECT_EQ(store_->find(mo::Dn(std::string(kInstance) + "/operation-installApp"))
                  ->get(OperationMo::kPercentage),
              each.kept)
        << each.reported;
  }
}

TEST_F(OperationsTest, RunAfterAnEndedOne_BeginsAnew) {
  const std::string dn = std::string(kInstance) + "/operation-startApp";
  ASSERT_TRUE(progress(4, 0, 1, kNow));
  ASSERT_TRUE(progress(4, 100, 3, kNow + 1));
  ASSERT_TRUE(progress(4, 100, 3, kNow + 2));
  EXPECT_EQ(startOf(dn), kNow) << "the end may be told twice";
  ASSERT_TRUE(progress(4, 0, 1, kNow + 3));
  EXPECT_EQ(startOf(dn), kNow + 3);
  ASSERT_TRUE(progress(4, 10, 2, kNow + 4));
  EXPECT_EQ(startOf(dn), kNow + 3);
  ASSERT_TRUE(progress(4, 100, 3, kNow + 5));
  EXPECT_EQ(startOf(dn), kNow + 5) << "it failed before";
}

TEST_F(OperationsTest, InstanceThatWasStarted_IsFailedNoLonger) {
  ASSERT_TRUE(instances_->noteFailure("a1", kNow));
  ASSERT_TRUE(progress(5, 100, 3));
  ASSERT_TRUE(progress(4, 50, 1));
  ASSERT_TRUE(progress(4, 50, 2));
  const Object* instance = store_->find(mo::Dn(kInstance));
  EXPECT_TRUE(instance->get(sd::AppInstanceMo::kIsFailed));
  ASSERT_TRUE(progress(4, 100, 3));
  EXPECT_FALSE(instance->get(sd::AppInstanceMo::kIsFailed));
  EXPECT_EQ(instance->get(sd::AppInstanceMo::kFailures), 1u);
}

TEST_F(OperationsTest, ReportedInstance_HasItsOperationsAsLongAsItIsReported) {
  ASSERT_TRUE(instances_->record(7, setOf({instance("b1")}), kNow));
  ASSERT_TRUE(progress(1, 10, 1, kNow, "b1"));
  ASSERT_TRUE(instances_->record(7, setOf({instance("b1")}), kNow));
  const std::string dn = std::string(kSlotSeven) + "/reported-b1/operation-installApp";
  EXPECT_NE(store_->find(mo::Dn(dn)), nullptr);
  ASSERT_TRUE(instances_->record(7, {}, kNow));
  EXPECT_EQ(store_->find(mo::Dn(dn)), nullptr);
}

TEST_F(OperationsTest, LongErrorText_IsCutAndCounted) {
  ASSERT_TRUE(operations_->noteProgress("a1", 1, 40, 2, 1, std::string(1048576, 'e'), kNow));
  EXPECT_EQ(store_->find(mo::Dn(std::string(kInstance) + "/operation-installApp"))
                ->get(OperationMo::kErrorText),
            std::string(255, 'e'));
  EXPECT_EQ(counters_.cutTexts, 1u);
}

TEST_F(OperationsTest, DiskFormat_StandsBelowItsSlot) {
  const struct {
    std::uint8_t status;
    const char* line;
  } kCases[] = {
      {1,
       "operation-formatDisk: operation command='formatDisk' status='running' "
       "startedAt=1700000000000 observedAt=1700000000000"},
      {2,
       "operation-formatDisk: operation command='formatDisk' status='succeeded' "
       "startedAt=1700000000000 observedAt=1700000000000"},
      {3,
       "operation-formatDisk: operation command='formatDisk' status='failed' "
       "startedAt=1700000000000 observedAt=1700000000000"},
  };
  for (const auto& each : kCases) {
    ASSERT_TRUE(operations_->noteDiskFormat(7, each.status, kNow));
    EXPECT_EQ(linesBelow(kSlotSeven), Lines{each.line});
  }
  EXPECT_EQ(errorOf(operations_->noteDiskFormat(8, 1, kNow)), "there is no slot 8");
  EXPECT_EQ(errorOf(operations_->noteDiskFormat(7, 0, kNow)), "disk format status 0 is unknown");
  EXPECT_EQ(errorOf(operations_->noteDiskFormat(7, 4, kNow)), "disk format status 4 is unknown");
}

TEST_F(OperationsTest, Upgrade_StandsBelowItsSlotWithTheAgentsCode) {
  const struct {
    std::uint8_t status;
    const char* values;
  } kCases[] = {{3, "status='running'"},
                {2, "status='succeeded' code=100"},
                {5, "status='failed' code=506"},
                {6, "status='failed' code=509"},
                {7, "status='failed' code=503"}};
  for (const auto& each : kCases) {
    ASSERT_TRUE(operations_->noteUpgrade(7, 50, each.status, kNow));
    EXPECT_EQ(
        linesBelow(kSlotSeven),
        Lines{"operation-uploadPlatformImage: operation command='uploadPlatformImage' "
              "percentage=50 " +
              std::string(each.values) + " startedAt=1700000000000 observedAt=1700000000000"});
  }
  constexpr std::uint8_t kUnknown[] = {0, 1, 4, 8, 255};
  for (const std::uint8_t unknown : kUnknown) {
    EXPECT_EQ(errorOf(operations_->noteUpgrade(7, 50, unknown, kNow)),
              "upgrade status " + std::to_string(unknown) + " is unknown");
  }
  EXPECT_EQ(errorOf(operations_->noteUpgrade(8, 50, 3, kNow)), "there is no slot 8");
}

}  // namespace
}  // namespace dme
