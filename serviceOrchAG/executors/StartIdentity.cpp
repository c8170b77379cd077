#include "framework/base/SvcConfigParams.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/NetMgmtBootstrapMo.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

/// Adds a piece of equipment: its serial number, and its model as attribute. False when it has no
/// serial number.
template <class Equipment>
bool addEquipment(StartDocument& start, const base::String& name, const char* failure) {
  const auto* const equipment = start.instance().resolve<Equipment>();
  const Equipment none;
  const Equipment& known = equipment != nullptr ? *equipment : none;
  noxxml::AgElement* const element =
      start.addRequired({name, known.get(Equipment::kSerial), MissingLine::kForInstance, failure});
  if (element == nullptr) {
    return false;
  }
  start.converter().xmlAddAttr("model", known.get(Equipment::kModel), element);
  return true;
}

bool addBlade(StartDocument& start) {
  const auto& platform = base::SvcConfigParams::getInstance();
  if (platform.isQvm2() || platform.isQvm1()) {
    start.frame().log(ExecutorFrame::kNotice,
                      "STARTAPP: blade: ignored because of QVM2/QVM1 platform");
    return true;
  }
  return addEquipment<sd::BladeMo>(start, names().blade,
                                   "STARTAPP:: blade serial number is missing.");
}

}  // namespace

void addGatewayAddresses(StartDocument& start) {
  const auto add = [&start](const base::String& name, const base::String& value) {
    start.addOptional(name, value, start.root());
  };
  if (start.isVdp()) {
    add(names().appAGIPPort, names().appAGSecondAddress);
  } else if (base::SvcConfigParams::getInstance().isQvm1()) {
    add(names().appAGHeartbeatIPPort, names().appAGHeartbeatPath);
    add(names().appAGIPPort, names().appAGPath);
  } else {
    add(names().appAGHeartbeatIPPort, names().appAGHeartbeatAddress);
    add(names().appAGIPPort, names().appAGAddress);
  }
}

bool addIdentity(StartDocument& start) {
  return start.addRequired({names().mgmtBootstrapVersion,
                            start.instance().get(sd::AppInstanceMo::kMgmtBootstrapVersion),
                            MissingLine::kInstanceFirst,
                            "STARTAPP:: mgmtBootstrapVersion is missing."}) != nullptr &&
         addEquipment<sd::ChassisMo>(start, names().chassis,
                                     "STARTAPP:: chassis serial number is missing.") &&
         addBlade(start) &&
         start.addRequired({names().slot, start.slot(), MissingLine::kForInstance,
                            "STARTAPP:: slot id is missing."}) != nullptr;
}

void addNetMgmtBootstraps(StartDocument& start) {
  using Setting = sd::NetMgmtBootstrapMo;
  noxxml::AgElement* const list = start.addGroup(names().netMgmtBootstrapList, start.root());
  for (const mo::Mo* const setting : start.instance().findChild(Setting::kClassId)) {
    noxxml::AgElement* const element = start.converter().xmlAddChildNode(
        names().netMgmtBootstrap, setting->get(Setting::kValue), list);
    start.converter().xmlAddAttr("key", setting->get(Setting::kKey), element);
  }
}

}  // namespace zan_serviceOrchAG
