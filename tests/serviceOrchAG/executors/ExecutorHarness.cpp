#include "tests/serviceOrchAG/executors/ExecutorHarness.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "framework/filter/Filter.h"
#include "model/comm/DateTimeMo.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"

namespace zan_serviceOrchAG {

namespace {

using method::Config;
using method::Value;
using proc::Stimulus;

template <std::uint8_t kJob>
Config instance() {
  Config app(0x306, mo::Dn("sys/chassis-1/slot-3/app-a1/package"));
  app.set(sm::AppMo::kPackageFile.id, Value(base::String("/pkg/a1.bin")));
  app.set(sm::AppMo::kReqDataHdd.id, Value(std::uint64_t{3}));
  app.set(sm::AppMo::kDeployType.id, Value(std::uint8_t{2}));
  app.set(sm::AppMo::kInstallTimeout.id, Value(std::uint64_t{600}));
  app.set(sm::AppMo::kUninstallTimeout.id, Value(std::uint64_t{300}));
  app.set(sm::AppMo::kUpgradeTimeout.id, Value(std::uint64_t{900}));
  Config instance(0x303, mo::Dn("sys/chassis-1/slot-3/app-a1"));
  instance.set(sd::AppInstanceMo::kAppInstanceId.id, Value(base::String("a1")));
  instance.set(sd::AppInstanceMo::kSlotId.id, Value(std::uint32_t{3}));
  instance.set(sd::AppInstanceMo::kJobType.id, Value(kJob));
  instance.addChild(std::move(app));
  return instance;
}

Config slot() {
  Config slot(0x302, mo::Dn("sys/chassis-1/slot-3"));
  slot.set(sd::SlotMo::kNumber.id, Value(std::uint32_t{3}));
  slot.set(sd::SlotMo::kToken.id, Value(base::String("0123abcd")));
  slot.set(sd::SlotMo::kSlotCommand.id, Value(std::uint32_t{277}));
  slot.set(sd::SlotMo::kPlatformLogLevel.id, Value(std::uint8_t{2}));
  return slot;
}

Config dateTime() {
  Config settings(0x307, mo::Dn("sys/dateTime"));
  settings.set(comm::DateTimeMo::kTimeZone.id, Value(base::String("Europe/Berlin (summer time)")));
  return settings;
}

Config none() {
  return {};
}

template <class Me>
std::unique_ptr<Stimulus> make() {
  return std::make_unique<Me>();
}

template <class Me, auto kExecute>
void runStage(Stimulus& stage, const Config& target) {
  auto& me = static_cast<Me&>(stage);
  std::get<Config>(me.in) = target;
  std::apply([&](const auto&... argument) { kExecute(me, argument...); }, me.in);
}

void runTimeZone(Stimulus& stage, const Config& target) {
  auto& me = static_cast<serviceorchapi::UpdateTimeZoneMe&>(stage);
  me.in = {0, 0, mo::Dn(), 0, target, 3, "info"};
  std::apply(
      [&](const auto&... argument) { Svc::executeServiceorchapiUpdateTimeZoneCb(me, argument...); },
      me.in);
}

void runClearApplication(Stimulus& stage, const Config& /*target*/) {
  Svc::executeServiceorchapiClearApplicationLogDataCb(
      static_cast<serviceorchapi::ClearApplicationLogDataMe&>(stage), "a1", 3);
}

void runClearSystem(Stimulus& stage, const Config& /*target*/) {
  Svc::executeServiceorchapiClearSystemLogDataCb(
      static_cast<serviceorchapi::ClearSystemLogDataMe&>(stage), 3);
}

}  // namespace

ScriptedBlades::ScriptedBlades(unsigned int status)
    : before_(std::exchange(sendCommand, &ScriptedBlades::take)), status_(status) {
  instance_ = this;
}

ScriptedBlades::~ScriptedBlades() {
  sendCommand = before_;
  instance_ = nullptr;
}

unsigned int ScriptedBlades::take(std::string slot, std::string document, std::string command) {
  instance_->sent_.push_back({std::move(slot), std::move(document), std::move(command)});
  return instance_->status_;
}

ActivityAt::ActivityAt(std::string hook, std::int32_t result, std::int32_t lBits)
    : hook_(std::move(hook)) {
  finj::FinjManager::getInstance().setActivity(
      hook_, {.result = result, .assignments = {{"lBits", lBits}}, .times = 0});
}

ActivityAt::~ActivityAt() {
  finj::FinjManager::getInstance().removeActivity(hook_);
}

const std::vector<Executor>& executors() {
  using namespace zan_dme;  // NOLINT(google-build-using-namespace): the long names of this table
  using namespace serviceorchapi;  // NOLINT(google-build-using-namespace)
  static const auto& all = *new std::vector<Executor>{
      {"install", "executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceInstallApplicationSendCommand", "installApp", instance<1>,
       runStage<FsmSdAppInstanceInstallApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb>,
       make<FsmSdAppInstanceInstallApplicationSendCommandMe>},
      {"uninstall", "executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceUninstallApplicationSendCommand", "uninstallApp", instance<2>,
       runStage<FsmSdAppInstanceUninstallApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb>,
       make<FsmSdAppInstanceUninstallApplicationSendCommandMe>},
      {"upgrade", "executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceUpgradeApplicationSendCommand", "upgradeApp", instance<3>,
       runStage<FsmSdAppInstanceUpgradeApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb>,
       make<FsmSdAppInstanceUpgradeApplicationSendCommandMe>},
      {"start", "executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceStartApplicationSendCommand", "startApp", startTarget,
       runStage<FsmSdAppInstanceStartApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb>,
       make<FsmSdAppInstanceStartApplicationSendCommandMe>},
      {"startVdp", "executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceStartApplicationSendCommand", "startApp", startVdpTarget,
       runStage<FsmSdAppInstanceStartApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb>,
       make<FsmSdAppInstanceStartApplicationSendCommandMe>},
      {"stop", "executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceStopApplicationSendCommand", "stopApp", instance<5>,
       runStage<FsmSdAppInstanceStopApplicationSendCommandMe,
                Svc::executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb>,
       make<FsmSdAppInstanceStopApplicationSendCommandMe>},
      {"platformLogLevel", "executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb",
       "ZanDmeFsmSdSlotChangePlatformLogLevelSendCommand", "platformLogLevel.set", slot,
       runStage<FsmSdSlotChangePlatformLogLevelSendCommandMe,
                Svc::executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb>,
       make<FsmSdSlotChangePlatformLogLevelSendCommandMe>},
      {"formatDisk", "executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb",
       "ZanDmeFsmSdSlotFormatDiskStartDiskFormat", "formatDisk", slot,
       runStage<FsmSdSlotFormatDiskStartDiskFormatMe,
                Svc::executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb>,
       make<FsmSdSlotFormatDiskStartDiskFormatMe>},
      {"timeZone", "executeServiceorchapiUpdateTimeZoneCb", "ServiceorchapiUpdateTimeZone",
       "settings.update", dateTime, runTimeZone, make<UpdateTimeZoneMe>},
      {"clearApplicationLogData", "executeServiceorchapiClearApplicationLogDataCb", nullptr,
       "clearLogData", none, runClearApplication, make<ClearApplicationLogDataMe>},
      {"clearSystemLogData", "executeServiceorchapiClearSystemLogDataCb", nullptr, "clearLogData",
       none, runClearSystem, make<ClearSystemLogDataMe>},
  };
  return all;
}

const Executor& executorNamed(const std::string& name) {
  const auto found = std::find_if(executors().begin(), executors().end(),
                                  [&](const Executor& each) { return each.name == name; });
  if (found == executors().end()) {
    throw std::invalid_argument("no executor " + name);
  }
  return *found;
}

void dropChildren(Config& target) {
  Config bare(target.classId(), target.dn());
  for (const auto& [property, value] : target.values()) {
    bare.set(property, value);
  }
  target = bare;
}

Outcome runExecutor(const Executor& executor, const Config& target) {
  filter::Filter::initFactories();  // as start-up does
  const std::unique_ptr<Stimulus> stage = executor.makeStage();
  executor.run(*stage, target);
  Outcome outcome;
  outcome.isAnswered = stage->isResponseRequired();
  if (stage->failure() != nullptr) {
    outcome.hasFailed = true;
    outcome.failure = *stage->failure();
  }
  return outcome;
}

std::string golden(const std::string& name) {
  std::ifstream file(std::string(ZAN_GOLDEN_FOLDER "/") + name, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  return text;
}

std::string goldenOn(const std::string& platform, const std::string& name) {
  const std::string own = golden(name + '.' + platform + ".xml");
  return own.empty() ? golden(name + ".xml") : own;
}

std::string sentDocument(const std::string& executor, const Config& target) {
  const ScriptedBlades blades;
  runExecutor(executorNamed(executor), target);
  return blades.sent().empty() ? "" : blades.sent().front().document;
}

}  // namespace zan_serviceOrchAG
