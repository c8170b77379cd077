#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "framework/utils/TimeZoneCache.h"
#include "model/comm/DateTimeMo.h"
#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppMo.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::LogCapture;

// How values of the model stand in the documents.

TEST(Install, DeployTypes_HaveTheirTexts) {
  const std::vector<std::pair<std::uint8_t, std::string>> rows{
      {0, "unknown"}, {1, "native"}, {2, "lxc"}, {3, "vm"}, {4, "unknown"}, {7, "unknown"}};
  for (const auto& [value, text] : rows) {
    Config target = executorNamed("install").target();
    setOfApp<&sm::AppMo::kDeployType>(target, std::uint8_t{value});
    std::string expected = golden("install.xml");
    const std::string before = "<installType>lxc<";
    ASSERT_NE(expected.find(before), std::string::npos);
    expected.replace(expected.find(before), before.size(), "<installType>" + text + '<');
    EXPECT_EQ(sentDocument("install", target), expected);
  }
}

TEST(Install, TwoApplications_TheFirstCounts) {
  Config target = executorNamed("install").target();
  Config second(0x306, mo::Dn("sys/other"));
  second.set(sm::AppMo::kPackageFile.id, Value(base::String("/pkg/second.bin")));
  target.addChild(second);
  EXPECT_EQ(sentDocument("install", target), golden("install.xml"));
}

TEST(Install, HostileValues_StayText) {
  Config target = executorNamed("install").target();
  setOfApp<&sm::AppMo::kPackageFile>(target, base::String("</packageFile><evil a=\"1\">&"));
  EXPECT_NE(sentDocument("install", target)
                .find("<packageFile>&lt;/packageFile&gt;&lt;evil a=\"1\"&gt;&amp;</packageFile>"),
            std::string::npos);
}

TEST(PlatformLogLevel, Levels_HaveTheirTexts) {
  const std::vector<std::pair<std::uint8_t, std::string>> rows{
      {0, "debug"},    {1, "info"},  {2, "warning"}, {3, "error"},
      {4, "critical"}, {5, "debug"}, {9, "debug"},   {255, "debug"}};
  for (const auto& [value, text] : rows) {
    Config target = executorNamed("platformLogLevel").target();
    target.set(sd::SlotMo::kPlatformLogLevel.id, Value(std::uint8_t{value}));
    EXPECT_EQ(sentDocument("platformLogLevel", target),
              "<platformLogLevelSetRequest><logLevel>" + text +
                  "</logLevel></platformLogLevelSetRequest>");
  }
}

TEST(TimeZone, Zones_AreCutAtTheFirstBlank) {
  const std::vector<std::pair<const char*, std::string>> rows{
      {"Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"},
      {"", "UTC0"},
      {" Europe/Berlin", "UTC0"},
      {"UTC", "UTC0"},
      {"Etc/GMT+5", "&lt;-05&gt;5"},
      {"Asia/Kolkata x y", "IST-5:30"}};
  for (const auto& [zone, posix] : rows) {
    Config target = executorNamed("timeZone").target();
    target.set(comm::DateTimeMo::kTimeZone.id, Value(base::String(zone)));
    EXPECT_NE(sentDocument("timeZone", target).find("<timezone>" + posix + "</timezone>"),
              std::string::npos)
        << zone;
  }
}

TEST(TimeZone, NoLogLevel_IsRefused) {
  for (const char* level : {"", "0"}) {
    const ScriptedBlades blades;
    const LogCapture log(8);
    utils::TimeZoneCache& cache = utils::TimeZoneCache::getInstance();
    cache.setTimeZoneData("UTC");
    serviceorchapi::UpdateTimeZoneMe me;
    std::get<Config>(me.in) = executorNamed("timeZone").target();
    Svc::executeServiceorchapiUpdateTimeZoneCb(me, 0, 0, mo::Dn(), 0, Config(), 7, level);
    ASSERT_NE(me.failure(), nullptr) << level;
    EXPECT_EQ(me.failure()->text, "SETTINGUPDATE:: logLevel is missing") << level;
    EXPECT_TRUE(log.contains(8, "SETTINGUPDATE: slot[7]: logLevel : missing")) << level;
    EXPECT_TRUE(blades.sent().empty()) << level;
    // The zone has been taken over by then.
    EXPECT_EQ(cache.getTimeZoneInPosix(), "CET-1CEST,M3.5.0,M10.5.0/3") << level;
  }
}

TEST(TimeZone, CacheOfAnotherCaller_IsNotChangedUnderIt) {
  utils::TimeZoneCache& cache = utils::TimeZoneCache::getInstance();
  cache.setTimeZoneData("UTC");
  std::future<std::string> document;
  {
    const std::lock_guard guard(cache);
    document = std::async(std::launch::async, [] {
      return sentDocument("timeZone", executorNamed("timeZone").target());
    });
    EXPECT_EQ(document.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    EXPECT_EQ(cache.getTimeZoneInPosix(), "UTC0");
  }
  EXPECT_EQ(document.get(), golden("timeZone.xml"));
}

TEST(ClearApplicationLogData, EmptyIdOrZero_SendsWhatClearsTheSystemsLogs) {
  for (const char* id : {"", "0"}) {
    const ScriptedBlades blades;
    serviceorchapi::ClearApplicationLogDataMe me;
    Svc::executeServiceorchapiClearApplicationLogDataCb(me, id, 3);
    EXPECT_EQ(me.failure(), nullptr);
    EXPECT_EQ(blades.sent(),
              (std::vector<SentCommand>{{"3", golden("clearSystemLogData.xml"), "clearLogData"}}));
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
