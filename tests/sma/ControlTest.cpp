#include "sma/Control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>

namespace sma {
namespace {

using Json = nlohmann::json;
using ::testing::HasSubstr;

/// Four blades whose gateway is not there.
class ControlTest : public testing::Test {
 protected:
  static Fleet::Settings settings() {
    Fleet::Settings settings;
    settings.slots = {1, 2, 3, 7};
    settings.gateway = "tcp://127.0.0.1:1";
    settings.apps = 1;
    return settings;
  }

  Json ask(const std::string& request) { return Json::parse(answerControl(fleet_, request)); }

  std::size_t faultsOf(std::uint32_t slot) const {
    return fleet_.blade(slot)->desk().faults().size();
  }

  Fleet fleet_{settings(), {}};
};

TEST_F(ControlTest, Fault_IsSetInTheSlotsNamed) {
  const Json answer =
      ask(R"({"do":"fault","slots":"1-2,7","kind":"noReply","times":2,"command":"installApp"})");
  EXPECT_EQ(answer, Json::parse(R"({"ok":true,"blades":3})"));
  EXPECT_EQ(faultsOf(1), 1U);
  EXPECT_EQ(faultsOf(2), 1U);
  EXPECT_EQ(faultsOf(3), 0U);
  const CommandFault& fault = fleet_.blade(7)->desk().faults().at(0);
  EXPECT_EQ(fault.kind, FaultKind::NoReply);
  EXPECT_EQ(fault.times, 2U);
  EXPECT_EQ(fault.command, "installApp");
}

TEST_F(ControlTest, WithoutSlots_AllBladesAreMeant) {
  EXPECT_EQ(ask(R"({"do":"fault","kind":"stall","lastsMs":10})")["blades"], 4);
  EXPECT_EQ(ask(R"({"do":"clear","slots":"1"})")["blades"], 1);
  EXPECT_EQ(faultsOf(1), 0U);
  EXPECT_EQ(faultsOf(7), 1U);
  EXPECT_EQ(ask(R"({"do":"clear"})")["blades"], 4);
  EXPECT_EQ(faultsOf(7), 0U);
}

TEST_F(ControlTest, State_TellsInstancesSettingsAndFaults) {
  ask(R"({"do":"fault","slots":"3","kind":"die","times":0})");
  EXPECT_EQ(ask(R"({"do":"state","slot":3})"), Json::parse(R"({"ok":true,"slot":3,
      "state":"unregistered","dead":false,"hasToken":false,"received":0,"logLevel":"info",
      "timeZone":"UTC0","clearedLogs":[],"executed":[],
      "faults":[{"kind":"die","command":"","times":0}],
      "instances":[{"id":"slot3-app1","version":"1.1","running":true,"enabled":true,
                    "external":false,"hotfixes":"","underWay":""}]})"));
}

TEST_F(ControlTest, Die_KillsTheBlade) {
  EXPECT_EQ(ask(R"({"do":"die","slot":3,"lastsMs":60000})"), Json::parse(R"({"ok":true})"));
  EXPECT_EQ(ask(R"({"do":"state","slot":3})")["dead"], true);
  EXPECT_EQ(ask(R"({"do":"state","slot":1})")["dead"], false);
}

TEST_F(ControlTest, BadRequests_AreRefusedWithTheCauseAndChangeNothing) {
  for (const auto& [request, cause] : std::initializer_list<std::pair<std::string, const char*>>{
           {"", "parse error"},
           {"no json", "parse error"},
           {std::string(60000, '['), "parse error"},
           {"[]", "an object is needed here"},
           {"{}", "a text 'do' is needed"},
           {R"({"do":"sing"})", "unknown do 'sing'; known are fault, clear, die, state"},
           {R"({"do":"fault"})", "a text 'kind' is needed"},
           {R"({"do":"fault","kind":"sulk"})", "unknown kind 'sulk'; known are ignore"},
           {R"({"do":"fault","kind":"fail","speed":1})", "unknown key 'speed'"},
           {R"({"do":"fault","kind":"fail","slots":"1-4"})", "there is no blade in slot 4"},
           {R"({"do":"fault","kind":"fail","slots":4})", "a text 'slots' is needed"},
           {R"({"do":"fault","kind":"fail","times":-1})", "'times' is no number from 0"},
           {R"({"do":"fault","kind":"fail","command":"sing"})", "unknown command 'sing'"},
           {R"({"do":"state"})", "'slot' is no number from 1 to 65535"},
           {R"({"do":"state","slot":9})", "there is no blade in slot 9"},
           {R"({"do":"state","slot":3,"deep":true})", "unknown key 'deep'"},
           {R"({"do":"die","slot":3})", "'lastsMs' is no number"},
           {R"({"do":"clear","slot":3})", "unknown key 'slot'"},
           {"{\"do\":\"\xff\"}", "parse error"},
       }) {
    const Json answer = ask(request);
    EXPECT_EQ(answer["ok"], false) << request;
    EXPECT_THAT(answer["error"].get<std::string>(), HasSubstr(cause)) << request;
  }
  EXPECT_EQ(faultsOf(1), 0U);
}

TEST_F(ControlTest, Loop_CarriesOutWhatOtherThreadsAskFor) {
  std::thread::id ranOn;
  std::thread other([&] {
    EXPECT_TRUE(fleet_.onLoop([&ranOn] { ranOn = std::this_thread::get_id(); }));
    fleet_.stop();
  });
  fleet_.run([](const Fleet&) {});
  other.join();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_FALSE(fleet_.onLoop([] { FAIL() << "the run has ended"; }));
}

}  // namespace
}  // namespace sma
