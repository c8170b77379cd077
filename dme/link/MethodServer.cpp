#include "dme/link/MethodServer.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

#include "dme/base/Text.h"
#include "framework/core_log/Log.h"
#include "framework/method/Wire.h"
#include "framework/proc/Cookie.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/sd/SlotMo.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sysdebug/Methods.h"

namespace dme {

namespace {

constexpr std::uint8_t kClusterUp = 1;

base::OBioStream encodeVerdict(const serviceorchapi::ValidateBladeStateMe& call,
                               const Verdict& verdict) {
  if (verdict.isRefused) {
    return method::encodeFailure(call,
                                 {proc::kFrameworkBits, Answers::kInvalidCode, verdict.reason});
  }
  return method::encodeAnswer(call, {verdict.token, verdict.isValid, verdict.shouldRetry});
}

}  // namespace

template <class Me, auto kFunction>
constexpr MethodServer::Method MethodServer::entry() {
  return {
      Me::kClassId, Me::kName, [](MethodServer& server, const MethodCall& call) {
        if constexpr (std::is_invocable_v<decltype(kFunction), MethodServer&, const MethodCall&>) {
          return (server.*kFunction)(call);
        } else {
          return (server.reports_.*kFunction)(call);
        }
      }};
}

const std::array<MethodServer::Method, MethodServer::kMethods>& MethodServer::methods() {
  using Self = MethodServer;
  using Reports = ReportMethods;
  // The heartbeat first: it is nearly all of the traffic.
  static constexpr std::array<Method, kMethods> kTable{
      entry<serviceorchapi::UpdateSmaHeartbeatMe, &Self::updateHeartbeat>(),
      entry<serviceorchapi::ValidateBladeStateMe, &Self::validateBladeState>(),
      entry<serverapi::OsControllerVersionMe, &Self::recordOsController>(),
      entry<dmeapi::ClusterStateRequestMe, &Self::requestClusterState>(),
      entry<sysdebug::RefreshLogControlMe, &Self::refreshLogControl>(),
      entry<agboot::BootstrapMe, &Self::answerEmpty<agboot::BootstrapMe>>(),
      entry<agboot::BootstrapDoneMe, &Self::answerEmpty<agboot::BootstrapDoneMe>>(),
      entry<serviceorchapi::UpdatePlatformInfoMe, &Reports::updatePlatformInfo>(),
      entry<serviceorchapi::ValidateAppInstancesMe, &Reports::validateAppInstances>(),
      entry<serviceorchapi::NotifyAppFailureMe, &Reports::notifyAppFailure>(),
      entry<serviceorchapi::UpdateProgressMe, &Reports::updateProgress>(),
      entry<serviceorchapi::UpdateDiskFormatStatusMe, &Reports::updateDiskFormatStatus>(),
      entry<serverapi::OsControllerUpgradeProgressMe, &Reports::updateUpgradeProgress>(),
  };
  return kTable;
}

MethodServer::MethodServer(ObjectStore& store, Chassis& chassis, BladeMonitor& monitor, Send send,
                           WallClock wallClock)
    : store_(store),
      chassis_(chassis),
      monitor_(monitor),
      admission_(store, chassis),
      answers_(store, std::move(send)),
      reports_(store, chassis, answers_, lines_, std::move(wallClock)) {}

void MethodServer::handle(PeerId peer, const unsigned char* bytes, std::size_t size,
                          TimePoint now) {
  base::IBioStream stream(bytes, size);
  if (!header_.deserialize(stream)) {
    ++counters_.undecodable;
    if (lines_.admits("bytes that are no stimulus", 0, now)) {
      core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                          "%zu bytes are no stimulus: dropped", size);
    }
    return;
  }
  if (events_ != nullptr) {
    events_->heard(peer, header_.address());
  }
  if (header_.type() == proc::Stimulus::kTypeAnswer) {
    takeAnswer(stream, now);
    return;
  }
  const MethodCall call{peer, header_, stream, now};
  const auto& table = methods();
  const auto found = std::find_if(table.begin(), table.end(), [this](const Method& method) {
    return method.classId == header_.classId();
  });
  if (header_.type() != proc::Stimulus::kTypeMethod || found == table.end()) {
    ++counters_.unknownMethods;
    if (lines_.admits("calls of unknown methods", 0, now)) {
      core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                          "call of unknown method %u: not carried out", header_.classId());
    }
    answers_.fail(call, proc::kNoHandlerCode, "the engine has no such method");
    return;
  }
  carryOut(*found, static_cast<std::size_t>(found - table.begin()), call);
}

void MethodServer::listen(BladeEvents& events) {
  events_ = &events;
  reports_.listen(events);
}

void MethodServer::tick(TimePoint now) {
  lines_.endPeriod(now, [](std::string_view cause, std::uint32_t slot, std::uint64_t lines) {
    const std::string where = slot == 0 ? "" : " for slot " + std::to_string(slot);
    core_log::logPrintf("tick", core_log::serviceLevel(), 6,
                        "%s%s: %llu more lines like those before were left out",
                        std::string(cause).c_str(), where.c_str(),
                        static_cast<unsigned long long>(lines));
  });
}

void MethodServer::takeAnswer(base::IBioStream& stream, TimePoint now) {
  proc::Outcome outcome{};
  proc::Stimulus::Failure failure;
  if (!proc::readOutcome(stream, outcome, failure)) {
    ++counters_.undecodable;
    if (lines_.admits("answers that do not decode", 0, now)) {
      core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                          "answer of method %u does not decode: dropped", header_.classId());
    }
    return;
  }
  ++counters_.answers;
  const bool isFailure = outcome == proc::Outcome::kFailure;
  if (events_ != nullptr && !events_->answered(header_.cookie(), isFailure ? &failure : nullptr)) {
    ++counters_.strayAnswers;
  }
}

void MethodServer::carryOut(const Method& method, std::size_t place, const MethodCall& call) {
  if (method.function(*this, call)) {
    ++calls_[place];
    return;
  }
  ++counters_.undecodable;
  if (lines_.admits("arguments that do not decode", 0, call.now)) {
    core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                        "arguments of %s do not decode: not carried out", method.name.data());
  }
  answers_.fail(call, proc::kUndecodableCode, "the arguments do not decode");
}

MethodServer::Counters MethodServer::counters() const {
  Counters counters = counters_;
  counters.notDurable = answers_.notDurable();
  counters.reports = reports_.counters();
  for (std::size_t i = 0; i < kMethods; ++i) {
    counters.methods.push_back({methods()[i].name, calls_[i]});
  }
  return counters;
}

bool MethodServer::updateHeartbeat(const MethodCall& call) {
  serviceorchapi::UpdateSmaHeartbeatMe::InTuple arguments;
  if (!readArguments<serviceorchapi::UpdateSmaHeartbeatMe>(call, arguments)) {
    return false;
  }
  const auto [slot, count, timer] = arguments;
  if (!monitor_.beat(slot, count, timer, call.now)) {
    ++counters_.strayBeats;
  }
  answers_.succeed<serviceorchapi::UpdateSmaHeartbeatMe>(call, {});
  return true;
}

bool MethodServer::validateBladeState(const MethodCall& call) {
  using Me = serviceorchapi::ValidateBladeStateMe;
  Me::InTuple arguments;
  if (!readArguments<Me>(call, arguments)) {
    return false;
  }
  const auto& [slot, version, token] = arguments;
  const Verdict verdict = admission_.judge(slot, version, token);
  watch(slot, verdict, call.now);
  counters_.refused += verdict.isRefused ? 1 : 0;
  if (events_ != nullptr && !verdict.isRefused) {
    events_->registered(slot, verdict.isValid);
  }
  answers_.answerWhenStored<Me>(call, [verdict](const Me& me, bool isStored) {
    // Nothing is promised that a crash could take back: the blade comes again instead.
    const bool canTell = isStored || verdict.isRefused;
    return encodeVerdict(me, canTell ? verdict : BladeAdmission::notNow());
  });
  return true;
}

void MethodServer::watch(std::uint32_t slot, const Verdict& verdict, TimePoint now) {
  if (verdict.isValid) {
    monitor_.expect(slot, now);
  } else {
    monitor_.dismiss(slot);
  }
}

bool MethodServer::recordOsController(const MethodCall& call) {
  using Me = serverapi::OsControllerVersionMe;
  Me::InTuple arguments;
  if (!readArguments<Me>(call, arguments)) {
    return false;
  }
  const auto& [id, chassis, number, startup, runningVersion, runningImage, runningSize,
               cachedVersion, cachedImage, cachedSize, isValid, kind, otherKind, vendor] =
      arguments;
  Object* slot = chassis_.slot(number);
  if (slot == nullptr) {
    answers_.fail(call, Answers::kInvalidCode, "there is no slot " + std::to_string(number));
    return true;
  }
  store_.set(*slot, sd::SlotMo::kStartupVersion, cutText(startup));
  store_.set(*slot, sd::SlotMo::kRunningVersion, cutText(runningVersion));
  store_.set(*slot, sd::SlotMo::kRunningImage, cutText(runningImage));
  store_.set(*slot, sd::SlotMo::kRunningImageSize, runningSize);
  store_.set(*slot, sd::SlotMo::kCachedVersion, cutText(cachedVersion));
  store_.set(*slot, sd::SlotMo::kCachedImage, cutText(cachedImage));
  store_.set(*slot, sd::SlotMo::kCachedImageSize, cachedSize);
  store_.set(*slot, sd::SlotMo::kVendor, cutText(vendor));
  // No image is offered: the path is empty.
  answers_.succeedWhenStored<Me>(call, {"", "", 0U}, "the version could not be stored");
  return true;
}

bool MethodServer::requestClusterState(const MethodCall& call) {
  if (!answerEmpty<dmeapi::ClusterStateRequestMe>(call)) {
    return false;
  }
  dmeapi::ClusterStateMe state;
  state.in = {chassis_.clusterId(), kClusterUp, chassis_.epoch()};
  state.setResponseRequired(false);
  const proc::Address& from = call.header.address();
  state.setAddress({from.sender, from.senderInstance, from.service, from.instance});
  base::Buffer cookie;
  proc::makeCookie(cookie);
  state.setCookie(cookie);
  answers_.send(call.peer, method::encodeCall(state));
  return true;
}

bool MethodServer::refreshLogControl(const MethodCall& call) {
  sysdebug::RefreshLogControlMe::InTuple none;
  if (!readArguments<sysdebug::RefreshLogControlMe>(call, none)) {
    return false;
  }
  // The level of the engine's own process is the one that the operator sets.
  const auto level = static_cast<std::uint8_t>(core_log::serviceLevel().get());
  answers_.succeed<sysdebug::RefreshLogControlMe>(call, {level});
  return true;
}

template <class Me>
bool MethodServer::answerEmpty(const MethodCall& call) {
  typename Me::InTuple arguments;
  if (!readArguments<Me>(call, arguments)) {
    return false;
  }
  answers_.succeed<Me>(call, {});
  return true;
}

}  // namespace dme
