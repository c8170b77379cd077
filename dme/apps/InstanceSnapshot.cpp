#include "dme/apps/InstanceSnapshot.h"

#include <algorithm>

#include "dme/apps/InstanceParts.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/BladeMo.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

method::Config alone(const Object& object) {
  return {object.classInfo().id, object.dn(), object.values(), 0};
}

}  // namespace

method::Config instanceSnapshot(ObjectStore& store, const Chassis& chassis,
                                const Object& instance) {
  method::Config snapshot = InstanceParts::read(store, instance);
  const mo::Dn slotDn = instance.dn().parent();
  if (const Object* const slot = store.find(slotDn)) {
    snapshot.set(sd::AppInstanceMo::kSlotId.id, slot->get(sd::SlotMo::kNumber));
  }
  snapshot.addChild(alone(chassis.object()));
  if (const Object* const blade = store.find(slotDn.child(Chassis::kBladeStep))) {
    snapshot.addChild(alone(*blade));
  }
  return snapshot;
}

const method::Config* childOf(const method::Config& config, std::uint32_t classId) {
  const auto found =
      std::find_if(config.children().begin(), config.children().end(),
                   [classId](const method::Config& child) { return child.classId() == classId; });
  return found == config.children().end() ? nullptr : &*found;
}

}  // namespace dme
