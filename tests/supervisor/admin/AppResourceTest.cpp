#include "supervisor/admin/AppResource.h"

#include <gtest/gtest.h>

#include "model/sd/AppInstanceMo.h"
#include "tests/supervisor/admin/AdminFixture.h"
#include "tests/supervisor/admin/FullApp.h"

namespace supervisor::admin {
namespace {

using dme::AppPhase;
using dme::JobVerb;
using dme::Refusal;

constexpr const char* kShown =
    R"({"id":"a","dn":"sys/chassis-1/slot-3/app-a","slot":3,"phase":"absent","version":"1.2",)"
    R"("packageFile":"/p/fw-1.2.pkg","isFailed":true,"job":9)";

class AppResource : public AdminFixture {
 protected:
  AppResource() {
    engine_.apps_ = {
        {"a", "sys/chassis-1/slot-3/app-a", 3, AppPhase::kAbsent, "1.2", "/p/fw-1.2.pkg", true, 9},
        {"b", "sys/chassis-1/slot-4/app-b", 4, AppPhase::kStarted, "", "", false, 0}};
    engine_.appAnswer_ = engine_.apps_[0];
    engine_.jobAnswer_ = dme::JobView{};
    engine_.jobAnswer_->id = 12;
  }
};

TEST_F(AppResource, Apps_AreListedAllOrOfOneSlot) {
  const Json all = Json::parse(ask(router_, "GET", "/api/v1/apps").body)["apps"];
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].dump(), std::string(kShown) + "}");
  EXPECT_EQ(all[1]["phase"], "started");
  EXPECT_EQ(all[1]["version"], "");
  EXPECT_EQ(Json::parse(ask(router_, "GET", "/api/v1/apps?slot=4").body)["apps"].at(0)["id"], "b");
  EXPECT_EQ(ask(router_, "GET", "/api/v1/apps?slot=5").body, "{\"apps\":[]}\n");
  EXPECT_EQ(askInVain(router_, "GET", "/api/v1/apps?slot=x")["field"], "slot");
}

TEST_F(AppResource, EachPhase_HasItsWord) {
  const char* words[] = {"assumed", "absent", "unsure", "stopped", "started"};
  for (std::size_t i = 0; i < std::size(words); ++i) {
    engine_.apps_[1].phase = static_cast<AppPhase>(i);
    EXPECT_EQ(Json::parse(ask(router_, "GET", "/api/v1/apps/b").body)["phase"], words[i]);
  }
}

TEST_F(AppResource, OneApp_ShowsBothViewsAndItsParts) {
  engine_.models_["sys/chassis-1/slot-3/app-a"] = {
      {"sys/chassis-1/slot-3/app-a",
       "appInstance",
       {{"appInstanceId", base::String("a")},
        {"expectedState", std::uint8_t{7}},
        {"isFailed", false}}},
      {"sys/chassis-1/slot-3/app-a/app", "app", {{"deployType", std::uint8_t{3}}}},
      {"sys/chassis-1/slot-3/app-a/fault-missing", "fault", {{"count", std::uint32_t{2}}}},
      {"sys/chassis-1/slot-3/app-a/ldu", "ldu", {}},
      {"sys/chassis-1/slot-3/app-a/ldu/link-e",
       "externalLduLink",
       {{"portName", base::String("e")}}},
      {"sys/chassis-1/slot-3/app-a/operation-install", "op", {}},
  };
  engine_.models_["sys/chassis-1/slot-3/reported-a"] = {
      {"sys/chassis-1/slot-3/reported-a", "reportedAppInstance", {{"state", std::uint8_t{3}}}}};
  EXPECT_EQ(ask(router_, "GET", "/api/v1/apps/a").body,
            std::string(kShown) +
                R"(,"believed":{"dn":"sys/chassis-1/slot-3/app-a","appInstanceId":"a",)"
                R"("expectedState":7,"expectedStateName":"started","isFailed":false,)"
                R"("faults":[{"dn":"sys/chassis-1/slot-3/app-a/fault-missing","count":2}],)"
                R"("operations":[{"dn":"sys/chassis-1/slot-3/app-a/operation-install"}]},)"
                R"("reported":{"dn":"sys/chassis-1/slot-3/reported-a","state":3,)"
                R"("stateName":"stopped","faults":[],"operations":[]},)"
                R"("parts":{"id":"a","slot":3,"app":{"deployType":"vm"},)"
                R"("ldu":{"links":[{"portName":"e"}]}}})"
                "\n");
  EXPECT_TRUE(Json::parse(ask(router_, "GET", "/api/v1/apps/b").body)["reported"].is_null());
}

TEST_F(AppResource, UnknownApp_IsAProblem) {
  const Json problem = askInVain(router_, "GET", "/api/v1/apps/x%2Fy");
  EXPECT_EQ(problem["type"], "/problems/unknown-app");
  EXPECT_EQ(problem["detail"], "no application instance has the identifier 'x/y'");
}

TEST_F(AppResource, Post_GivesTheEngineTheDescription) {
  const Response response = ask(router_, "POST", "/api/v1/apps", kFullApp);
  EXPECT_EQ(response.status, 201u);
  EXPECT_EQ(response.location, "/api/v1/apps/a");
  EXPECT_EQ(response.body, std::string(kShown) + "}\n");
  ASSERT_EQ(engine_.created_.size(), 1u);
  EXPECT_EQ(engine_.created_[0].first, 3u);
  EXPECT_NE(mo::checkCast<sd::AppInstanceMo>(engine_.created_[0].second.get()), nullptr);
}

TEST_F(AppResource, PostRefused_IsAProblem) {
  engine_.appAnswer_ =
      tl::unexpected(Refusal{Refusal::Reason::kAlreadyThere, "it is there", "delete it", 0, ""});
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/apps", kFullApp)["type"],
            "/problems/already-there");
  engine_.appAnswer_ = tl::unexpected(
      Refusal{Refusal::Reason::kBadValue, "no good", "another", 0, "app.packageFile"});
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/apps", kFullApp)["field"], "app.packageFile");
  EXPECT_EQ(askInVain(router_, "POST", "/api/v1/apps", "{}")["field"], "id");
  EXPECT_EQ(engine_.created_.size(), 2u);
}

TEST_F(AppResource, Delete_ForgetsOrTellsWhatItWould) {
  const Response would = ask(router_, "DELETE", "/api/v1/apps/a?dryRun=true");
  EXPECT_EQ(would.status, 200u);
  EXPECT_EQ(would.body, "{\"wouldDelete\":" + std::string(kShown) + "}}\n");
  EXPECT_TRUE(engine_.deleted_.empty());
  const Response response = ask(router_, "DELETE", "/api/v1/apps/a");
  EXPECT_EQ(response.status, 204u);
  EXPECT_EQ(response.body, "");
  EXPECT_EQ(engine_.deleted_, std::vector<std::string>{"a"});
  engine_.appAnswer_ =
      tl::unexpected(Refusal{Refusal::Reason::kWrongState, "it is started", "stop it", 0, ""});
  for (const char* target : {"/api/v1/apps/a", "/api/v1/apps/a?dryRun=true"}) {
    EXPECT_EQ(askInVain(router_, "DELETE", target)["type"], "/problems/wrong-state");
  }
}

TEST_F(AppResource, EachVerb_IsOrdered) {
  const struct {
    const char* path;
    JobVerb verb;
  } rows[] = {
      {"install", JobVerb::kInstall}, {"uninstall", JobVerb::kUninstall},
      {"start", JobVerb::kStart},     {"stop", JobVerb::kStop},
      {"upgrade", JobVerb::kUpgrade}, {"clear-logs", JobVerb::kClearAppLogs},
  };
  for (const auto& row : rows) {
    engine_.orders_.clear();
    const bool isUpgrade = row.verb == JobVerb::kUpgrade;
    const std::string target = std::string("/api/v1/apps/a/") + row.path;
    const std::string body = isUpgrade ? R"({"packageFile":"q","version":"2","finishWithinMs":5})"
                                       : R"({"finishWithinMs":5})";
    const Response response = ask(router_, "POST", target, body);
    EXPECT_EQ(response.status, 202u) << response.body;
    EXPECT_EQ(response.location, "/api/v1/jobs/12");
    ASSERT_EQ(engine_.orders_.size(), 1u);
    const dme::JobOrder& order = engine_.orders_[0];
    EXPECT_EQ(order.verb, row.verb);
    EXPECT_EQ(order.app, "a");
    EXPECT_EQ(order.packageFile, isUpgrade ? "q" : "");
    EXPECT_EQ(order.version, isUpgrade ? "2" : "");
    EXPECT_EQ(order.finishWithin, std::chrono::milliseconds(5));
    EXPECT_EQ(ask(router_, "POST", target + "?dryRun=true", body).status, 200u);
    EXPECT_EQ(engine_.wouldOrders_.back().verb, row.verb);
    EXPECT_EQ(engine_.orders_.size(), 1u);
  }
}

TEST_F(AppResource, WrongOrders_ReachNoEngine) {
  const struct {
    const char* verb;
    const char* body;
    const char* field;
  } rows[] = {
      {"install", R"({"packageFile":"q"})", "packageFile"},
      {"upgrade", "", "packageFile"},
      {"upgrade", R"({"packageFile":""})", "packageFile"},
      {"upgrade", R"({"packageFile":"q","version":2})", "version"},
      {"start", R"({"finishWithinMs":-1})", "finishWithinMs"},
      {"stop?dryRun=1", "", "dryRun"},
  };
  for (const auto& row : rows) {
    const Json problem =
        askInVain(router_, "POST", std::string("/api/v1/apps/a/") + row.verb, row.body);
    EXPECT_EQ(problem["status"], 400);
    EXPECT_EQ(problem["field"], row.field) << row.verb << row.body;
  }
  EXPECT_TRUE(engine_.orders_.empty());
  EXPECT_TRUE(engine_.wouldOrders_.empty());
}

}  // namespace
}  // namespace supervisor::admin
