#include "dme/link/ReportMethods.h"

#include <string>
#include <tuple>
#include <utility>

#include "framework/core_log/Log.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"

namespace dme {

namespace {

/// A report's first argument names the slot, or else something that cannot be told apart from what
/// a peer makes up.
std::uint32_t slotOf(std::uint32_t slot) {
  return slot;
}
template <class Other>
std::uint32_t slotOf(const Other& /*argument*/) {
  return 0;
}

}  // namespace

ReportMethods::ReportMethods(ObjectStore& store, Chassis& chassis, Answers& answers,
                             core_log::LineBudget& lines, WallClock wallClock)
    : answers_(answers),
      lines_(lines),
      wallClock_(std::move(wallClock)),
      platforms_(store, chassis, counters_),
      instances_(store, chassis, counters_),
      operations_(store, chassis, instances_, counters_) {}

void ReportMethods::listen(BladeEvents& events) {
  events_ = &events;
  operations_.listen(events);
}

template <class Me, class Work>
bool ReportMethods::record(const MethodCall& call, Work work) {
  typename Me::InTuple arguments;
  if (!readArguments<Me>(call, arguments)) {
    return false;
  }
  if (const Result<void> taken = std::apply(work, arguments); !taken) {
    ++counters_.refused;
    if (lines_.admits(std::string(Me::kName) + " refused", slotOf(std::get<0>(arguments)),
                      call.now)) {
      core_log::logPrintf("record", core_log::serviceLevel(), 6, "%s refused: %s", Me::kName.data(),
                          taken.error().text.c_str());
    }
    answers_.fail(call, Answers::kInvalidCode, taken.error().text);
    return true;
  }
  answers_.succeedWhenStored<Me>(call, {}, "the report could not be stored");
  return true;
}

bool ReportMethods::updatePlatformInfo(const MethodCall& call) {
  return record<serviceorchapi::UpdatePlatformInfoMe>(
      call,
      [this](std::uint32_t slot, const method::Config& monitor, const method::ConfigSet& disks) {
        return platforms_.record(slot, monitor, disks, wallClock_());
      });
}

bool ReportMethods::validateAppInstances(const MethodCall& call) {
  return record<serviceorchapi::ValidateAppInstancesMe>(
      call, [this](std::uint32_t slot, const method::ConfigSet& instances) {
        return instances_.record(slot, instances, wallClock_()).map([&] {
          if (events_ != nullptr) {
            events_->instancesReported(slot);
          }
        });
      });
}

bool ReportMethods::notifyAppFailure(const MethodCall& call) {
  return record<serviceorchapi::NotifyAppFailureMe>(call, [this](const base::String& identifier) {
    return instances_.noteFailure(identifier, wallClock_());
  });
}

bool ReportMethods::updateProgress(const MethodCall& call) {
  return record<serviceorchapi::UpdateProgressMe>(
      call, [this](const base::String& identifier, std::uint8_t command, std::uint32_t percentage,
                   std::uint8_t status, std::uint32_t code, const base::String& errorText) {
        return operations_.noteProgress(identifier, command, percentage, status, code, errorText,
                                        wallClock_());
      });
}

bool ReportMethods::updateDiskFormatStatus(const MethodCall& call) {
  return record<serviceorchapi::UpdateDiskFormatStatusMe>(
      call, [this](std::uint32_t slot, std::uint8_t status) {
        return operations_.noteDiskFormat(slot, status, wallClock_());
      });
}

bool ReportMethods::updateUpgradeProgress(const MethodCall& call) {
  // The version and the kind of image are fixed words, the chassis is always the first.
  return record<serverapi::OsControllerUpgradeProgressMe>(
      call, [this](std::uint64_t, std::uint32_t, std::uint32_t slot, const base::String&,
                   std::uint32_t percentage, std::uint8_t status, const base::String&) {
        return operations_.noteUpgrade(slot, percentage, status, wallClock_());
      });
}

}  // namespace dme
