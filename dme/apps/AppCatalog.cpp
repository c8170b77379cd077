#include "dme/apps/AppCatalog.h"

#include <algorithm>
#include <string>

#include "dme/apps/InstanceParts.h"
#include "dme/base/Text.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/AppMo.h"

namespace dme {

namespace {

using Instance = sd::AppInstanceMo;
using Reason = Refusal::Reason;

constexpr unsigned kDeepest = 8;

Granted<void> checkIdentifier(const std::string& id) {
  if (!isIdentifier(id)) {
    return tl::unexpected(Refusal{Reason::kBadValue,
                                  oneLine(id) + " is no identifier of an application instance",
                                  "use 1 to 128 letters, digits and the signs . _ : -", 0, "id"});
  }
  return {};
}

}  // namespace

Refusal unknownApp(std::string_view id) {
  return {Refusal::Reason::kUnknownApp, "there is no application instance " + oneLine(id),
          "describe it first, or see which there are"};
}

Refusal unknownSlot(std::uint32_t slot) {
  return {Refusal::Reason::kUnknownSlot, "there is no slot " + std::to_string(slot),
          "name a slot of the chassis"};
}

Granted<Object*> AppCatalog::create(std::uint32_t slot, const mo::Mo& description) {
  const Object* const place = chassis_.slot(slot);
  if (place == nullptr) {
    return tl::unexpected(unknownSlot(slot));
  }
  const std::string id = description.get(Instance::kAppInstanceId).str();
  if (const Granted<void> fit = checkIdentifier(id); !fit) {
    return tl::unexpected(fit.error());
  }
  const method::Config parts = description.toConfig(mo::kAllGroups, nullptr, kDeepest);
  if (const Granted<void> fit = InstanceParts::check(parts); !fit) {
    return tl::unexpected(fit.error());
  }
  if (const Object* const other = find(id)) {
    return tl::unexpected(
        Refusal{Reason::kAlreadyThere,
                "application instance " + id + " is in slot " + std::to_string(slotOf(*other)),
                "choose another identifier, or delete that one first"});
  }
  if (all(slot).size() >= base::kMostAppsPerSlot) {
    return tl::unexpected(Refusal{Reason::kTooMany,
                                  "slot " + std::to_string(slot) + " has " +
                                      std::to_string(base::kMostAppsPerSlot) +
                                      " application instances",
                                  "delete one first"});
  }
  Object& instance = store_.create<Instance>(place->dn().child("app-" + mo::escapeStep(id)));
  store_.set(instance, Instance::kAppInstanceId, id);
  setIfAny(instance, Instance::kExpectedVersion, description);
  setIfAny(instance, Instance::kMgmtBootstrapVersion, description);
  setPhase(instance, AppPhase::kAbsent);
  InstanceParts::store(store_, instance.dn(), parts);
  instances_.add(slot, instance);
  return &instance;
}

void AppCatalog::setIfAny(Object& instance, const mo::Property<base::String>& property,
                          const mo::Mo& description) {
  if (const base::String& text = description.get(property); !text.empty()) {
    store_.set(instance, property, text);
  }
}

Granted<Object*> AppCatalog::mayRemove(std::string_view id) const {
  Object* const instance = find(id);
  if (instance == nullptr) {
    return tl::unexpected(unknownApp(id));
  }
  const AppPhase phase = phaseOf(*instance);
  if (phase != AppPhase::kAbsent && phase != AppPhase::kAssumed) {
    return tl::unexpected(
        Refusal{Reason::kWrongState,
                "application instance " + std::string(id) + " is " + std::string(nameOf(phase)),
                "uninstall it first"});
  }
  return instance;
}

std::vector<Object> AppCatalog::remove(Object& instance) {
  std::vector<Object> removed = store_.copy(instance.dn());
  instances_.drop(slotOf(instance), instance);
  store_.remove(mo::Dn(instance.dn()));
  return removed;
}

void AppCatalog::restore(const std::vector<Object>& removed) {
  store_.restore(removed);
  Object& instance = *store_.find(removed.front().dn());
  instances_.add(slotOf(instance), instance);
}

std::uint32_t AppCatalog::slotOf(const Object& instance) const {
  const Object* const slot = store_.find(instance.dn().parent());
  return slot != nullptr ? slot->get(sd::SlotMo::kNumber) : 0;
}

const Object* AppCatalog::packageOf(const Object& instance) const {
  return store_.find(instance.dn().child("app"));
}

AppView AppCatalog::view(const Object& instance) const {
  AppView view;
  view.id = instance.get(Instance::kAppInstanceId).str();
  view.dn = instance.dn().text().str();
  view.slot = slotOf(instance);
  view.phase = phaseOf(instance);
  view.version = instance.get(Instance::kExpectedVersion).str();
  view.isFailed = instance.get(Instance::kIsFailed);
  if (const Object* const package = packageOf(instance)) {
    view.packageFile = package->get(sm::AppMo::kPackageFile).str();
  }
  return view;
}

AppPhase AppCatalog::phaseOf(const Object& instance) {
  const std::string_view name = instance.get(Instance::kPhase).view();
  const auto* const found = std::find(kAppPhaseNames.begin(), kAppPhaseNames.end(), name);
  return found == kAppPhaseNames.end() ? AppPhase::kAssumed
                                       : static_cast<AppPhase>(found - kAppPhaseNames.begin());
}

void AppCatalog::setPhase(Object& instance, AppPhase phase) {
  if (phase == phaseOf(instance)) {
    return;
  }
  store_.set(instance, Instance::kPhase, base::String(nameOf(phase)));
  if (phase == AppPhase::kStarted || phase == AppPhase::kStopped) {
    store_.set(instance, Instance::kExpectedState,
               phase == AppPhase::kStarted ? sm::kAppActive : sm::kAppInactive);
  } else if (phase == AppPhase::kAbsent || phase == AppPhase::kUnsure) {
    store_.clear(instance, Instance::kExpectedState);
  }
}

void AppCatalog::setPackage(Object& instance, std::string_view packageFile,
                            std::string_view version) {
  if (Object* const package = store_.find(instance.dn().child("app"))) {
    store_.set(*package, sm::AppMo::kPackageFile, base::String(packageFile));
  }
  if (version.empty()) {
    store_.clear(instance, Instance::kExpectedVersion);
  } else {
    store_.set(instance, Instance::kExpectedVersion, base::String(version));
  }
}

}  // namespace dme
