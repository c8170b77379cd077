#include "supervisor/admin/HealthResource.h"

#include <gtest/gtest.h>

#include "supervisor/admin/Context.h"
#include "tests/supervisor/admin/FakeEngine.h"

namespace supervisor::admin {
namespace {

TEST(HealthResource, NothingToSay_IsOk) {
  FakeEngine engine;
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  const Response response = getHealth(context, {});
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(response.body,
            "{\"status\":\"ok\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":[],"
            "\"jobs\":{\"open\":0,\"unknown\":0}}\n");
}

TEST(HealthResource, NotReady_IsStartingAndUnavailable) {
  FakeEngine engine;
  const Context context{"1.2.3", &engine, "inproc://dme", false};
  const Response response = getHealth(context, {});
  EXPECT_EQ(response.status, 503u);
  EXPECT_EQ(response.body,
            "{\"status\":\"starting\",\"version\":\"1.2.3\",\"engine\":\"embedded\","
            "\"findings\":[],\"jobs\":{\"open\":0,\"unknown\":0}}\n");
}

TEST(HealthResource, OpenJobs_AreCountedAndUnknownOnesAFinding) {
  FakeEngine engine;
  const dme::JobState states[] = {dme::JobState::kAccepted, dme::JobState::kSending,
                                  dme::JobState::kRunning};
  dme::JobView job;
  for (const dme::JobState state : states) {
    ++job.id;
    job.state = state;
    engine.change(job);
  }
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"ok\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":[],"
            "\"jobs\":{\"open\":3,\"unknown\":0}}\n");
  EXPECT_EQ(engine.filter_.states.size(), 4u);
  job.state = dme::JobState::kUnknown;
  engine.change(job);
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"degraded\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":["
            "{\"text\":\"the outcome of 1 jobs is unknown\",\"remedy\":\"see which at "
            "/api/v1/jobs?state=unknown; a report of the blade settles them, or give them up\"}],"
            "\"jobs\":{\"open\":3,\"unknown\":1}}\n");
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
            "{\"text\":\"3 blades are silent\",\"remedy\":\"see which at /api/v1/slots\"}],"
            "\"jobs\":{\"open\":0,\"unknown\":0}}\n");
}

TEST(HealthResource, DiskThatRefusesToWrite_IsAFinding) {
  FakeEngine engine;
  engine.status_.commits.isBehind = true;
  const Context context{"1.2.3", &engine, "inproc://dme", true};
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"degraded\",\"version\":\"1.2.3\",\"engine\":\"embedded\",\"findings\":["
            "{\"text\":\"changes cannot be stored; orders and registrations are put off\","
            "\"remedy\":\"see the cause in the log, e.g. a full disk, and remove it\"}],"
            "\"jobs\":{\"open\":0,\"unknown\":0}}\n");
}

TEST(HealthResource, EngineElsewhere_IsNamed) {
  const Context context{"1.2.3", nullptr, "ipc:///run/dme", true};
  EXPECT_EQ(getHealth(context, {}).body,
            "{\"status\":\"ok\",\"version\":\"1.2.3\",\"engine\":\"ipc:///run/dme\","
            "\"findings\":[]}\n");
}

}  // namespace
}  // namespace supervisor::admin
