#include "dme/chassis/Equipment.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "dme/base/Text.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

struct Field {
  std::string Equipment::*value;
  std::optional<std::string> EquipmentChange::*change;
};
constexpr std::array kFields{Field{&Equipment::name, &EquipmentChange::name},
                             Field{&Equipment::model, &EquipmentChange::model},
                             Field{&Equipment::serial, &EquipmentChange::serial}};

tl::unexpected<Refusal> unknownPlace(std::uint32_t slot) {
  return tl::unexpected(Refusal{Refusal::Reason::kUnknownSlot,
                                "there is no slot " + std::to_string(slot),
                                "name a slot of the chassis"});
}

Granted<void> check(const char* field, const std::optional<std::string>& text, bool isTold) {
  if (!text || text->empty()) {
    return {};
  }
  if (isPlainText(*text) && !(isTold && standsForNothing(*text))) {
    return {};
  }
  return tl::unexpected(
      Refusal{Refusal::Reason::kBadValue, oneLine(*text) + " is no " + field,
              "give up to 255 bytes without control characters, other than 0 and ::", 0, field});
}

}  // namespace

Granted<Equipment> EquipmentSetting::at(EquipmentPlace place) const {
  if (!place) {
    const Object& chassis = chassis_.object();
    return Equipment{chassis.get(sd::ChassisMo::kLabel).str(),
                     chassis.get(sd::ChassisMo::kModel).str(),
                     chassis.get(sd::ChassisMo::kSerial).str()};
  }
  const Object* const slot = chassis_.slot(*place);
  if (slot == nullptr) {
    return unknownPlace(*place);
  }
  Equipment equipment{slot->get(sd::SlotMo::kLabel).str(), "", ""};
  if (const Object* const blade = store_.find(slot->dn().child(Chassis::kBladeStep))) {
    equipment.model = blade->get(sd::BladeMo::kModel).str();
    equipment.serial = blade->get(sd::BladeMo::kSerial).str();
  }
  return equipment;
}

Granted<Equipment> EquipmentSetting::changed(EquipmentPlace place,
                                             const EquipmentChange& change) const {
  Granted<Equipment> equipment = at(place);
  if (!equipment) {
    return equipment;
  }
  for (const auto& fit : {check("name", change.name, false), check("model", change.model, true),
                          check("serial", change.serial, true)}) {
    if (!fit) {
      return tl::unexpected(fit.error());
    }
  }
  equipment->name = change.name.value_or(equipment->name);
  equipment->model = change.model.value_or(equipment->model);
  equipment->serial = change.serial.value_or(equipment->serial);
  return equipment;
}

void EquipmentSetting::set(EquipmentPlace place, const EquipmentChange& change) {
  Equipment equipment = at(place).value();
  Unsettled& unsettled = unsettled_[place];
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    std::string& shown = equipment.*kFields.at(i).value;
    if (const std::optional<std::string>& wanted = change.*kFields.at(i).change) {
      unsettled.at(i).change(shown, *wanted);
      shown = *wanted;
    }
  }
  write(place, equipment);
}

bool EquipmentSetting::settle(EquipmentPlace place, const EquipmentChange& change, bool isStored) {
  Equipment equipment = at(place).value();
  Unsettled& unsettled = unsettled_.at(place);
  bool isTakenBack = false;
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    if (!(change.*kFields.at(i).change)) {
      continue;
    }
    if (std::optional<std::string> stored = unsettled.at(i).settle(isStored)) {
      equipment.*kFields.at(i).value = std::move(*stored);
      isTakenBack = true;
    }
  }
  if (std::all_of(unsettled.begin(), unsettled.end(),
                  [](const auto& field) { return field.isSettled(); })) {
    unsettled_.erase(place);
  }
  if (isTakenBack) {
    write(place, equipment);
  }
  return isTakenBack;
}

void EquipmentSetting::write(EquipmentPlace place, const Equipment& equipment) {
  if (!place) {
    Object& chassis = chassis_.object();
    store_.set(chassis, sd::ChassisMo::kLabel, base::String(equipment.name));
    store_.set(chassis, sd::ChassisMo::kModel, base::String(equipment.model));
    store_.set(chassis, sd::ChassisMo::kSerial, base::String(equipment.serial));
    return;
  }
  Object& slot = *chassis_.slot(*place);
  store_.set(slot, sd::SlotMo::kLabel, base::String(equipment.name));
  const mo::Dn blade = slot.dn().child(Chassis::kBladeStep);
  if (store_.find(blade) == nullptr && equipment.model.empty() && equipment.serial.empty()) {
    return;
  }
  Object& object = store_.create<sd::BladeMo>(blade);
  store_.set(object, sd::BladeMo::kModel, base::String(equipment.model));
  store_.set(object, sd::BladeMo::kSerial, base::String(equipment.serial));
}

}  // namespace dme
