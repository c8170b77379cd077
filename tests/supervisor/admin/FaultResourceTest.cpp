#include "supervisor/admin/FaultResource.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "framework/finj/FinjManager.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/Routes.h"
#include "tests/supervisor/admin/Asking.h"

namespace supervisor::admin {
namespace {

constexpr const char* kPre = "FINJ_PRE_ZanDmeFsmSdAppInstanceStopApplicationSendCommand";
constexpr const char* kFail = "FINJ_FSM_FAIL_ZanDmeFsmSdSlotFormatDiskStartDiskFormat";
constexpr const char* kPost = "FINJ_POST_ServiceorchapiUpdateTimeZone";

class FaultResource : public testing::Test {
 protected:
  ~FaultResource() override { manager_.clear(); }
  Response put(const char* hook, const std::string& body) {
    return ask(router_, "PUT", std::string("/api/v1/faults/") + hook, body);
  }
  Json faults() { return Json::parse(ask(router_, "GET", "/api/v1/faults").body)["faults"]; }

  finj::FinjManager& manager_ = finj::FinjManager::getInstance();
  Context context_{"1.2.3", nullptr, "ipc:///run/dme", true};
  const Router router_{routes(), context_};
};

TEST_F(FaultResource, Hooks_AreThoseOfTheCommands) {
  const Json json = Json::parse(ask(router_, "GET", "/api/v1/faults").body);
  EXPECT_EQ(json["faults"].dump(), "[]");
  const auto hooks = json["hooks"].get<std::vector<std::string>>();
  EXPECT_EQ(hooks.size(), 24u);
  for (const char* stem :
       {"ZanDmeFsmSdAppInstanceInstallApplicationSendCommand",
        "ZanDmeFsmSdAppInstanceStartApplicationSendCommand",
        "ZanDmeFsmSdAppInstanceStopApplicationSendCommand",
        "ZanDmeFsmSdAppInstanceUninstallApplicationSendCommand",
        "ZanDmeFsmSdAppInstanceUpgradeApplicationSendCommand",
        "ZanDmeFsmSdSlotChangePlatformLogLevelSendCommand",
        "ZanDmeFsmSdSlotFormatDiskStartDiskFormat", "ServiceorchapiUpdateTimeZone"}) {
    for (const char* kind : {"FINJ_PRE_", "FINJ_FSM_FAIL_", "FINJ_POST_"}) {
      EXPECT_NE(std::ranges::find(hooks, std::string(kind) + stem), hooks.end()) << kind << stem;
    }
  }
}

TEST_F(FaultResource, EachAction_HappensAtItsHook) {
  const struct {
    const char* hook;
    const char* body;
    std::int32_t result;
    const char* shown;
  } rows[] = {
      {kPre, R"({"action":"return"})", 2, R"("action":"return"})"},
      {kFail, R"({"action":"crash","times":3})", 4, R"("action":"crash","times":3})"},
      {kPost, R"({"action":"own","delayMs":1})", 1, R"("action":"own","delayMs":1})"},
      {kPre, R"({"action":"delay","delayMs":2,"times":1})", 0,
       R"("action":"delay","delayMs":2,"times":1})"},
      {kFail, R"({"action":"fail"})", 1, R"("action":"fail","lBits":1})"},
      {kFail, R"({"action":"fail","lBits":2048,"times":0})", 1, R"("action":"fail","lBits":2048})"},
  };
  for (const auto& row : rows) {
    manager_.clear();
    const std::string shown = std::string("{\"hook\":\"") + row.hook + "\"," + row.shown;
    const Response response = put(row.hook, row.body);
    EXPECT_EQ(response.status, 200u) << response.body;
    EXPECT_EQ(response.body, shown + "\n");
    EXPECT_EQ(faults().dump(), "[" + shown + "]");
    EXPECT_EQ(manager_.executeActivities(row.hook), row.result) << row.body;
  }
}

TEST_F(FaultResource, Failure_AssignsTheResultBits) {
  put(kFail, R"({"action":"fail","lBits":2048})");
  const finj::FinjManager::Frame frame;
  std::int32_t bits = 0;
  manager_.setLocalVar("lBits", &bits);
  manager_.executeActivities(kFail);
  EXPECT_EQ(bits, 2048);
}

TEST_F(FaultResource, Times_CountDownUntilItIsGone) {
  put(kPre, R"({"action":"return","times":2})");
  manager_.executeActivities(kPre);
  EXPECT_EQ(faults().at(0)["times"], 1);
  manager_.executeActivities(kPre);
  EXPECT_TRUE(faults().empty());
}

TEST_F(FaultResource, Removed_IsGone) {
  put(kPre, R"({"action":"return"})");
  put(kPost, R"({"action":"own"})");
  put(kFail, R"({"action":"fail"})");
  for (int round = 0; round < 2; ++round) {
    const Response response = ask(router_, "DELETE", std::string("/api/v1/faults/") + kPre);
    EXPECT_EQ(response.status, 204u);
    EXPECT_EQ(response.body, "");
    EXPECT_EQ(faults().size(), 2u);
  }
  EXPECT_EQ(ask(router_, "DELETE", "/api/v1/faults").status, 204u);
  EXPECT_TRUE(faults().empty());
}

TEST_F(FaultResource, UnknownHook_IsAProblem) {
  for (const char* method : {"PUT", "DELETE"}) {
    const Json problem =
        askInVain(router_, method, "/api/v1/faults/FINJ_PRE_Nothing", R"({"action":"return"})");
    EXPECT_EQ(problem["type"], "/problems/unknown-hook");
    EXPECT_EQ(problem["status"], 404);
  }
}

TEST_F(FaultResource, WrongBody_SetsNothing) {
  const struct {
    const char* hook;
    const char* body;
    const char* field;
  } rows[] = {
      {kPre, "{}", "action"},
      {kPre, R"({"action":"explode"})", "action"},
      {kPre, R"({"action":"fail"})", "action"},
      {kFail, R"({"action":"own"})", "action"},
      {kPre, R"({"action":"delay"})", "delayMs"},
      {kPre, R"({"action":"delay","delayMs":3600001})", "delayMs"},
      {kPre, R"({"action":"return","times":4294967296})", "times"},
      {kPre, R"({"action":"return","lBits":1})", "lBits"},
      {kFail, R"({"action":"fail","lBits":2147483648})", "lBits"},
      {kFail, R"({"action":"fail","bits":1})", "bits"},
  };
  for (const auto& row : rows) {
    const Json problem =
        askInVain(router_, "PUT", std::string("/api/v1/faults/") + row.hook, row.body);
    EXPECT_EQ(problem["status"], 400) << row.body;
    EXPECT_EQ(problem["field"], row.field) << row.body;
  }
  EXPECT_TRUE(faults().empty());
}

}  // namespace
}  // namespace supervisor::admin
