#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "model/sd/AppInstanceMo.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "tests/serviceOrchAG/executors/StartHarness.h"
#include "tests/support/LogCapture.h"

// Where an instance runs, as the document of a start tells it.

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::LogCapture;

TEST(StartIdentity, EquipmentWithoutAModel_HasAnEmptyAttribute) {
  Config target = startTarget();
  changeChildren(target, kChassis, unset<&sd::ChassisMo::kModel>);
  changeChildren(target, kBlade, unset<&sd::BladeMo::kModel>);
  const std::string document = sentDocument("start", target);
  EXPECT_EQ(elementOf(document, "chassis"), "<chassis model=\"\">CH1</chassis>");
  EXPECT_EQ(elementOf(document, "blade"), "<blade model=\"\">BL3</blade>");
}

TEST(StartIdentity, NoNetworkSettings_TheListIsEmpty) {
  Config target = startTarget();
  dropChildren(target, kNetMgmt);
  EXPECT_EQ(elementOf(sentDocument("start", target), "netMgmtBootstrapList"),
            "<netMgmtBootstrapList/>");
}

TEST(StartIdentity, SlotNumber_SelectsTheBlade) {
  Config target = startTarget();
  target.set(sd::AppInstanceMo::kSlotId.id, Value(std::uint32_t{12}));
  const ScriptedBlades blades;
  const LogCapture log;
  runExecutor(executorNamed("start"), target);
  ASSERT_EQ(blades.sent().size(), 1U);
  EXPECT_EQ(blades.sent().front().slot, "12");
  EXPECT_EQ(elementOf(blades.sent().front().document, "slot"), "<slot>12</slot>");
  EXPECT_TRUE(log.contains(
      1, "STARTAPP: 100 : Start message sent to SMA with success request / response for slot 12."));
}

}  // namespace
}  // namespace zan_serviceOrchAG
