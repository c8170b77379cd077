#include "supervisor/admin/HealthResource.h"

#include <gtest/gtest.h>

#include "supervisor/admin/Context.h"
#include "tests/supervisor/admin/FakeEngine.h"

namespace supervisor::admin {
namespace {

TEST(HealthResource, NothingToSay_IsOk) {
  const FakeEngine engine;
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  const Response response = getHealth(context, {});
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(response.body,
            "{\"status\":\"ok\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":[]}\n");
}

TEST(HealthResource, NotReady_IsStartingAndUnavailable) {
  const FakeEngine engine;
  const Context context{"1.2.3", &engine, "inproc://dme", false};
  const Response response = getHealth(context, {});
  EXPECT_EQ(response.status, 503u);
  EXPECT_EQ(response.body,
            "{\"status\":\"starting\",\"version\":\"1.2.3\",\"engine\":\"embedded\","
            "\"findings\":[]}\n");
}

TEST(HealthResource, SilentBladesAndHeldActions_AreFindings) {
  FakeEngine engine;
  engine.status_.silent = 3;
  engine.status_.areActionsHeld = true;
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"degraded\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":["
            "{\"text\":\"most blades fell silent together; automatic actions are held\","
            "\"remedy\":\"look at the chassis' internal network\"},"
            "{\"text\":\"3 blades are silent\",\"remedy\":\"see which at /api/v1/slots\"}]}\n");
}

TEST(HealthResource, EngineElsewhere_IsNamed) {
  const Context context{"1.2.3", nullptr, "ipc:///run/dme", true};
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"ok\",\"version\":\"1.2.3\",\"engine\":\"ipc:///run/dme\","
            "\"findings\":[]}\n");
}

}  // namespace
}  // namespace supervisor::admin
