#include "supervisor/admin/ChassisResource.h"

#include <gtest/gtest.h>

#include "supervisor/admin/Context.h"
#include "tests/supervisor/admin/FakeEngine.h"

namespace supervisor::admin {
namespace {

TEST(ChassisResource, EveryCount_StandsUnderItsName) {
  FakeEngine engine;
  dme::EngineStatus& status = engine.status_;
  status.clusterId = 18446744073709551615U;
  status.epoch = 2;
  status.slots = 3;
  status.watched = 4;
  status.alive = 5;
  status.late = 6;
  status.silent = 7;
  status.areActionsHeld = true;
  status.alarms = 8;
  status.dropped = 9;
  status.methods.undecodable = 10;
  status.methods.unknownMethods = 11;
  status.methods.refused = 12;
  status.methods.strayBeats = 13;
  status.commits.transactions = 14;
  status.commits.commits = 15;
  status.commits.failures = 16;
  engine.equipment_[std::nullopt] = {"upper", "M8", "C1"};
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  const Response response = getChassis(context, {});
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(response.body,
            "{\"name\":\"upper\",\"model\":\"M8\",\"serial\":\"C1\",\"clusterId\":"
            "18446744073709551615,\"epoch\":2,\"slots\":3,"
            "\"blades\":{\"watched\":4,\"alive\":5,\"late\":6,\"silent\":7},"
            "\"areActionsHeld\":true,\"alarms\":8,"
            "\"calls\":{\"dropped\":9,\"undecodable\":10,\"unknown\":11,\"refused\":12,"
            "\"strayBeats\":13},"
            "\"database\":{\"transactions\":14,\"commits\":15,\"failures\":16}}\n");
}

}  // namespace
}  // namespace supervisor::admin
