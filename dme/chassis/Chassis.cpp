#include "dme/chassis/Chassis.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/SlotMo.h"
#include "model/sd/SystemMo.h"
#include "model/sm/AppInstanceMo.h"

#include <sys/random.h>

#include <string>

namespace dme {

namespace {

// One chassis a system: its place in the tree does not depend on the number it was given.
const mo::Dn kSystemDn("sys");
const mo::Dn kChassisDn("sys/chassis-1");

std::uint64_t makeClusterId() {
  std::uint64_t id = 0;
  // Without random numbers the identifier is just not unique; it authorises nothing.
  if (::getrandom(&id, sizeof id, 0) != static_cast<ssize_t>(sizeof id) || id == 0) {
    id = 1;
  }
  return id;
}

}  // namespace

Chassis::Chassis(ObjectStore& store, const std::optional<base::ChassisDescription>& description)
    : store_(store) {
  system_ = &store_.create<sd::SystemMo>(kSystemDn);
  beginEpoch();
  chassis_ = store_.find(kChassisDn);
  if (chassis_ == nullptr) {
    createChassis(description);
    return;
  }
  for (Object* object : store_.below(kChassisDn)) {
    if (object->is<sd::SlotMo>()) {
      index(*object);
    }
  }
}

bool Chassis::isIn(ObjectStore& store) {
  return store.find(kChassisDn) != nullptr;
}

void Chassis::createChassis(const std::optional<base::ChassisDescription>& description) {
  const base::ChassisDescription given = description.value_or(base::ChassisDescription{});
  chassis_ = &store_.create<sd::ChassisMo>(kChassisDn);
  store_.set(*chassis_, sd::ChassisMo::kId, given.id);
  store_.set(*chassis_, sd::ChassisMo::kLabel, base::String(given.name));
  store_.set(*chassis_, sd::ChassisMo::kModel, base::String(given.model));
  store_.set(*chassis_, sd::ChassisMo::kSerial, base::String(given.serial));
  store_.set(*chassis_, sd::ChassisMo::kIsDescribed, description.has_value());
  for (const base::ChassisDescription::Slot& slot : given.slots) {
    const Object& object = addSlot(slot.number, base::String(slot.name));
    addBlade(object, slot);
    for (const base::ChassisDescription::App& app : slot.apps) {
      addApp(object, app);
    }
  }
}

void Chassis::addBlade(const Object& slot, const base::ChassisDescription::Slot& description) {
  if (description.serial.empty() && description.model.empty()) {
    return;
  }
  Object& blade = store_.create<sd::BladeMo>(slot.dn().child(kBladeStep));
  store_.set(blade, sd::BladeMo::kSerial, base::String(description.serial));
  store_.set(blade, sd::BladeMo::kModel, base::String(description.model));
}

void Chassis::addApp(const Object& slot, const base::ChassisDescription::App& app) {
  using sd::AppInstanceMo;
  using State = base::ChassisDescription::App::State;
  Object& object = store_.create<AppInstanceMo>(slot.dn().child("app-" + mo::escapeStep(app.id)));
  store_.set(object, AppInstanceMo::kAppInstanceId, app.id);
  if (!app.version.empty()) {
    store_.set(object, AppInstanceMo::kExpectedVersion, app.version);
  }
  if (app.state != State::kAny) {
    store_.set(object, AppInstanceMo::kExpectedState,
               app.state == State::kStarted ? sm::kAppActive : sm::kAppInactive);
  }
}

void Chassis::beginEpoch() {
  if (system_->get(sd::SystemMo::kClusterId) == 0) {
    store_.set(*system_, sd::SystemMo::kClusterId, makeClusterId());
  }
  store_.set(*system_, sd::SystemMo::kEpoch, epoch() + 1);
}

Object& Chassis::addSlot(std::uint32_t number, const base::String& name) {
  const mo::Dn dn = kChassisDn.child("slot-" + std::to_string(number));
  Object& slot = store_.create<sd::SlotMo>(dn);
  store_.set(slot, sd::SlotMo::kNumber, number);
  store_.set(slot, sd::SlotMo::kLabel, name);
  index(slot);
  return slot;
}

void Chassis::index(Object& slot) {
  const std::uint32_t number = slot.get(sd::SlotMo::kNumber);
  if (number == 0 || number > base::kHighestSlot) {
    return;  // out of reach for a blade
  }
  if (byNumber_.size() <= number) {
    byNumber_.resize(number + 1);
  }
  byNumber_[number] = &slot;
}

Object* Chassis::slot(std::uint32_t number) const {
  return number < byNumber_.size() ? byNumber_[number] : nullptr;
}

Result<Object*> Chassis::slotOrReason(std::uint32_t number) const {
  if (Object* known = slot(number)) {
    return known;
  }
  return failure("there is no slot " + std::to_string(number));
}

Object* Chassis::slotForBlade(std::uint32_t number) {
  if (Object* known = slot(number)) {
    return known;
  }
  const bool isPossible = number >= 1 && number <= base::kHighestSlot;
  if (!isPossible || chassis_->get(sd::ChassisMo::kIsDescribed)) {
    return nullptr;
  }
  return &addSlot(number, "");
}

std::vector<Object*> Chassis::slots() const {
  std::vector<Object*> present;
  for (Object* slot : byNumber_) {
    if (slot != nullptr) {
      present.push_back(slot);
    }
  }
  return present;
}

std::uint64_t Chassis::clusterId() const {
  return system_->get(sd::SystemMo::kClusterId);
}

std::uint64_t Chassis::epoch() const {
  return system_->get(sd::SystemMo::kEpoch);
}

}  // namespace dme
