#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "dme/base/Refusal.h"
#include "dme/base/UnsettledValue.h"
#include "dme/chassis/Chassis.h"

namespace dme {

/// What people write on the chassis, or on a slot and the blade that is to be in it.
struct Equipment {
  std::string name;
  std::string model;   ///< of the chassis, or of the blade
  std::string serial;  ///< of the chassis, or of the blade

  bool operator==(const Equipment&) const = default;
};

/// What is to be written on it anew; the rest stays. An empty text takes one away.
struct EquipmentChange {
  std::optional<std::string> name = {};
  std::optional<std::string> model = {};
  std::optional<std::string> serial = {};

  bool operator==(const EquipmentChange&) const = default;
};

/// A slot by its number, or nothing for the chassis itself.
using EquipmentPlace = std::optional<std::uint32_t>;

/// Names, models and serial numbers of the chassis and of its slots' blades, which commands tell
/// blades, as objects of the store. Not thread-safe. Changes are staged.
class EquipmentSetting {
 public:
  /// Both outlive this.
  EquipmentSetting(ObjectStore& store, Chassis& chassis) : store_(store), chassis_(chassis) {}

  /// The refusal is that of a slot which is not there.
  Granted<Equipment> at(EquipmentPlace place) const;
  /// What it would be. Refused is a text that is not plain, or that stands for nothing in a
  /// command.
  Granted<Equipment> changed(EquipmentPlace place, const EquipmentChange& change) const;
  /// Writes what changed() has granted. settle() is to be told of each such change, in their order.
  void set(EquipmentPlace place, const EquipmentChange& change);
  /// The change was stored, or not: then it is taken back. True when that wrote something.
  bool settle(EquipmentPlace place, const EquipmentChange& change, bool isStored);

 private:
  /// By the fields' order.
  using Unsettled = std::array<UnsettledValue<std::string>, 3>;

  void write(EquipmentPlace place, const Equipment& equipment);

  ObjectStore& store_;
  Chassis& chassis_;
  std::map<EquipmentPlace, Unsettled> unsettled_;  // those of which changes are on their way
};

}  // namespace dme
