#include "dme/running/StageCall.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>

#include "dme/apps/InstanceSnapshot.h"
#include "dme/jobs/JobChecks.h"
#include "framework/method/Wire.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppMo.h"
#include "model/zan_dme/Methods.h"

namespace dme {

namespace {

// The numbers that name the state machines of an instance and of a slot; a service only carries
// them.
constexpr std::uint32_t kInstanceMachine = 1;
constexpr std::uint32_t kSlotMachine = 2;
constexpr std::uint32_t kOneAtATime = 1;
constexpr std::uint8_t kInfo = 1;

template <class Me>
base::OBioStream encodeCallOf(typename Me::InTuple arguments, const proc::Address& gateway,
                              const base::Buffer& cookie) {
  Me me;
  me.in = std::move(arguments);
  me.setAddress(gateway);
  me.setCookie(cookie);
  me.setResponseRequired(true);
  return method::encodeCall(me);
}

std::uint8_t levelNamed(const std::string& word) {
  const auto* const found = std::find(kLogLevels.begin(), kLogLevels.end(), word);
  return found == kLogLevels.end() ? kInfo : static_cast<std::uint8_t>(found - kLogLevels.begin());
}

sd::JobType typeOf(JobVerb verb) {
  switch (verb) {
    case JobVerb::kInstall:
      return sd::JobType::kInstall;
    case JobVerb::kUninstall:
      return sd::JobType::kUninstall;
    case JobVerb::kUpgrade:
      return sd::JobType::kUpgrade;
    case JobVerb::kStart:
      return sd::JobType::kStart;
    case JobVerb::kStop:
      return sd::JobType::kStop;
    default:
      return sd::JobType::kNone;
  }
}

/// The instance with another package.
method::Config withPackage(const method::Config& instance, const std::string& packageFile) {
  method::Config changed(instance.classId(), instance.dn(), instance.values(), instance.flags());
  for (const method::Config& child : instance.children()) {
    method::Config& copy = changed.addChild(child);
    if (copy.classId() == sm::AppMo::kClassId) {
      copy.set(sm::AppMo::kPackageFile.id, base::String(packageFile));
    }
  }
  return changed;
}

}  // namespace

method::Config StageCall::instance(const Job& job) const {
  const Object* const object = store_.find(mo::Dn(job.view.target));
  method::Config snapshot =
      object != nullptr ? instanceSnapshot(store_, chassis_, *object) : method::Config();
  snapshot.set(sd::AppInstanceMo::kJobType.id, static_cast<std::uint8_t>(typeOf(job.view.verb)));
  return job.view.verb == JobVerb::kUpgrade ? withPackage(snapshot, job.view.argument) : snapshot;
}

method::Config StageCall::slot(const Job& job) const {
  const Object* const object = chassis_.slot(job.view.slot);
  method::ValueMap values = object != nullptr ? object->values() : method::ValueMap();
  if (job.view.verb != JobVerb::kFormatDisk) {
    values.erase(sd::SlotMo::kToken.id);  // nobody else needs to know it
  }
  method::Config snapshot(sd::SlotMo::kClassId, mo::Dn(job.view.target), std::move(values), 0);
  if (job.view.verb == JobVerb::kLogLevel) {
    snapshot.set(sd::SlotMo::kSlotCommand.id, sd::kChangePlatformLogLevel);
    snapshot.set(sd::SlotMo::kPlatformLogLevel.id, levelNamed(job.view.argument));
  }
  return snapshot;
}

base::OBioStream StageCall::encode(const Job& job, const proc::Address& gateway,
                                   const base::Buffer& cookie) const {
  const mo::Dn target(job.view.target);
  const std::uint32_t slotNumber = job.view.slot;
  const auto forInstance = [&]<class Me>(std::type_identity<Me>) {
    return encodeCallOf<Me>({kInstanceMachine, kOneAtATime, target, job.view.id, instance(job)},
                            gateway, cookie);
  };
  const auto forSlot = [&]<class Me>(std::type_identity<Me>) {
    return encodeCallOf<Me>({kSlotMachine, kOneAtATime, target, job.view.id, slot(job)}, gateway,
                            cookie);
  };
  using namespace zan_dme;
  using namespace serviceorchapi;
  switch (job.view.verb) {
    case JobVerb::kInstall:
      return forInstance(std::type_identity<FsmSdAppInstanceInstallApplicationSendCommandMe>());
    case JobVerb::kUninstall:
      return forInstance(std::type_identity<FsmSdAppInstanceUninstallApplicationSendCommandMe>());
    case JobVerb::kUpgrade:
      return forInstance(std::type_identity<FsmSdAppInstanceUpgradeApplicationSendCommandMe>());
    case JobVerb::kStart:
      return forInstance(std::type_identity<FsmSdAppInstanceStartApplicationSendCommandMe>());
    case JobVerb::kStop:
      return forInstance(std::type_identity<FsmSdAppInstanceStopApplicationSendCommandMe>());
    case JobVerb::kLogLevel:
      return forSlot(std::type_identity<FsmSdSlotChangePlatformLogLevelSendCommandMe>());
    case JobVerb::kFormatDisk:
      return forSlot(std::type_identity<FsmSdSlotFormatDiskStartDiskFormatMe>());
    case JobVerb::kClearAppLogs:
      return encodeCallOf<ClearApplicationLogDataMe>({base::String(job.view.app), slotNumber},
                                                     gateway, cookie);
    case JobVerb::kClearSystemLogs:
      return encodeCallOf<ClearSystemLogDataMe>({slotNumber}, gateway, cookie);
    case JobVerb::kDeregister:
      return encodeCallOf<DeRegisterBladeMe>({slotNumber}, gateway, cookie);
    case JobVerb::kTimeZone:
      break;
  }
  const Object* const object = chassis_.slot(slotNumber);
  const std::uint8_t level = object != nullptr && object->has(sd::SlotMo::kPlatformLogLevel)
                                 ? object->get(sd::SlotMo::kPlatformLogLevel)
                                 : kInfo;
  return encodeCallOf<UpdateTimeZoneMe>(
      {kSlotMachine, kOneAtATime, TimeSetting::name(), job.view.id,
       time_.snapshot(job.view.argument), slotNumber,
       base::String(kLogLevels.at(std::min<std::size_t>(level, kLogLevels.size() - 1)))},
      gateway, cookie);
}

}  // namespace dme
