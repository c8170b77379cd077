#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "model/sd/ExternalLduLinkMo.h"
#include "tests/serviceOrchAG/executors/StartHarness.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

// The virtual interfaces in the document of a start.

namespace zan_serviceOrchAG {
namespace {

using base::String;
using method::Config;
using method::Value;
using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;

using Link = sd::ExternalLduLinkMo;

TEST(StartDataVnics, OddTexts_AddNothing) {
  Config target = startTarget();
  changeLinks(target, 0, [](Config& link) {
    link.set(Link::kBladeVnic1.id, Value(String("3:7")));
    link.set(Link::kBladeVnic2.id, Value(String("2:0")));
  });
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executorNamed("start"), target).hasFailed);
  ASSERT_EQ(blades.sent().size(), 1U);
  EXPECT_EQ(elementOf(blades.sent().front().document, "reqDataVnics"),
            "<reqDataVnics>10,11,2,20,21,30,48,49</reqDataVnics>");
  EXPECT_TRUE(log.contains(5, "STARTAPP : vnicIndex adaptorId = 3 (must me 1 or 2)"));
  EXPECT_TRUE(
      log.contains(1, "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[], VnicIndex2:[]"));
}

TEST(StartDataVnics, OnlyLinksOfApplications_AreEnough) {
  Config target = startVdpTarget();
  dropChildren(target, kCluster);
  changeChildren(target, kLdu, [](Config& ldu) { dropChildren(ldu, kExternalLink); });
  EXPECT_EQ(elementOf(sentDocument("startVdp", target), "reqDataVnics"),
            "<reqDataVnics>2,30</reqDataVnics>");
}

TEST(StartDataVnics, PlatformWithout_TellsWhatItLeavesOut) {
  for (const char* platform : {"qvm1", "qvm2"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_EQ(
        linesOf(startTarget(), 5),
        (std::vector<LogLine>{
            {5, kStartFunction, "STARTAPP: reqDataVnics: ignored because of QVM2/QVM1 platform"},
            {5, kStartFunction, "STARTAPP: blade: ignored because of QVM2/QVM1 platform"}}));
  }
  for (const char* platform : {"standard", "qvm3"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_TRUE(linesOf(startTarget(), 5).empty());
  }
}

TEST(StartDataVnics, PlatformWithout_StartsWithoutAnyVnicAndWithoutABlade) {
  const Configured configured({"supervisor.platform=qvm1"});
  Config target = startTarget();
  dropChildren(target, kBlade);
  changeLinks(target, 1, setting<&Link::kHasMac>(false));
  for (std::uint8_t type = 0; type < 4; ++type) {
    changeLinks(target, type, [](Config& link) {
      unset<&Link::kBladeVnic1>(link);
      unset<&Link::kBladeVnic2>(link);
    });
  }
  EXPECT_EQ(countOf(sentDocument("start", target), "<allocatedVNIC>"), 0U);
  EXPECT_EQ(countOf(sentDocument("start", target), "<interface>"), 4U);
}

}  // namespace
}  // namespace zan_serviceOrchAG
