#include "dme/reports/AppInstances.h"

#include <algorithm>
#include <utility>

#include "dme/base/Text.h"
#include "dme/chassis/AppPhase.h"
#include "framework/core_log/Log.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/FaultMo.h"
#include "model/sd/SlotMo.h"
#include "model/sm/AppInstanceMo.h"

namespace dme {

namespace {

using Believed = sd::AppInstanceMo;

std::string wordFor(std::uint8_t state) {
  switch (state) {
    case sm::kAppActive:
      return "started";
    case sm::kAppInactive:
      return "stopped";
    default:
      return "in an unknown state";
  }
}

std::optional<std::string> otherState(const Object& believed, const Object& reported) {
  const std::uint8_t expected = believed.get(Believed::kExpectedState);
  const std::uint8_t actual = reported.get(sm::AppInstanceMo::kState);
  if (!believed.has(Believed::kExpectedState) || !reported.has(sm::AppInstanceMo::kState) ||
      expected == actual) {
    return std::nullopt;
  }
  return "expected " + wordFor(expected) + ", is " + wordFor(actual);
}

std::optional<std::string> otherVersion(const Object& believed, const Object& reported) {
  const base::String& expected = believed.get(Believed::kExpectedVersion);
  const base::String& actual = reported.get(sm::AppInstanceMo::kInstalledVersion);
  if (!believed.has(Believed::kExpectedVersion) ||
      !reported.has(sm::AppInstanceMo::kInstalledVersion) || expected == actual) {
    return std::nullopt;
  }
  return "expected version " + expected.str() + ", is " + actual.str();
}

bool isPhase(const Object& believed, AppPhase phase) {
  return believed.get(Believed::kPhase).view() == nameOf(phase);
}

bool isMeantToBeThere(const Object& believed) {
  return !isPhase(believed, AppPhase::kAbsent) && !isPhase(believed, AppPhase::kUnsure);
}

/// For the reason of an answer: any text as a piece of one line.
std::string quoted(const base::String& identifier) {
  return "'" + mo::escapeStep(cutText(identifier, 64).view()) + "'";
}

template <class Me>
void addFailure(ObjectStore& store, Object& instance, std::uint64_t now) {
  store.set(instance, Me::kIsFailed, true);
  store.set(instance, Me::kFailures, instance.get(Me::kFailures) + 1);
  store.set(instance, Me::kFailedAt, now);
}

}  // namespace

struct AppInstances::Report {
  std::map<std::string, sm::AppInstanceMo, std::less<>> byIdentifier;
};

AppInstances::AppInstances(ObjectStore& store, Chassis& chassis, ReportCounters& counters)
    : store_(store), chassis_(chassis), counters_(counters) {
  for (const Object* slot : chassis_.slots()) {
    index(*slot);
  }
}

void AppInstances::index(const Object& slot) {
  for (Object* object : store_.below(slot.dn())) {
    if (object->is<Believed>()) {
      add(slot.get(sd::SlotMo::kNumber), *object);
    } else if (object->is<sm::AppInstanceMo>()) {
      const std::string& identifier = object->get(sm::AppInstanceMo::kAppInstanceId).str();
      slots_[slot.get(sd::SlotMo::kNumber)].reported.emplace(identifier, object);
      reported_[identifier].push_back(object);
    }
  }
}

Result<void> AppInstances::record(std::uint32_t slot, const method::ConfigSet& instances,
                                  std::uint64_t now) {
  const Result<Object*> object = chassis_.slotOrReason(slot);
  if (!object) {
    return tl::unexpected<Error>(object.error());
  }
  Slot& held = slots_[slot];
  replace(**object, held.reported, take(instances), now);
  const std::size_t faults = compare(slot, held, now);
  if (std::exchange(held.faults, faults) != faults) {
    core_log::logPrintf("record", core_log::serviceLevel(), 5,
                        "application instances of slot %u: %zu faults", slot, faults);
  }
  return {};
}

AppInstances::Report AppInstances::take(const method::ConfigSet& instances) {
  Report report;
  for (const method::Config& config : instances.configs()) {
    const method::Value* const value = config.find(sm::AppInstanceMo::kAppInstanceId.id);
    const auto* identifier = value != nullptr ? std::get_if<base::String>(value) : nullptr;
    sm::AppInstanceMo instance;
    if (report.byIdentifier.size() == kMostInstances) {
      ++counters_.surplusInstances;
    } else if (config.classId() != sm::AppInstanceMo::kClassId) {
      ++counters_.unfitObjects;
    } else if (identifier == nullptr || identifier->empty() ||
               identifier->size() > kMostTextBytes ||
               report.byIdentifier.contains(identifier->str())) {
      // Cut, it could be the identifier of another instance.
      ++counters_.unfitInstances;
    } else if (takeReport(config, instance, counters_)) {
      report.byIdentifier.emplace(identifier->str(), instance);
    }
  }
  return report;
}

void AppInstances::replace(const Object& slot, Instances& held, const Report& report,
                           std::uint64_t now) {
  for (auto next = held.begin(); next != held.end();) {
    if (report.byIdentifier.contains(next->first)) {
      ++next;
    } else {
      forget(next->first, *next->second);
      next = held.erase(next);
    }
  }
  for (const auto& [identifier, instance] : report.byIdentifier) {
    Object*& object = held[identifier];
    if (object == nullptr) {
      object = &store_.create<sm::AppInstanceMo>(
          slot.dn().child("reported-" + mo::escapeStep(identifier)));
      reported_[identifier].push_back(object);
    }
    const bool hasChanged = store_.assign(*object, instance, mo::kReportGroups);
    store_.observe(*object, sm::AppInstanceMo::kObservedAt, now, hasChanged);
  }
}

void AppInstances::forget(const std::string& identifier, const Object& instance) {
  const auto all = reported_.find(identifier);
  std::erase(all->second, &instance);
  if (all->second.empty()) {
    reported_.erase(all);
  }
  store_.remove(instance.dn());
}

std::size_t AppInstances::compare(std::uint32_t number, const Slot& slot, std::uint64_t now) {
  std::size_t faults = 0;
  const auto count = [&](const Object& instance, std::string_view kind,
                         const std::optional<std::string>& difference) {
    faults += judge(instance, kind, difference, now) ? 1 : 0;
  };
  const std::optional<std::string> none;
  for (const auto& [identifier, believed] : slot.believed) {
    const auto found = slot.reported.find(identifier);
    const bool isInWork = hasJob_ && hasJob_(number, identifier);
    const Object* const reported =
        found != slot.reported.end() && !isInWork ? found->second : nullptr;
    const bool isMissing = found == slot.reported.end() && !isInWork && isMeantToBeThere(*believed);
    count(*believed, "missing", isMissing ? "expected, not reported" : none);
    count(*believed, "otherState", reported != nullptr ? otherState(*believed, *reported) : none);
    count(*believed, "otherVersion",
          reported != nullptr ? otherVersion(*believed, *reported) : none);
  }
  for (const auto& [identifier, reported] : slot.reported) {
    const auto found = slot.believed.find(identifier);
    const bool isExpected =
        found != slot.believed.end() &&
        (!isPhase(*found->second, AppPhase::kAbsent) || (hasJob_ && hasJob_(number, identifier)));
    count(*reported, "unexpected", isExpected ? none : "reported, not expected");
  }
  return faults;
}

bool AppInstances::judge(const Object& instance, std::string_view kind,
                         const std::optional<std::string>& difference, std::uint64_t now) {
  using sd::FaultMo;
  const mo::Dn dn = instance.dn().child("fault-" + std::string(kind));
  if (!difference) {
    store_.remove(dn);
    return false;
  }
  Object* fault = store_.find(dn);
  const bool isNew = fault == nullptr;
  if (isNew) {
    fault = &store_.create<FaultMo>(dn);
    store_.set(*fault, FaultMo::kKind, base::String(kind));
    store_.set(*fault, FaultMo::kSince, now);
  }
  const bool isOther = fault->get(FaultMo::kDetail) != base::String(*difference);
  store_.set(*fault, FaultMo::kDetail, *difference);
  // The count changes with every report and goes to the disk when the time does.
  const std::uint32_t count = fault->get(FaultMo::kCount) + 1;
  if (store_.observe(*fault, FaultMo::kObservedAt, now, isNew || isOther)) {
    store_.set(*fault, FaultMo::kCount, count);
  } else {
    store_.hold(*fault, FaultMo::kCount, count);
  }
  return true;
}

Result<Object*> AppInstances::find(const base::String& identifier) const {
  if (Object* const instance = believed(identifier.view())) {
    return instance;
  }
  const auto found = reported_.find(identifier.str());
  if (found == reported_.end()) {
    return failure("there is no application instance " + quoted(identifier));
  }
  if (found->second.size() > 1) {
    return failure("application instance " + quoted(identifier) + " is in " +
                   std::to_string(found->second.size()) + " slots");
  }
  return found->second.front();
}

Object* AppInstances::believed(std::string_view identifier) const {
  const auto found = believed_.find(identifier);
  return found == believed_.end() ? nullptr : found->second;
}

std::vector<Object*> AppInstances::believedIn(std::optional<std::uint32_t> slot) const {
  const auto here = slot ? slots_.find(*slot) : slots_.end();
  if (slot && here == slots_.end()) {
    return {};
  }
  std::vector<Object*> found;
  for (const auto& [identifier, instance] : slot ? here->second.believed : believed_) {
    found.push_back(instance);
  }
  return found;
}

const Object* AppInstances::reported(std::uint32_t slot, std::string_view identifier) const {
  const auto here = slots_.find(slot);
  if (here == slots_.end()) {
    return nullptr;
  }
  const auto found = here->second.reported.find(identifier);
  return found == here->second.reported.end() ? nullptr : found->second;
}

void AppInstances::add(std::uint32_t slot, Object& instance) {
  const std::string& identifier = instance.get(Believed::kAppInstanceId).str();
  slots_[slot].believed.emplace(identifier, &instance);
  believed_.emplace(identifier, &instance);
}

void AppInstances::drop(std::uint32_t slot, const Object& instance) {
  const std::string& identifier = instance.get(Believed::kAppInstanceId).str();
  slots_[slot].believed.erase(identifier);
  believed_.erase(identifier);
}

Result<void> AppInstances::noteFailure(const base::String& identifier, std::uint64_t now) {
  const Result<Object*> instance = find(identifier);
  if (!instance) {
    return tl::unexpected<Error>(instance.error());
  }
  if ((*instance)->is<Believed>()) {
    addFailure<Believed>(store_, **instance, now);
  } else {
    addFailure<sm::AppInstanceMo>(store_, **instance, now);
  }
  return {};
}

void AppInstances::clearFailure(Object& instance) {
  if (instance.is<Believed>()) {
    store_.clear(instance, Believed::kIsFailed);
  } else {
    store_.clear(instance, sm::AppInstanceMo::kIsFailed);
  }
}

}  // namespace dme
