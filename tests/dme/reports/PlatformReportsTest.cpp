#include "dme/reports/PlatformReports.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/dme/reports/ReportFixture.h"

namespace dme {
namespace {

using namespace std::string_literals;

using dme_test::Lines;
using sm::DiskFileSystemMo;
using sm::MonitorMo;

constexpr const char* kSlot = "sys/chassis-1/slot-7";

class PlatformReportsTest : public dme_test::ReportFixture {
 protected:
  Result<void> record(const mo::Mo& monitor, const method::ConfigSet& disks,
                      std::uint64_t now = kNow, std::uint32_t slot = 7) {
    return platforms_->record(slot, monitor.toConfig(), disks, now);
  }
};

TEST_F(PlatformReportsTest, WholeReport_StandsBelowItsSlot) {
  MonitorMo monitor;
  monitor.set(MonitorMo::kOsVersion, "1.2");
  monitor.set(MonitorMo::kSysUptime, "3 days");
  monitor.set(MonitorMo::kCpuMinus1, 0.5F);
  monitor.set(MonitorMo::kMemTotal, 1024);
  monitor.set(MonitorMo::kDiskCount, 1);
  DiskFileSystemMo disk;
  disk.set(DiskFileSystemMo::kDiskName, "sda1");
  disk.set(DiskFileSystemMo::kDiskTotal, 100);
  disk.set(DiskFileSystemMo::kDiskFree, 60);
  disk.set(DiskFileSystemMo::kDiskUsed, 40);
  disk.set(DiskFileSystemMo::kDiskMountPoint, "/var");
  ASSERT_TRUE(record(monitor, setOf({disk.toConfig()})));
  const Lines expected{
      "monitor: monitor osVersion='1.2' sysUptime='3 days' cpuMinus1=0.500000 memTotal=1024 "
      "diskCount=1 observedAt=1700000000000",
      "monitor/disk-1: diskFileSystem diskName='sda1' diskTotal=100 diskFree=60 diskUsed=40 "
      "diskMountPoint='/var' observedAt=1700000000000"};
  EXPECT_EQ(linesBelow(kSlot), expected);
  EXPECT_EQ(counters_, ReportCounters());
}

TEST_F(PlatformReportsTest, NextReport_ReplacesTheOneBeforeAlsoOnTheDisk) {
  MonitorMo first = monitor("1.2");
  first.set(MonitorMo::kSysUptime, "3 days");
  ASSERT_TRUE(record(first, setOf({disk("a"), disk("b"), disk("c")})));
  ASSERT_TRUE(commit());
  ASSERT_TRUE(record(monitor("1.3"), setOf({disk("b")}), kNow + 5));
  const Lines expected{
      "monitor: monitor osVersion='1.3' observedAt=1700000000005",
      "monitor/disk-1: diskFileSystem diskName='b' diskTotal=10 observedAt=1700000000005"};
  EXPECT_EQ(linesBelow(kSlot), expected);
  open();
  EXPECT_EQ(linesBelow(kSlot), expected);
}

TEST_F(PlatformReportsTest, SameReportAgain_CostsNoTransactionButIsObserved) {
  ASSERT_TRUE(record(monitor(), setOf({disk("a")})));
  ASSERT_TRUE(commit());
  const std::uint64_t before = store_->counters().transactions;
  ASSERT_TRUE(record(monitor(), setOf({disk("a")}), kNow + 1000));
  ASSERT_TRUE(commit());
  EXPECT_EQ(store_->counters().transactions, before);
  EXPECT_EQ(linesBelow(kSlot)[0], "monitor: monitor osVersion='1.2' observedAt=1700000001000");
  ASSERT_TRUE(record(monitor(), setOf({disk("a")}), kNow + 60000));
  ASSERT_TRUE(commit());
  EXPECT_EQ(store_->counters().transactions, before + 1);
}

TEST_F(PlatformReportsTest, EmptyReport_LeavesAnEmptyMonitor) {
  ASSERT_TRUE(record(monitor(), setOf({disk("a")})));
  ASSERT_TRUE(record(MonitorMo(), {}));
  EXPECT_EQ(linesBelow(kSlot), Lines{"monitor: monitor observedAt=1700000000000"});
}

TEST_F(PlatformReportsTest, UnknownSlotOrNoMonitor_IsRefusedWithoutEffect) {
  EXPECT_EQ(errorOf(record(monitor(), {}, kNow, 8)), "there is no slot 8");
  EXPECT_EQ(errorOf(record(monitor(), {}, kNow, 0)), "there is no slot 0");
  EXPECT_EQ(errorOf(record(monitor(), {}, kNow, 4294967295U)), "there is no slot 4294967295");
  EXPECT_EQ(errorOf(record(DiskFileSystemMo(), setOf({disk("a")}))), "class 649 is no monitor");
  EXPECT_EQ(errorOf(platforms_->record(7, method::Config(), {}, kNow)), "class 0 is no monitor");
  EXPECT_TRUE(linesBelow(kSlot).empty());
}

TEST_F(PlatformReportsTest, ThousandDisks_SixtyFourAreKeptAndTheRestCounted) {
  method::ConfigSet disks;
  for (int i = 1; i <= 1000; ++i) {
    disks.append(disk("d" + std::to_string(i)));
  }
  ASSERT_TRUE(record(monitor(), disks));
  EXPECT_EQ(namesBelow(kSlot).size(), 65u);
  EXPECT_EQ(counters_.surplusDisks, 936u);
  const Object* last = store_->find(mo::Dn(std::string(kSlot) + "/monitor/disk-64"));
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(last->get(DiskFileSystemMo::kDiskName), "d64");
}

TEST_F(PlatformReportsTest, ObjectsOfOtherClassesAmongTheDisks_AreLeftOutAndCounted) {
  ASSERT_TRUE(record(monitor(), setOf({monitor().toConfig(), disk("a"), method::Config()})));
  EXPECT_EQ(namesBelow(kSlot), (std::vector<std::string>{"monitor", "monitor/disk-1"}));
  EXPECT_EQ(counters_.unfitObjects, 2u);
}

TEST_F(PlatformReportsTest, UnfitValues_AreLeftOutAndCounted) {
  MonitorMo hostile = monitor();
  hostile.set(MonitorMo::kMemTotal.id, base::String("much"));  // another kind
  hostile.set(0xdead, base::String("unknown"));                // no such property
  hostile.set(MonitorMo::kObservedAt, 1);                      // the engine's own
  hostile.set(MonitorMo::kCpuMinus1, std::numeric_limits<float>::quiet_NaN());
  hostile.set(MonitorMo::kCpuMinus5, std::numeric_limits<float>::infinity());
  ASSERT_TRUE(record(hostile, {}));
  EXPECT_EQ(linesBelow(kSlot), Lines{"monitor: monitor osVersion='1.2' observedAt=1700000000000"});
  EXPECT_EQ(counters_.unfitValues, 5u);
  EXPECT_TRUE(commit());
}

TEST_F(PlatformReportsTest, MegabyteText_IsCutAndCounted) {
  ASSERT_TRUE(record(monitor(std::string(1048576, 'x')), setOf({disk(std::string(256, 'y'))})));
  EXPECT_EQ(store_->find(mo::Dn(std::string(kSlot) + "/monitor"))->get(MonitorMo::kOsVersion),
            std::string(255, 'x'));
  EXPECT_EQ(store_->find(mo::Dn(std::string(kSlot) + "/monitor/disk-1"))
                ->get(DiskFileSystemMo::kDiskName),
            std::string(255, 'y'));
  EXPECT_EQ(counters_.cutTexts, 2u);
}

TEST_F(PlatformReportsTest, HostileTexts_ComeBackAsTheyWere) {
  const std::string hostile = "a\0'\"\xff\xc3/../\n%s"s;
  ASSERT_TRUE(record(monitor(hostile), setOf({disk(hostile)})));
  open();
  EXPECT_EQ(store_->find(mo::Dn(std::string(kSlot) + "/monitor"))->get(MonitorMo::kOsVersion),
            hostile);
  EXPECT_EQ(namesBelow(kSlot), (std::vector<std::string>{"monitor", "monitor/disk-1"}));
}

TEST_F(PlatformReportsTest, ReportsOfTwoSlots_StandApart) {
  ASSERT_TRUE(record(monitor("1.7"), {}, kNow, 7));
  ASSERT_TRUE(record(monitor("1.3"), {}, kNow, 3));
  EXPECT_EQ(store_->find(mo::Dn("sys/chassis-1/slot-7/monitor"))->get(MonitorMo::kOsVersion),
            "1.7");
  EXPECT_EQ(store_->find(mo::Dn("sys/chassis-1/slot-3/monitor"))->get(MonitorMo::kOsVersion),
            "1.3");
}

}  // namespace
}  // namespace dme
