#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "framework/finj/FinjManager.h"
#include "model/AllClasses.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;

// What an executor does before what, where more than one order would send the same document.

void anotherJob(Config& target) {
  target.set(sd::AppInstanceMo::kJobType.id, Value(std::uint8_t{0}));
}
void anotherCommand(Config& target) {
  target.set(sd::SlotMo::kSlotCommand.id, Value(std::uint32_t{0}));
}
void withoutApp(Config& target) {
  dropChildren(target, kApp);
}
void withoutDevice(Config& target) {
  dropChildren(target, kLdu);
}
void withoutId(Config& target) {
  target.set(sd::AppInstanceMo::kAppInstanceId.id, Value());
}
void withoutToken(Config& target) {
  target.set(sd::SlotMo::kToken.id, Value());
}
void unknownZone(Config& target) {
  target.set(comm::DateTimeMo::kTimeZone.id, Value(base::String("Europe/Berlin\tx")));
}

struct Refused {
  const char* executor;
  const char* what;
  void (*change)(Config& target);
  std::vector<LogLine> lines;  // all that are written; the function is filled in
};

const Refused kRefused[] = {
    {"install",
     "NoApp",
     withoutApp,
     {{1, "", "INSTALLAPP: appInstanceId = a1"}, {8, "", "INSTALLAPP : cannot find AppMo"}}},
    {"install",
     "AnotherJob",
     anotherJob,
     {{1, "", "INSTALLAPP: appInstanceId = a1"},
      {1, "", "INSTALLAPP: FilePath=/pkg/a1.bin Timeout=600"}}},
    {"install",
     "NoId",
     withoutId,
     {{1, "", "INSTALLAPP: appInstanceId = "},
      {1, "", "INSTALLAPP: FilePath=/pkg/a1.bin Timeout=600"},
      {1, "", "INSTALLAPP: command : installAppRequest"},
      {8, "", "INSTALLAPP: slot[3]: appInstanceId : missing"}}},
    {"upgrade",
     "NoApp",
     withoutApp,
     {{1, "", "UPGRADEAPP: appInstanceId = a1"}, {8, "", "UPGRADEAPP : cannot find AppMo"}}},
    {"upgrade",
     "AnotherJob",
     anotherJob,
     {{1, "", "UPGRADEAPP: appInstanceId = a1"},
      {1, "", "UPGRADEAPP: FilePath=/pkg/a1.bin UpgradeTimeout=900"}}},
    {"upgrade",
     "NoId",
     withoutId,
     {{1, "", "UPGRADEAPP: appInstanceId = "},
      {1, "", "UPGRADEAPP: FilePath=/pkg/a1.bin UpgradeTimeout=900"},
      {1, "", "UPGRADEAPP: request type: upgradeAppRequest"},
      {8, "", "UPGRADEAPP: slot[3]: appInstanceId : missing"}}},
    {"start",
     "NoDevice",
     withoutDevice,
     {{1, "", "STARTAPP: appInstanceId = a1 "}, {8, "", "STARTAPP: cannot find LduMo"}}},
    {"start",
     "NoApp",
     withoutApp,
     {{1, "", "STARTAPP: appInstanceId = a1 "}, {8, "", "STARTAPP : cannot find AppMo"}}},
    {"start", "AnotherJob", anotherJob, {{1, "", "STARTAPP: appInstanceId = a1 "}}},
    {"start",
     "NoId",
     withoutId,
     {{1, "", "STARTAPP: appInstanceId =  "},
      {1, "", "STARTAPP: request type: startAppRequest"},
      {8, "", "STARTAPP: slot[3]: appInstanceId : missing"}}},
    {"stop", "AnotherJob", anotherJob, {{1, "", "STOPAPP: appInstanceId = a1 "}}},
    {"stop",
     "NoId",
     withoutId,
     {{1, "", "STOPAPP: appInstanceId =  "},
      {1, "", "STOPAPP: request type: stopAppRequest"},
      {8, "", "STOPAPP: slot[3]: appInstanceId : missing"}}},
    {"uninstall", "AnotherJob", anotherJob, {{1, "", "UNINSTALLAPP: appInstanceId = a1 "}}},
    {"uninstall",
     "NoId",
     withoutId,
     {{1, "", "UNINSTALLAPP: appInstanceId =  "},
      {1, "", "UNINSTALLAPP: request type: uninstallAppRequest"},
      {8, "", "UNINSTALLAPP: slot[3]: appInstanceId : missing"}}},
    {"platformLogLevel",
     "AnotherCommand",
     anotherCommand,
     {{1, "", "PLATFORMLOGLEVELSET: slot = 3 "}}},
    {"formatDisk",
     "NoToken",
     withoutToken,
     {{1, "", "FORMATDISK: request type: formatDiskRequest"},
      {1, "", "FORMATDISK: slot = 3 "},
      {8, "", "FORMATDISK: slot[3] : token : missing"}}},
    {"timeZone",
     "NoZone",
     unknownZone,
     {{1, "", "SETTINGUPDATE: request type : platformSettingsUpdate, slot : 3 "},
      {4, "updateTimeZoneCache", "serviceOrchAG:updateTimeZoneCache entered"},
      {1, "", "SETTINGUPDATE: timezone[Europe/Berlin\\x09x] : Postfix timezone[] "},
      {8, "", "SETTINGUPDATE: slot[3]: timezone : missing"}}},
};

void PrintTo(const Refused& refused, std::ostream* out) {
  *out << refused.executor << ' ' << refused.what;
}

class RefusedStory : public testing::TestWithParam<Refused> {};
INSTANTIATE_TEST_SUITE_P(Executors, RefusedStory, testing::ValuesIn(kRefused),
                         [](const auto& each) {
                           return std::string(each.param.executor) + '_' + each.param.what;
                         });

TEST_P(RefusedStory, TellsItsStepsUpToTheRefusalAndNoneAfterIt) {
  const Executor& executor = executorNamed(GetParam().executor);
  Config target = executor.target();
  GetParam().change(target);
  std::vector<LogLine> expected = GetParam().lines;
  for (LogLine& line : expected) {
    line.function = line.function.empty() ? executor.function : line.function;
  }
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_TRUE(runExecutor(executor, target).hasFailed);
  EXPECT_EQ(log.lines(), expected);
}

// ----- Starting ---------------------------------------------------------------------------------

TEST(StartOrder, UnknownDeployType_IsRefusedInItsPlaceAmongTheMissingValues) {
  Config target = startTarget();
  dropChildren(target, kChassis);
  changeChildren(target, kApp,
                 [](Config& app) { app.set(sm::AppMo::kDeployType.id, Value(std::uint8_t{0})); });
  target.set(sd::AppInstanceMo::kMgmtBootstrapVersion.id, Value());
  const ScriptedBlades blades;
  EXPECT_EQ(runExecutor(executorNamed("start"), target).failure.text,
            "STARTAPP:: interfaceList deploy type is unknown.");
  changeLinks(target, 1,
              [](Config& link) { link.set(sd::ExternalLduLinkMo::kPortName.id, Value()); });
  dropChildren(target, kCluster);
  EXPECT_EQ(runExecutor(executorNamed("start"), target).failure.text,
            "STARTAPP:: mgmtBootstrap: portName is missing.");
}

TEST(StartOrder, PlatformWithoutDataVnics_ReadsThemAllTheSame) {
  const auto contains = [](const std::string& line) {
    const ScriptedBlades blades;
    const LogCapture log;
    runExecutor(executorNamed("start"));
    return log.contains(1, line);
  };
  const std::string read = "STARTAPP: AppLDULink : reqDataVnics : VnicIndex1:[2], VnicIndex2:[30]";
  const std::string joined = "STARTAPP: reqDataVnics : [10,11,2,20,21,3,30,48,49]";
  for (const char* platform : {"qvm1", "qvm2"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_TRUE(contains(read)) << platform;
    EXPECT_FALSE(contains(joined)) << platform;
  }
  const Configured configured({"supervisor.platform=qvm3"});
  EXPECT_TRUE(contains(read));
  EXPECT_TRUE(contains(joined));
}

// ----- Hooks ------------------------------------------------------------------------------------

TEST(HookOrder, FailureBits_AreBoundAfterTheHookBefore) {
  const ActivityAt before("FINJ_PRE_ZanDmeFsmSdAppInstanceStopApplicationSendCommand", 0, 2048);
  finj::FinjManager::getInstance().setActivity(
      "FINJ_FSM_FAIL_ZanDmeFsmSdAppInstanceStopApplicationSendCommand",
      {.result = 1, .assignments = {}});
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(executorNamed("stop"));
  finj::FinjManager::getInstance().clear();
  EXPECT_TRUE(outcome.hasFailed);
  EXPECT_EQ(outcome.failure.bits, 0U);
}

TEST(HookOrder, CrashAmongOtherBits_EndsTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  for (const std::int32_t mask : {5, 12, 13}) {
    const auto run = [mask] {
      const ActivityAt activity("FINJ_PRE_ZanDmeFsmSdAppInstanceStopApplicationSendCommand", mask);
      const ScriptedBlades blades;
      runExecutor(executorNamed("stop"));
    };
    EXPECT_DEATH(run(), "") << mask;
  }
}

TEST(Hooks, ExecutorsOfPlainMethods_HaveNone) {
  std::vector<std::string> hooks;
  for (const char* kind : {"FINJ_PRE_", "FINJ_FSM_FAIL_", "FINJ_POST_"}) {
    for (const char* method :
         {"ClearApplicationLogData", "ClearSystemLogData", "DeRegisterBlade"}) {
      hooks.push_back(std::string(kind) + "Serviceorchapi" + method);
    }
  }
  for (const std::string& hook : hooks) {
    finj::FinjManager::getInstance().setActivity(hook, {.result = 1, .assignments = {}});
  }
  for (const char* name : {"clearApplicationLogData", "clearSystemLogData"}) {
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(executorNamed(name));
    EXPECT_FALSE(outcome.hasFailed);
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_EQ(blades.sent().size(), 1U);
  }
  serviceorchapi::DeRegisterBladeMe deRegister;
  Svc::executeServiceorchapiDeRegisterBladeCb(deRegister, 3);
  EXPECT_TRUE(deRegister.isResponseRequired());
  finj::FinjManager::getInstance().clear();
}

// ----- Ends -------------------------------------------------------------------------------------

unsigned int throwing(std::string, std::string, std::string) {
  throw std::runtime_error("no memory");
}

TEST(Exception, OfTheExchange_PassesAndLeavesNoVariableBound) {
  finj::FinjManager& hooks = finj::FinjManager::getInstance();
  std::int32_t variable = 7;
  hooks.setLocalVar("variable", &variable);
  const SendCommand before = std::exchange(sendCommand, &throwing);
  EXPECT_THROW(runExecutor(executorNamed("stop")), std::runtime_error);
  sendCommand = before;
  const ActivityAt activity("FINJ_TEST", 0);
  hooks.setActivity("FINJ_TEST", {.result = 0, .assignments = {{"variable", 9}}});
  hooks.executeActivities("FINJ_TEST");
  EXPECT_EQ(variable, 7);
}

TEST(Slots, BeyondAnInt_SelectTheBladeAsTheyAre) {
  constexpr unsigned int kSlot = 4294967295U;
  const ScriptedBlades blades;
  const LogCapture log;
  serviceorchapi::ClearApplicationLogDataMe application;
  Svc::executeServiceorchapiClearApplicationLogDataCb(application, "a1", kSlot);
  serviceorchapi::ClearSystemLogDataMe system;
  Svc::executeServiceorchapiClearSystemLogDataCb(system, kSlot);
  serviceorchapi::UpdateTimeZoneMe timeZone;
  std::get<Config>(timeZone.in) = executorNamed("timeZone").target();
  Svc::executeServiceorchapiUpdateTimeZoneCb(timeZone, 0, 0, mo::Dn(), 0, Config(), kSlot, "info");
  ASSERT_EQ(blades.sent().size(), 3U);
  for (const SentCommand& sent : blades.sent()) {
    EXPECT_EQ(sent.slot, "4294967295");
  }
  EXPECT_TRUE(log.contains(1, "CLEARLOGDATA : SYSTEM : slot = 4294967295 "));
  EXPECT_TRUE(
      log.contains(1, "CLEARLOGDATA : SYSTEM : request type : clearLogDataRequest, slot : -1"));
  EXPECT_TRUE(log.contains(
      1,
      "SETTINGUPDATE: 100 : Setting update message sent to SMA with success request / response "
      "for slot -1."));
}

template <class Me>
void expectUntouched(Me& me) {
  EXPECT_EQ(me.failure(), nullptr);
  EXPECT_TRUE(me.isResponseRequired());
}

TEST(GcovRequest, DoesNothing) {
  const LogCapture log;
  serviceorchapi::GcovRequestMe me;
  Svc::executeServiceorchapiGcovRequestCb(me);
  Svc::formatSuccessRspServiceorchapiGcovRequestCb(me);
  Svc::formatFailedRspServiceorchapiGcovRequestCb(me);
  expectUntouched(me);
  EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace zan_serviceOrchAG
