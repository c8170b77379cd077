#include "sma/platform/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace sma {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using ::testing::ElementsAre;

std::vector<std::string> idsOf(const std::vector<AppInstance>& apps) {
  std::vector<std::string> ids;
  for (const AppInstance& app : apps) {
    ids.push_back(app.id);
  }
  return ids;
}

/// What a kernel would show: the demand, damped exponentially over the window since long ago.
double integratedLoad(const BladePlatform& platform, double windowSeconds, seconds end) {
  constexpr milliseconds kStep(250);
  const double weight = 1 - std::exp(-0.25 / windowSeconds);
  double average = platform.demand(seconds(0));
  for (milliseconds time(0); time < end; time += kStep) {
    average += (platform.demand(time + kStep / 2) - average) * weight;
  }
  return average;
}

TEST(Platform, LoadAverages_AreTheDemandDampedOverOneFiveAndFifteenMinutes) {
  const BladePlatform platform(1, 3, 2);
  const seconds time = hours(4);
  const LoadAverages load = platform.load(time);
  EXPECT_NEAR(load.minus1, integratedLoad(platform, 60, time), 0.002);
  EXPECT_NEAR(load.minus5, integratedLoad(platform, 300, time), 0.002);
  EXPECT_NEAR(load.minus15, integratedLoad(platform, 900, time), 0.002);
}

TEST(Platform, Load_MovesButSlowly) {
  for (std::uint32_t slot = 1; slot <= 50; ++slot) {
    const BladePlatform platform(1, slot, 0);
    double least = 1e9;
    double most = 0;
    for (int second = 0; second < 600; second += 10) {
      const double now = platform.load(seconds(second)).minus1;
      const double later = platform.load(seconds(second + 1)).minus1;
      EXPECT_GT(now, 0) << slot;
      EXPECT_LT(std::abs(later - now), 0.02 * now + 0.02) << slot;
      least = std::min(least, now);
      most = std::max(most, now);
    }
    EXPECT_GT(most, 1.05 * least) << slot;
  }
}

TEST(Platform, Memory_AddsUpAndHoldsThatOfTheInstances) {
  for (std::uint32_t slot = 1; slot <= 50; ++slot) {
    for (const unsigned apps : {0U, 3U, 1000U}) {
      const BladePlatform platform(7, slot, apps);
      const MemoryUse memory = platform.memory(minutes(slot));
      EXPECT_EQ(memory.freeKb + memory.usedKb, memory.totalKb);
      EXPECT_GT(memory.freeKb, 0U);
      EXPECT_LT(memory.usedKb, memory.totalKb);
      EXPECT_LE(memory.totalKb, 128U * 1024 * 1024);
      EXPECT_LT(platform.appsMemoryKb(minutes(slot)), memory.usedKb);
      EXPECT_EQ(platform.appsMemoryKb(minutes(slot)) == 0, apps == 0);
    }
  }
}

TEST(Platform, InstanceThatStopped_GivesItsMemoryBack) {
  BladePlatform platform(1, 3, 2);
  const MemoryUse before = platform.memory(seconds(5));
  platform.change({.id = "slot3-app1", .running = false});
  EXPECT_LT(platform.appsMemoryKb(seconds(5)), before.usedKb);
  EXPECT_LT(platform.memory(seconds(5)).usedKb, before.usedKb);
}

TEST(Platform, Disks_FillSlowlyAndNeverOverflow) {
  const BladePlatform platform(1, 3, 2);
  const auto now = platform.disks(seconds(0));
  const auto later = platform.disks(minutes(1));
  const auto atLast = platform.disks(hours(24 * 365 * 20));
  ASSERT_GE(now.size(), 2U);
  ASSERT_EQ(now.size(), later.size());
  for (std::size_t i = 0; i < now.size(); ++i) {
    EXPECT_EQ(now[i].freeKb + now[i].usedKb, now[i].totalKb);
    EXPECT_EQ(now[i].totalKb, later[i].totalKb);
    EXPECT_GT(later[i].usedKb, now[i].usedKb);
    EXPECT_LT(later[i].usedKb - now[i].usedKb, 5000U);
    EXPECT_EQ(atLast[i].freeKb, 0U);
    EXPECT_LT(now[i].totalKb, 4'294'967'296U);
  }
  EXPECT_EQ(now[0].name, "sda1");
  EXPECT_EQ(now[0].mountPoint, "/");
}

TEST(Platform, SameSeedAndSlot_AreAlikeHoweverOftenLookedAt) {
  const BladePlatform one(5, 3, 2);
  const BladePlatform same(5, 3, 2);
  for (int second = 0; second < 100; ++second) {
    one.load(seconds(second));
    one.memory(seconds(second));
  }
  EXPECT_EQ(one.load(seconds(100)).minus1, same.load(seconds(100)).minus1);
  EXPECT_EQ(one.memory(seconds(100)).usedKb, same.memory(seconds(100)).usedKb);
  EXPECT_EQ(one.disks(seconds(100))[0].usedKb, same.disks(seconds(100))[0].usedKb);
  EXPECT_EQ(one.upTime(seconds(100)), same.upTime(seconds(0)) + seconds(100));
}

TEST(Platform, OtherSeedOrSlot_Differs) {
  const auto load = BladePlatform(5, 3, 2).load(seconds(9)).minus1;
  EXPECT_NE(load, BladePlatform(6, 3, 2).load(seconds(9)).minus1);
  EXPECT_NE(load, BladePlatform(5, 4, 2).load(seconds(9)).minus1);
}

TEST(Platform, Instances_AreNamedAfterSlotAndNumber) {
  const auto apps = BladePlatform(9, 12, 3).apps();
  ASSERT_THAT(idsOf(apps), ElementsAre("slot12-app1", "slot12-app2", "slot12-app3"));
  EXPECT_EQ(apps[0].version, "1.1");
  EXPECT_EQ(apps[1].version, "1.2");
  EXPECT_TRUE(apps[0].running);
  EXPECT_TRUE(apps[0].enabled);
  EXPECT_FALSE(apps[0].external);
  EXPECT_TRUE(apps[2].external);
}

TEST(Platform, Changes_AddUpForOneInstance) {
  BladePlatform platform(9, 1, 2);
  platform.change({.id = "slot1-app2", .version = "2.0"});
  platform.change({.id = "slot1-app2", .running = false, .hotfixes = "HF-1"});
  const auto apps = platform.apps();
  EXPECT_EQ(apps[1].version, "2.0");
  EXPECT_FALSE(apps[1].running);
  EXPECT_EQ(apps[1].hotfixes, "HF-1");
  EXPECT_EQ(apps[0].version, "1.1");
}

TEST(Platform, InstallingAndRemoving_ChangesTheList) {
  BladePlatform platform(9, 1, 2);
  platform.change({.id = "mail", .version = "3"});
  EXPECT_THAT(idsOf(platform.apps()), ElementsAre("slot1-app1", "slot1-app2", "mail"));
  platform.change({.id = "slot1-app1", .installed = false});
  platform.change({.id = "none", .installed = false});
  EXPECT_THAT(idsOf(platform.apps()), ElementsAre("slot1-app2", "mail"));
  platform.change({.id = "slot1-app1", .installed = true});
  EXPECT_THAT(idsOf(platform.apps()), ElementsAre("slot1-app1", "slot1-app2", "mail"));
}

TEST(Platform, InstanceThatCameAndWent_LeavesNothing) {
  BladePlatform platform(1, 3, 1);
  platform.change({.id = "a1", .version = "9", .running = false});
  platform.change({.id = "a1", .installed = false});
  EXPECT_EQ(platform.apps().size(), 1U);
  platform.change({.id = "a1", .installed = true});
  EXPECT_EQ(platform.apps().back().version, "1.0");
}

TEST(Platform, RemovedApps_AreAllOfThem) {
  BladePlatform platform(1, 3, 2);
  platform.change({.id = "a1"});
  platform.removeApps();
  EXPECT_TRUE(platform.apps().empty());
  platform.change({.id = "slot3-app1", .version = "2.0"});
  EXPECT_EQ(platform.apps().at(0).id, "slot3-app1");
}

}  // namespace
}  // namespace sma
