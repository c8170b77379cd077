#include "dme/MethodServer.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "framework/core_log/Log.h"
#include "framework/method/ArgCodec.h"
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

/// The request itself is at fault.
constexpr std::uint32_t kInvalidCode = 1003;
constexpr std::uint32_t kNotStoredCode = 1005;

constexpr std::uint8_t kClusterUp = 1;

template <class Me>
bool readArguments(base::IBioStream& stream, typename Me::InTuple& arguments) {
  return method::readArgs(stream, arguments) && stream.remaining() == 0;
}

/// The call as an object of its own, for an answer that is sent later.
template <class Me>
std::shared_ptr<const Me> keep(const proc::StimulusHeader& header) {
  auto me = std::make_shared<Me>();
  me->copyHeader(header);
  return me;
}

base::OBioStream encodeVerdict(const serviceorchapi::ValidateBladeStateMe& call,
                               const Verdict& verdict) {
  if (verdict.isRefused) {
    return method::encodeFailure(call, {proc::kFrameworkBits, kInvalidCode, verdict.reason});
  }
  return method::encodeAnswer(call, {verdict.token, verdict.isValid, verdict.shouldRetry});
}

}  // namespace

template <class Me>
constexpr MethodServer::Method MethodServer::entry(Function function) {
  return {Me::kClassId, Me::kName, function};
}

const std::array<MethodServer::Method, MethodServer::kMethods>& MethodServer::methods() {
  using Self = MethodServer;
  // The heartbeat first: it is nearly all of the traffic.
  static constexpr std::array<Method, kMethods> kTable{
      entry<serviceorchapi::UpdateSmaHeartbeatMe>(&Self::updateHeartbeat),
      entry<serviceorchapi::ValidateBladeStateMe>(&Self::validateBladeState),
      entry<serverapi::OsControllerVersionMe>(&Self::recordOsController),
      entry<dmeapi::ClusterStateRequestMe>(&Self::requestClusterState),
      entry<sysdebug::RefreshLogControlMe>(&Self::refreshLogControl),
      entry<agboot::BootstrapMe>(&Self::answerEmpty<agboot::BootstrapMe>),
      entry<agboot::BootstrapDoneMe>(&Self::answerEmpty<agboot::BootstrapDoneMe>),
      entry<serviceorchapi::UpdatePlatformInfoMe>(&Self::updatePlatformInfo),
      entry<serviceorchapi::ValidateAppInstancesMe>(&Self::validateAppInstances),
      entry<serviceorchapi::NotifyAppFailureMe>(&Self::notifyAppFailure),
      entry<serviceorchapi::UpdateProgressMe>(&Self::updateProgress),
      entry<serviceorchapi::UpdateDiskFormatStatusMe>(&Self::updateDiskFormatStatus),
      entry<serverapi::OsControllerUpgradeProgressMe>(&Self::updateUpgradeProgress),
  };
  return kTable;
}

MethodServer::MethodServer(ObjectStore& store, Chassis& chassis, BladeMonitor& monitor, Send send,
                           WallClock wallClock)
    : store_(store),
      chassis_(chassis),
      monitor_(monitor),
      admission_(store, chassis),
      send_(std::move(send)),
      wallClock_(std::move(wallClock)),
      platforms_(store, chassis, reports_),
      instances_(store, chassis, reports_),
      operations_(store, chassis, instances_, reports_) {}

void MethodServer::handle(PeerId peer, const unsigned char* bytes, std::size_t size,
                          TimePoint now) {
  base::IBioStream stream(bytes, size);
  if (!header_.deserialize(stream)) {
    ++counters_.undecodable;
    core_log::logPrintf("handle", core_log::serviceLevel(), 6, "%zu bytes are no stimulus: dropped",
                        size);
    return;
  }
  if (header_.type() == proc::Stimulus::kTypeAnswer) {
    ++counters_.answers;
    return;
  }
  const Call call{peer, header_, stream, now};
  const auto& table = methods();
  const auto found = std::find_if(table.begin(), table.end(), [this](const Method& method) {
    return method.classId == header_.classId();
  });
  if (header_.type() != proc::Stimulus::kTypeMethod || found == table.end()) {
    ++counters_.unknownMethods;
    core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                        "call of unknown method %u: not carried out", header_.classId());
    fail(call, proc::kNoHandlerCode, "the engine has no such method");
    return;
  }
  carryOut(*found, static_cast<std::size_t>(found - table.begin()), call);
}

void MethodServer::carryOut(const Method& method, std::size_t place, const Call& call) {
  if ((this->*method.function)(call)) {
    ++calls_[place];
    return;
  }
  ++counters_.undecodable;
  core_log::logPrintf("handle", core_log::serviceLevel(), 6,
                      "arguments of %s do not decode: not carried out", method.name.data());
  fail(call, proc::kUndecodableCode, "the arguments do not decode");
}

MethodServer::Counters MethodServer::counters() const {
  Counters counters = counters_;
  counters.notDurable = notDurable_.load(std::memory_order_relaxed);
  counters.reports = reports_;
  for (std::size_t i = 0; i < kMethods; ++i) {
    counters.methods.push_back({methods()[i].name, calls_[i]});
  }
  return counters;
}

void MethodServer::fail(const Call& call, std::uint32_t code, const base::String& reason) {
  if (call.header.isResponseRequired()) {
    send_(call.peer, method::encodeFailure(call.header, {proc::kFrameworkBits, code, reason}),
          true);
  }
}

template <class Me>
void MethodServer::succeed(const Call& call, const typename Me::OutTuple& results) {
  if (call.header.isResponseRequired()) {
    send_(call.peer, method::encodeAnswer(*keep<Me>(call.header), results), true);
  }
}

bool MethodServer::updateHeartbeat(const Call& call) {
  serviceorchapi::UpdateSmaHeartbeatMe::InTuple arguments;
  if (!readArguments<serviceorchapi::UpdateSmaHeartbeatMe>(call.stream, arguments)) {
    return false;
  }
  const auto [slot, count, timer] = arguments;
  if (!monitor_.beat(slot, count, timer, call.now)) {
    ++counters_.strayBeats;
  }
  succeed<serviceorchapi::UpdateSmaHeartbeatMe>(call, {});
  return true;
}

bool MethodServer::validateBladeState(const Call& call) {
  using Me = serviceorchapi::ValidateBladeStateMe;
  Me::InTuple arguments;
  if (!readArguments<Me>(call.stream, arguments)) {
    return false;
  }
  const auto& [slot, version, token] = arguments;
  const Verdict verdict = admission_.judge(slot, version, token);
  watch(slot, verdict, call.now);
  counters_.refused += verdict.isRefused ? 1 : 0;
  const std::shared_ptr<const Me> kept = keep<Me>(call.header);
  store_.commit([this, kept, verdict, peer = call.peer](const Result<void>& stored) {
    // Nothing is promised that a crash could take back: the blade comes again instead.
    const bool canTell = stored || verdict.isRefused;
    notDurable_.fetch_add(stored ? 0 : 1, std::memory_order_relaxed);
    if (kept->isResponseRequired()) {
      send_(peer, encodeVerdict(*kept, canTell ? verdict : BladeAdmission::notNow()), true);
    }
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

bool MethodServer::recordOsController(const Call& call) {
  using Me = serverapi::OsControllerVersionMe;
  Me::InTuple arguments;
  if (!readArguments<Me>(call.stream, arguments)) {
    return false;
  }
  const auto& [id, chassis, number, startup, runningVersion, runningImage, runningSize,
               cachedVersion, cachedImage, cachedSize, isValid, kind, otherKind, vendor] =
      arguments;
  Object* slot = chassis_.slot(number);
  if (slot == nullptr) {
    fail(call, kInvalidCode, "there is no slot " + std::to_string(number));
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
  const std::shared_ptr<const Me> kept = keep<Me>(call.header);
  store_.commit([this, kept, peer = call.peer](const Result<void>& stored) {
    notDurable_.fetch_add(stored ? 0 : 1, std::memory_order_relaxed);
    if (!kept->isResponseRequired()) {
      return;
    }
    // No image is offered: the path is empty.
    send_(peer,
          stored ? method::encodeAnswer(*kept, {"", "", 0U})
                 : method::encodeFailure(*kept, {proc::kFrameworkBits, kNotStoredCode,
                                                 "the version could not be stored"}),
          true);
  });
  return true;
}

bool MethodServer::requestClusterState(const Call& call) {
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
  send_(call.peer, method::encodeCall(state), true);
  return true;
}

bool MethodServer::refreshLogControl(const Call& call) {
  sysdebug::RefreshLogControlMe::InTuple none;
  if (!readArguments<sysdebug::RefreshLogControlMe>(call.stream, none)) {
    return false;
  }
  // The level of the engine's own process is the one that the operator sets.
  const auto level = static_cast<std::uint8_t>(core_log::serviceLevel().get());
  succeed<sysdebug::RefreshLogControlMe>(call, {level});
  return true;
}

template <class Me>
bool MethodServer::answerEmpty(const Call& call) {
  typename Me::InTuple arguments;
  if (!readArguments<Me>(call.stream, arguments)) {
    return false;
  }
  succeed<Me>(call, {});
  return true;
}

template <class Me, class Work>
bool MethodServer::record(const Call& call, Work work) {
  typename Me::InTuple arguments;
  if (!readArguments<Me>(call.stream, arguments)) {
    return false;
  }
  if (const Result<void> taken = std::apply(work, arguments); !taken) {
    ++reports_.refused;
    core_log::logPrintf("record", core_log::serviceLevel(), 6, "%s refused: %s", Me::kName.data(),
                        taken.error().text.c_str());
    fail(call, kInvalidCode, taken.error().text);
    return true;
  }
  succeedWhenStored<Me>(call);
  return true;
}

template <class Me>
void MethodServer::succeedWhenStored(const Call& call) {
  const std::shared_ptr<const Me> kept = keep<Me>(call.header);
  store_.commit([this, kept, peer = call.peer](const Result<void>& stored) {
    notDurable_.fetch_add(stored ? 0 : 1, std::memory_order_relaxed);
    if (!kept->isResponseRequired()) {
      return;
    }
    send_(peer,
          stored ? method::encodeAnswer(*kept, {})
                 : method::encodeFailure(*kept, {proc::kFrameworkBits, kNotStoredCode,
                                                 "the report could not be stored"}),
          true);
  });
}

bool MethodServer::updatePlatformInfo(const Call& call) {
  return record<serviceorchapi::UpdatePlatformInfoMe>(
      call,
      [this](std::uint32_t slot, const method::Config& monitor, const method::ConfigSet& disks) {
        return platforms_.record(slot, monitor, disks, wallClock_());
      });
}

bool MethodServer::validateAppInstances(const Call& call) {
  return record<serviceorchapi::ValidateAppInstancesMe>(
      call, [this](std::uint32_t slot, const method::ConfigSet& instances) {
        return instances_.record(slot, instances, wallClock_());
      });
}

bool MethodServer::notifyAppFailure(const Call& call) {
  return record<serviceorchapi::NotifyAppFailureMe>(call, [this](const base::String& identifier) {
    return instances_.noteFailure(identifier, wallClock_());
  });
}

bool MethodServer::updateProgress(const Call& call) {
  return record<serviceorchapi::UpdateProgressMe>(
      call, [this](const base::String& identifier, std::uint8_t command, std::uint32_t percentage,
                   std::uint8_t status, std::uint32_t code, const base::String& errorText) {
        return operations_.noteProgress(identifier, command, percentage, status, code, errorText,
                                        wallClock_());
      });
}

bool MethodServer::updateDiskFormatStatus(const Call& call) {
  return record<serviceorchapi::UpdateDiskFormatStatusMe>(
      call, [this](std::uint32_t slot, std::uint8_t status) {
        return operations_.noteDiskFormat(slot, status, wallClock_());
      });
}

bool MethodServer::updateUpgradeProgress(const Call& call) {
  // The version and the kind of image are fixed words, the chassis is always the first.
  return record<serverapi::OsControllerUpgradeProgressMe>(
      call, [this](std::uint64_t, std::uint32_t, std::uint32_t slot, const base::String&,
                   std::uint32_t percentage, std::uint8_t status, const base::String&) {
        return operations_.noteUpgrade(slot, percentage, status, wallClock_());
      });
}

}  // namespace dme
