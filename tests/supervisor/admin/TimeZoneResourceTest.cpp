#include "supervisor/admin/TimeZoneResource.h"

#include <gtest/gtest.h>

#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

constexpr const char* kPath = "/api/v1/timezone";

class TimeZoneResource : public AdminFixture {};

TEST_F(TimeZoneResource, Zone_IsShownWithItsRules) {
  EXPECT_EQ(ask(router_, "GET", kPath).body, "{\"timezone\":\"UTC\",\"posix\":\"UTC0\"}\n");
  engine_.zone_ = "Europe/Berlin";
  EXPECT_EQ(ask(router_, "GET", kPath).body,
            "{\"timezone\":\"Europe/Berlin\",\"posix\":\"CET-1CEST,M3.5.0,M10.5.0/3\"}\n");
}

TEST_F(TimeZoneResource, Put_ShowsTheJobsThatTellIt) {
  engine_.zoneAnswer_ = std::vector<dme::JobView>(2);
  engine_.zoneAnswer_->at(1).id = 8;
  const Response response = ask(router_, "PUT", kPath, R"({"timezone":"Europe/Berlin"})");
  EXPECT_EQ(response.status, 202u);
  EXPECT_EQ(engine_.zones_, std::vector<std::string>{"Europe/Berlin"});
  const Json json = Json::parse(response.body);
  EXPECT_EQ(json["timezone"], "Europe/Berlin");
  EXPECT_EQ(json["jobs"].at(1)["id"], 8);
}

TEST_F(TimeZoneResource, Refused_IsAProblem) {
  engine_.zoneAnswer_ = tl::unexpected(dme::Refusal{
      dme::Refusal::Reason::kBadValue, "no zone is named 'x'", "see tzselect", 0, "timezone"});
  const Json problem = askInVain(router_, "PUT", kPath, R"({"timezone":"x"})");
  EXPECT_EQ(problem["type"], "/problems/bad-value");
  EXPECT_EQ(problem["field"], "timezone");
}

TEST_F(TimeZoneResource, WrongBody_ReachesNoEngine) {
  const struct {
    const char* body;
    const char* field;
  } rows[] = {
      {"{}", "timezone"},
      {"", "timezone"},
      {R"({"timezone":1})", "timezone"},
      {R"({"timezone":"UTC","posix":"UTC0"})", "posix"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(askInVain(router_, "PUT", kPath, row.body)["field"], row.field) << row.body;
  }
  EXPECT_TRUE(engine_.zones_.empty());
}

}  // namespace
}  // namespace supervisor::admin
