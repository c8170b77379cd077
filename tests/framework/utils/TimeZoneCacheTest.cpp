#include "framework/utils/TimeZoneCache.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>

namespace {

using utils::TimeZoneCache;

std::string posixOf(const char* zone) {
  TimeZoneCache::getInstance().setTimeZoneData(zone);
  return TimeZoneCache::getInstance().getTimeZoneInPosix().str();
}

TEST(TimeZoneCache, KnownZones_ComeWithTheirRules) {
  EXPECT_EQ(posixOf("Europe/Berlin"), "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(posixOf("Asia/Kolkata"), "IST-5:30");
  EXPECT_EQ(posixOf("Etc/GMT+5"), "<-05>5");
  EXPECT_EQ(posixOf("UTC"), "UTC0");
}

TEST(TimeZoneCache, WhatIsNoZone_IsEmpty) {
  for (const char* zone : {"", "Nowhere/Nothing", "Europe", "/usr/share/zoneinfo/UTC",
                           "../zoneinfo/UTC", "zone.tab", "UTC\n", "UTC x", "\xff"}) {
    EXPECT_EQ(posixOf(zone), "") << zone;
  }
}

TEST(TimeZoneCache, CallersLock_LetsTheOperationsThrough) {
  const std::lock_guard guard(TimeZoneCache::getInstance());
  EXPECT_EQ(posixOf("UTC"), "UTC0");
}

TEST(TimeZoneCache, TwoThreads_SeeOneZoneOrTheOther) {
  std::jthread writer([] {
    for (int round = 0; round < 200; ++round) {
      TimeZoneCache::getInstance().setTimeZoneData(round % 2 == 0 ? "UTC" : "Asia/Kolkata");
    }
  });
  TimeZoneCache::getInstance().setTimeZoneData("UTC");
  for (int round = 0; round < 50; ++round) {
    const std::string posix = TimeZoneCache::getInstance().getTimeZoneInPosix().str();
    EXPECT_TRUE(posix == "UTC0" || posix == "IST-5:30") << posix;
  }
}

}  // namespace
