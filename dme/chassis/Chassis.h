#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "dme/base/Result.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/ChassisFile.h"

namespace dme {

/// The chassis, its slots and the application instances that are to be in them, as objects of the
/// store; slots are found by their number. Not thread-safe.
class Chassis {
 public:
  /// Reads what the store holds. An empty store gets a chassis: with the slots of `description`
  /// where there is one, else without slots and open for any. A store that has its chassis keeps
  /// it whatever the description. The changes are staged, not committed; the store outlives
  /// this.
  Chassis(ObjectStore& store, const std::optional<base::ChassisDescription>& description);

  /// True when `store` holds a chassis already, so that no description is needed.
  static bool isIn(ObjectStore& store);

  /// The slot's object, or null. A number out of 1 to base::kHighestSlot is never there.
  Object* slot(std::uint32_t number) const;
  /// The slot's object, or why there is none, for the answer to a call.
  Result<Object*> slotOrReason(std::uint32_t number) const;
  /// The slot's object; one that is not there is made. Null when the number is out of 1 to
  /// base::kHighestSlot, or the chassis was described without this slot.
  Object* slotForBlade(std::uint32_t number);

  /// In no particular order.
  std::vector<Object*> slots() const;

  /// The object of the chassis itself.
  const Object& object() const { return *chassis_; }
  Object& object() { return *chassis_; }
  /// The step of a name from a slot to the blade in it, as equipment; it is there where it was
  /// described.
  static constexpr const char* kBladeStep = "blade";

  /// Made once for each database, never 0.
  std::uint64_t clusterId() const;
  /// Counts the starts of the engine on this database, from 1.
  std::uint64_t epoch() const;

 private:
  void createChassis(const std::optional<base::ChassisDescription>& description);
  void beginEpoch();
  Object& addSlot(std::uint32_t number, const base::String& name);
  void addBlade(const Object& slot, const base::ChassisDescription::Slot& description);
  void addApp(const Object& slot, const base::ChassisDescription::App& app);
  void index(Object& slot);

  ObjectStore& store_;
  Object* system_ = nullptr;
  Object* chassis_ = nullptr;
  std::vector<Object*> byNumber_;  // null where there is no slot; as long as the highest needs
};

}  // namespace dme
