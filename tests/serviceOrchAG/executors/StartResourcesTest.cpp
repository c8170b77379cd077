#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "model/sd/ResourceMo.h"
#include "model/sm/AppMo.h"
#include "tests/serviceOrchAG/executors/StartHarness.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

// What a start gives to the instance.

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;

using Resource = sd::ResourceMo;

TEST(StartResources, DeployTypes_StandInInstallTypeAndInterfaceList) {
  for (const auto& [value, text] :
       std::vector<std::pair<std::uint8_t, std::string>>{{1, "native"}, {2, "lxc"}, {3, "vm"}}) {
    Config target = startTarget();
    changeChildren(target, kApp, setting<&sm::AppMo::kDeployType>(value));
    const std::string document = sentDocument("start", target);
    EXPECT_EQ(elementOf(document, "installType"), "<installType>" + text + "</installType>");
    EXPECT_EQ(countOf(document, "<interfaceList type=\"" + text + "\">"), 1U) << text;
  }
}

TEST(StartResources, TwoApplications_TheFirstCounts) {
  Config target = startTarget();
  Config second(kApp, mo::Dn("second"));
  second.set(sm::AppMo::kDeployType.id, Value(std::uint8_t{3}));
  second.set(sm::AppMo::kVdp.id, Value(true));
  target.addChild(second);
  EXPECT_EQ(sentDocument("start", target), golden("start.xml"));
}

TEST(StartResources, SecondDiskOfSizeZero_FailsWhereItWouldBeSent) {
  Config target = startTarget();
  changeChildren(target, kResource, setting<&Resource::kReqSecDataHdd>(std::uint32_t{0}));
  for (const char* platform : {"qvm2", "qvm3"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    const ScriptedBlades blades;
    const LogCapture log(8);
    const Outcome outcome = runExecutor(executorNamed("start"), target);
    EXPECT_EQ(outcome.failure.bits, 1U);
    EXPECT_EQ(outcome.failure.code, 1003U);
    EXPECT_EQ(outcome.failure.text, "STARTAPP:: create <reqSecDataHdd> fails.");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {8, kStartFunction, "STARTAPP: appInstanceId[a1]: slot[3]: reqSecDataHdd : missing"}}));
    EXPECT_TRUE(blades.sent().empty());
  }
  for (const char* platform : {"standard", "qvm1"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_EQ(sentDocument("start", target), goldenOn(platform, "start"));
  }
}

TEST(StartResources, NoSecondDisk_IsLeftOut) {
  const Configured configured({"supervisor.platform=qvm2"});
  Config target = startTarget();
  changeChildren(target, kResource, unset<&Resource::kReqSecDataHdd>);
  const std::string document = sentDocument("start", target);
  EXPECT_FALSE(document.empty());
  EXPECT_EQ(elementOf(document, "reqSecDataHdd"), "");
}

TEST(StartResources, LargestNumbers_ArePlainDecimal) {
  Config target = startTarget();
  changeChildren(target, kResource, setting<&Resource::kReqDataHdd>(std::uint32_t{4294967295}));
  EXPECT_EQ(elementOf(sentDocument("start", target), "reqDataHdd"),
            "<reqDataHdd>4294967295</reqDataHdd>");
}

}  // namespace
}  // namespace zan_serviceOrchAG
