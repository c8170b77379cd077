#include "supervisor/admin/JobResource.h"

#include <gtest/gtest.h>

#include "supervisor/admin/JobWait.h"
#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

using dme::JobState;
using std::chrono::milliseconds;

class JobResource : public AdminFixture {
 protected:
  JobResource() { change(JobState::kSending, 20); }

  dme::JobView job(JobState state, std::uint64_t revision) const {
    dme::JobView job;
    job.id = 7;
    job.target = "sys/chassis-1/slot-3/app-a";
    job.slot = 3;
    job.app = "a";
    job.state = state;
    job.acceptedAt = 1000;
    job.deliverBy = 2000;
    job.revision = revision;
    return job;
  }
  void change(JobState state, std::uint64_t revision) { engine_.change(job(state, revision)); }
  void askLate(Asking& asking, const std::string& query) {
    router_.answer({"GET", "/api/v1/jobs/7?" + query, {}, {}, "", ""}, asking.reply());
    asking.run();
  }
  static std::string stateIn(const std::optional<Response>& response) {
    return response ? Json::parse(response->body).value("state", "none") : "no answer";
  }
};

TEST_F(JobResource, FreshJob_LeavesOutWhatIsNotThere) {
  EXPECT_EQ(ask(router_, "GET", "/api/v1/jobs/7").body,
            "{\"id\":7,\"verb\":\"install\",\"target\":\"sys/chassis-1/slot-3/app-a\",\"slot\":3,"
            "\"app\":\"a\",\"state\":\"sending\",\"code\":0,\"percentage\":0,\"attempts\":0,"
            "\"acceptedAt\":1000,\"deliverBy\":2000,\"revision\":20}\n");
}

TEST_F(JobResource, FullJob_ShowsEverything) {
  dme::JobView full = job(JobState::kUnknown, 21);
  full.verb = dme::JobVerb::kUpgrade;
  full.argument = "p.pkg";
  full.reason = dme::JobReason::kAnswerLost;
  full.cause = "no answer\xff";
  full.code = 578;
  full.percentage = 30;
  full.attempts = 2;
  full.sentAt = 1100;
  full.acknowledgedAt = 1200;
  full.finishedAt = 1300;
  full.finishBy = 1400;
  engine_.change(full);
  EXPECT_EQ(ask(router_, "GET", "/api/v1/jobs").body,
            "{\"jobs\":[{\"id\":7,\"verb\":\"upgrade\",\"target\":\"sys/chassis-1/slot-3/app-a\","
            "\"slot\":3,\"app\":\"a\",\"argument\":\"p.pkg\",\"state\":\"unknown\","
            "\"reason\":\"answerLost\",\"cause\":\"no answer\xEF\xBF\xBD\",\"code\":578,"
            "\"percentage\":30,\"attempts\":2,\"acceptedAt\":1000,\"sentAt\":1100,"
            "\"acknowledgedAt\":1200,\"finishedAt\":1300,\"deliverBy\":2000,\"finishBy\":1400,"
            "\"revision\":21}]}\n");
}

TEST_F(JobResource, Filter_ReachesTheEngine) {
  ask(router_, "GET", "/api/v1/jobs");
  EXPECT_FALSE(engine_.filter_.slot);
  EXPECT_FALSE(engine_.filter_.app);
  EXPECT_TRUE(engine_.filter_.states.empty());
  EXPECT_FALSE(engine_.filter_.before);
  EXPECT_EQ(engine_.filter_.most, 100u);
  ask(router_, "GET", "/api/v1/jobs?slot=3&app=a&state=accepted,unknown&before=9&limit=1000");
  EXPECT_EQ(engine_.filter_.slot, 3u);
  EXPECT_EQ(engine_.filter_.app, "a");
  EXPECT_EQ(engine_.filter_.states,
            (std::vector<JobState>{JobState::kAccepted, JobState::kUnknown}));
  EXPECT_EQ(engine_.filter_.before, 9u);
  EXPECT_EQ(engine_.filter_.most, 1000u);
}

TEST_F(JobResource, WrongQuery_IsNamed) {
  const struct {
    const char* target;
    const char* field;
  } rows[] = {
      {"/jobs?limit=0", "limit"},        {"/jobs?limit=1001", "limit"},
      {"/jobs?limit=x", "limit"},        {"/jobs?before=-1", "before"},
      {"/jobs?slot=4294967296", "slot"}, {"/jobs?state=open", "state"},
      {"/jobs?state=failed,,", "state"}, {"/jobs/7?waitMs=60001", "waitMs"},
      {"/jobs/7?waitMs=1e3", "waitMs"},  {"/jobs/7?waitMs=1&revision=", "revision"},
  };
  for (const auto& row : rows) {
    const Json problem = askInVain(router_, "GET", std::string("/api/v1") + row.target);
    EXPECT_EQ(problem["type"], "/problems/bad-value") << row.target;
    EXPECT_EQ(problem["field"], row.field) << row.target;
  }
}

TEST_F(JobResource, UnknownJob_IsAProblem) {
  for (const char* id : {"8", "x", "-7", "18446744073709551616"}) {
    const Json problem = askInVain(router_, "GET", std::string("/api/v1/jobs/") + id);
    EXPECT_EQ(problem["type"], "/problems/unknown-job") << id;
    EXPECT_EQ(askInVain(router_, "GET", std::string("/api/v1/jobs/") + id + "?waitMs=10")["status"],
              404);
  }
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/jobs/x/cancel")["status"], 404);
}

TEST_F(JobResource, Cancel_IsPassedOn) {
  engine_.jobAnswer_ = job(JobState::kFailed, 21);
  const Response response = ask(router_, "POST", "/api/v1/jobs/7/cancel", "{}");
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(Json::parse(response.body)["state"], "failed");
  EXPECT_EQ(engine_.cancelled_, std::vector<std::uint64_t>{7});
  engine_.jobAnswer_ =
      tl::unexpected(dme::Refusal{dme::Refusal::Reason::kWrongState, "it runs", "wait", 0, ""});
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/jobs/7/cancel")["type"], "/problems/wrong-state");
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/jobs/7/cancel", R"({"x":1})")["field"], "x");
}

TEST_F(JobResource, NothingToWaitFor_IsAnsweredAtOnce) {
  EXPECT_EQ(Json::parse(ask(router_, "GET", "/api/v1/jobs/7?waitMs=0").body)["revision"], 20);
  EXPECT_EQ(Json::parse(ask(router_, "GET", "/api/v1/jobs/7?revision=99").body)["revision"], 20);
  ask(router_, "GET", "/api/v1/jobs/7?waitMs=60000&revision=19");
  for (const JobState state : {JobState::kSucceeded, JobState::kFailed, JobState::kUnknown}) {
    change(state, 21);
    ask(router_, "GET", "/api/v1/jobs/7?waitMs=60000");
  }
  EXPECT_EQ(engine_.watches(), 0u);
}

TEST_F(JobResource, WaitForAnyChange_EndsWithIt) {
  Asking asking;
  askLate(asking, "waitMs=60000&revision=20");
  EXPECT_EQ(asking.time(), milliseconds(60'000));
  EXPECT_FALSE(asking.response());
  change(JobState::kRunning, 21);
  asking.run();
  EXPECT_EQ(stateIn(asking.response()), "running");
  EXPECT_EQ(engine_.watches(), 0u);
  EXPECT_EQ(context_.waits, 0u);
}

TEST_F(JobResource, WaitForALaterRevision_PassesOverTheNext) {
  Asking asking;
  askLate(asking, "waitMs=60000&revision=22");
  for (const std::uint64_t revision : {21U, 22U}) {
    change(JobState::kRunning, revision);
    asking.run();
    EXPECT_FALSE(asking.response()) << revision;
  }
  change(JobState::kRunning, 23);
  asking.run();
  EXPECT_EQ(stateIn(asking.response()), "running");
}

TEST_F(JobResource, WaitForTheEnd_PassesOverProgress) {
  for (const JobState end : {JobState::kSucceeded, JobState::kFailed, JobState::kUnknown}) {
    change(JobState::kAccepted, 20);
    Asking asking;
    askLate(asking, "waitMs=1000");
    change(JobState::kSending, 21);
    change(JobState::kRunning, 22);
    asking.run();
    EXPECT_FALSE(asking.response());
    change(JobState::kRunning, 23);
    asking.run();
    EXPECT_FALSE(asking.response());
    change(end, 24);
    asking.run();
    EXPECT_EQ(stateIn(asking.response()), nameOf(end));
    EXPECT_EQ(engine_.watches(), 0u);
  }
}

TEST_F(JobResource, TimeIsOver_ShowsTheJobAsItIs) {
  Asking asking;
  askLate(asking, "waitMs=1000");
  change(JobState::kRunning, 21);
  asking.run();
  EXPECT_EQ(asking.time(), milliseconds(1000));
  asking.giveUp();
  EXPECT_EQ(stateIn(asking.response()), "running");
  EXPECT_EQ(engine_.watches(), 0u);
  EXPECT_EQ(context_.waits, 0u);
}

TEST_F(JobResource, ClientGone_ItsWatchEnds) {
  Asking asking;
  askLate(asking, "waitMs=1000");
  EXPECT_EQ(engine_.watches(), 1u);
  EXPECT_EQ(context_.waits, 1u);
  asking.leave();
  EXPECT_EQ(engine_.watches(), 0u);
  EXPECT_EQ(context_.waits, 0u);
  change(JobState::kSucceeded, 21);
  asking.run();
  EXPECT_FALSE(asking.response());
}

TEST_F(JobResource, TooManyWaits_AreRefusedUntilOneEnds) {
  std::vector<std::unique_ptr<Asking>> waits;
  for (std::size_t i = 0; i < kMostWaits; ++i) {
    waits.push_back(std::make_unique<Asking>());
    askLate(*waits.back(), "waitMs=1000");
    EXPECT_FALSE(waits.back()->response());
  }
  const Json problem = askInVain(router_, "GET", "/api/v1/jobs/7?waitMs=1000");
  EXPECT_EQ(problem["type"], "/problems/too-many-waits");
  EXPECT_EQ(problem["status"], 503);
  EXPECT_EQ(ask(router_, "GET", "/api/v1/jobs/7").status, 200u);
  waits.pop_back();
  Asking another;
  askLate(another, "waitMs=1000");
  EXPECT_FALSE(another.response());
}

}  // namespace
}  // namespace supervisor::admin
