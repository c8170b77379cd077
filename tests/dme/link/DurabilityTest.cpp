#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "dme/chassis/Chassis.h"
#include "dme/store/ObjectStore.h"
#include "model/sd/FaultMo.h"
#include "model/sd/SlotMo.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/Acknowledged.h"
#include "tests/dme/support/KilledChild.h"
#include "tests/dme/support/TempDirectory.h"

// What the engine has acknowledged is there after its process was killed at any moment.

namespace dme {
namespace {

class Durability : public testing::Test {
 protected:
  /// Runs an engine until it has acknowledged `enough` registrations, kills it, and adds what it
  /// acknowledged until then.
  void runAndKill(std::size_t enough, std::uint32_t firstSlot) {
    dme_test::runAndKill<dme_test::Acknowledged>(
        "dme_durability_child", directory_.path(), firstSlot, enough,
        [this](const dme_test::Acknowledged& record) { note(record); });
  }

  void note(const dme_test::Acknowledged& record) {
    const std::string token(record.token, sizeof record.token);
    const auto [known, isNew] = tokens_.emplace(record.slot, token);
    EXPECT_EQ(known->second, token) << "slot " << record.slot << " was told two tokens";
  }

  void expectAllHeld() {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    const Chassis chassis(**store, std::nullopt);
    for (const auto& [number, token] : tokens_) {
      const Object* slot = chassis.slot(number);
      ASSERT_NE(slot, nullptr) << "slot " << number;
      EXPECT_EQ(slot->get(sd::SlotMo::kToken), token) << "slot " << number;
    }
  }

  dme_test::TempDirectory directory_;
  std::map<std::uint32_t, std::string> tokens_;  // every token that was acknowledged, by slot
};

TEST_F(Durability, KilledAtAnyMoment_HoldsEveryTokenThatWasAcknowledged) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (std::uint32_t round = 0; round < 12; ++round) {
    runAndKill(1 + random() % 60, round * 1200);
    expectAllHeld();
  }
  EXPECT_GT(tokens_.size(), 12u);
}

// Every value of a report carries the report's number, and how much there is of it follows from
// the number: a mixture of two reports is told by any of them.
class ReportDurability : public testing::Test {
 protected:
  void runAndKill(std::size_t enough, std::uint32_t firstNumber) {
    dme_test::runAndKill<dme_test::AcknowledgedReport>(
        "dme_report_child", directory_.path(), firstNumber, enough,
        [this](const dme_test::AcknowledgedReport& record) {
          auto& last = acknowledged_[{record.slot, record.isPlatform != 0}];
          last = std::max(last, record.number);
        });
  }

  void expectWholeReports() {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    for (const auto& [which, number] : acknowledged_) {
      const mo::Dn slot("sys/chassis-1/slot-" + std::to_string(which.first));
      SCOPED_TRACE(slot.c_str() + std::string(which.second ? " platform" : " instances"));
      const std::uint32_t stored =
          which.second ? numberOfPlatform(**store, slot) : numberOfInstances(**store, slot);
      EXPECT_GE(stored, number) << "an acknowledged report is gone";
      seen_.insert(stored);
    }
  }

  std::uint32_t numberOfPlatform(ObjectStore& store, const mo::Dn& slot) {
    const Object* monitor = store.find(slot.child("monitor"));
    if (monitor == nullptr) {
      ADD_FAILURE() << "no monitor";
      return 0;
    }
    const std::uint32_t number = monitor->get(sm::MonitorMo::kMemTotal);
    const std::string text = std::to_string(number);
    EXPECT_EQ(monitor->get(sm::MonitorMo::kOsVersion), text);
    EXPECT_EQ(monitor->has(sm::MonitorMo::kSysUptime), number % 2 == 0);
    EXPECT_EQ(monitor->get(sm::MonitorMo::kObservedAt), number);
    const auto disks = store.below(monitor->dn());
    EXPECT_EQ(disks.size(), number % 7);
    for (const Object* disk : disks) {
      EXPECT_EQ(disk->get(sm::DiskFileSystemMo::kDiskName), text);
      EXPECT_EQ(disk->get(sm::DiskFileSystemMo::kObservedAt), number);
    }
    return number;
  }

  std::uint32_t numberOfInstances(ObjectStore& store, const mo::Dn& slot) {
    std::set<std::string> versions;
    std::size_t instances = 0;
    std::size_t faults = 0;
    for (const Object* object : store.below(slot)) {
      if (object->is<sm::AppInstanceMo>()) {
        ++instances;
        versions.insert(object->get(sm::AppInstanceMo::kInstalledVersion).str());
      }
      faults += object->is<sd::FaultMo>() ? 1 : 0;
    }
    EXPECT_EQ(versions.size(), 1u);
    EXPECT_EQ(faults, instances) << "each is unexpected";
    const auto number = static_cast<std::uint32_t>(std::stoul("0" + *versions.begin()));
    EXPECT_EQ(instances, number % 5 + 1);
    return number;
  }

  dme_test::TempDirectory directory_;
  /// The last report that was acknowledged, by slot and kind.
  std::map<std::pair<std::uint32_t, bool>, std::uint32_t> acknowledged_;
  std::set<std::uint32_t> seen_;
};

TEST_F(ReportDurability, KilledAtAnyMoment_HoldsWholeReportsAndTheLastAcknowledged) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (std::uint32_t round = 0; round < 10; ++round) {
    runAndKill(20 + random() % 200, 1 + round * 1000000);
    expectWholeReports();
  }
  EXPECT_GT(seen_.size(), 20u);
}

}  // namespace
}  // namespace dme
