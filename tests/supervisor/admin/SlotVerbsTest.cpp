#include "supervisor/admin/SlotVerbs.h"

#include <gtest/gtest.h>

#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

using dme::JobVerb;
using std::chrono::milliseconds;

const struct {
  const char* path;
  JobVerb verb;
  const char* body;
} kVerbs[] = {
    {"format", JobVerb::kFormatDisk, ""},
    {"clear-logs", JobVerb::kClearSystemLogs, "{}"},
    {"deregister", JobVerb::kDeregister, ""},
    {"log-level", JobVerb::kLogLevel, R"({"level":"debug"})"},
};

class SlotVerbs : public AdminFixture {
 protected:
  SlotVerbs() {
    engine_.jobAnswer_ = dme::JobView{};
    engine_.jobAnswer_->id = 12;
    engine_.jobAnswer_->slot = 3;
  }
};

TEST_F(SlotVerbs, EachVerb_IsOrdered) {
  for (const auto& row : kVerbs) {
    engine_.orders_.clear();
    engine_.jobAnswer_->verb = row.verb;
    const Response response =
        ask(router_, "POST", std::string("/api/v1/slots/3/") + row.path, row.body);
    EXPECT_EQ(response.status, 202u) << response.body;
    EXPECT_EQ(response.location, "/api/v1/jobs/12");
    EXPECT_EQ(Json::parse(response.body)["verb"], nameOf(row.verb));
    ASSERT_EQ(engine_.orders_.size(), 1u) << row.path;
    const dme::JobOrder& order = engine_.orders_[0];
    EXPECT_EQ(order.verb, row.verb);
    EXPECT_EQ(order.slot, 3u);
    EXPECT_EQ(order.app, "");
    EXPECT_EQ(order.level, row.verb == JobVerb::kLogLevel ? "debug" : "");
    EXPECT_FALSE(order.deliverWithin);
    EXPECT_FALSE(order.finishWithin);
  }
}

TEST_F(SlotVerbs, Times_AreTaken) {
  ask(router_, "POST", "/api/v1/slots/3/format",
      R"({"deliverWithinMs":1500,"finishWithinMs":604800000})");
  EXPECT_EQ(engine_.orders_.at(0).deliverWithin, milliseconds(1500));
  EXPECT_EQ(engine_.orders_.at(0).finishWithin, std::chrono::hours(7 * 24));
}

TEST_F(SlotVerbs, DryRun_OrdersNothing) {
  const Response response =
      ask(router_, "POST", "/api/v1/slots/3/log-level?dryRun=true", R"({"level":"info"})");
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(Json::parse(response.body)["would"]["id"], 12);
  EXPECT_EQ(engine_.wouldOrders_.at(0).level, "info");
  EXPECT_TRUE(engine_.orders_.empty());
  ask(router_, "POST", "/api/v1/slots/3/format?dryRun=false");
  EXPECT_EQ(engine_.orders_.size(), 1u);
}

TEST_F(SlotVerbs, Refused_IsAProblem) {
  engine_.jobAnswer_ = tl::unexpected(
      dme::Refusal{dme::Refusal::Reason::kJobInTheWay, "job 8 is open", "wait for it", 8, ""});
  for (const char* query : {"", "?dryRun=true"}) {
    const Json problem = askInVain(router_, "POST", std::string("/api/v1/slots/3/format") + query);
    EXPECT_EQ(problem["type"], "/problems/job-in-the-way");
    EXPECT_EQ(problem["status"], 409);
    EXPECT_EQ(problem["job"], 8);
  }
}

TEST_F(SlotVerbs, WrongRequests_ReachNoEngine) {
  const struct {
    const char* target;
    const char* body;
    const char* type;
    const char* field;
  } rows[] = {
      {"x/format", "", "unknown-slot", ""},
      {"4294967296/format", "", "unknown-slot", ""},
      {"3/format?dryRun=yes", "", "bad-value", "dryRun"},
      {"3/format?force=true", "", "unknown-query-field", ""},
      {"3/format", "{", "bad-body", ""},
      {"3/format", "[]", "bad-body", ""},
      {"3/format", R"({"level":"debug"})", "unknown-field", "level"},
      {"3/format", R"({"deliverWithinMs":0})", "bad-value", "deliverWithinMs"},
      {"3/format", R"({"finishWithinMs":604800001})", "bad-value", "finishWithinMs"},
      {"3/log-level", "", "bad-value", "level"},
      {"3/log-level", R"({"level":3})", "bad-value", "level"},
  };
  for (const auto& row : rows) {
    const Json problem =
        askInVain(router_, "POST", std::string("/api/v1/slots/") + row.target, row.body);
    EXPECT_EQ(problem["type"], std::string("/problems/") + row.type) << row.target << row.body;
    EXPECT_EQ(problem.value("field", ""), row.field) << row.target << row.body;
  }
  EXPECT_TRUE(engine_.orders_.empty());
  EXPECT_TRUE(engine_.wouldOrders_.empty());
}

TEST_F(SlotVerbs, DiskIsSlow_TheAnswerComesLater) {
  engine_.isLate_ = true;
  Asking asking;
  router_.answer({"POST", "/api/v1/slots/3/format", {}, {}, "", ""}, asking.reply());
  EXPECT_FALSE(asking.response());
  engine_.late_.at(0)();
  EXPECT_EQ(asking.response()->status, 202u);
}

}  // namespace
}  // namespace supervisor::admin
