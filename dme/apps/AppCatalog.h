#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "dme/apps/AppView.h"
#include "dme/base/Refusal.h"
#include "dme/chassis/Chassis.h"
#include "dme/reports/AppInstances.h"
#include "dme/store/ObjectStore.h"
#include "framework/mo/Mo.h"

namespace dme {

/// The application instances that people describe, and how far each has come.
///
/// Not thread-safe. Changes are staged in the store, for one transaction.
class AppCatalog {
 public:
  /// Everything outlives this.
  AppCatalog(ObjectStore& store, Chassis& chassis, AppInstances& instances)
      : store_(store), chassis_(chassis), instances_(instances) {}

  /// Makes the instance as described: an sd::AppInstanceMo with what belongs to it attached. It is
  /// absent.
  Granted<Object*> create(std::uint32_t slot, const mo::Mo& description);
  /// Whether the instance's description can go: nothing of it must be on a blade.
  Granted<Object*> mayRemove(std::string_view id) const;
  /// The instance as it was, with all below it.
  std::vector<Object> remove(Object& instance);
  /// Takes a removal back.
  void restore(const std::vector<Object>& removed);

  /// Null when there is none.
  Object* find(std::string_view id) const { return instances_.believed(id); }
  std::vector<Object*> all(std::optional<std::uint32_t> slot) const {
    return instances_.believedIn(slot);
  }
  std::uint32_t slotOf(const Object& instance) const;
  /// Without a job.
  AppView view(const Object& instance) const;

  static AppPhase phaseOf(const Object& instance);
  /// What is expected of the instance follows its phase.
  void setPhase(Object& instance, AppPhase phase);
  /// The instance is made of another package now; an empty version is any.
  void setPackage(Object& instance, std::string_view packageFile, std::string_view version);
  /// The part "app" of the instance; null when it has none.
  const Object* packageOf(const Object& instance) const;

 private:
  void setIfAny(Object& instance, const mo::Property<base::String>& property,
                const mo::Mo& description);

  ObjectStore& store_;
  Chassis& chassis_;
  AppInstances& instances_;
};

/// What is said of an identifier that no instance has.
Refusal unknownApp(std::string_view id);
/// What is said of a number that no slot has.
Refusal unknownSlot(std::uint32_t slot);

}  // namespace dme
