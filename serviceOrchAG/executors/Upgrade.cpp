#include "model/sd/AppInstanceMo.h"
#include "model/sm/AppMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/executors/ApplicationPackage.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using App = sm::AppMo;
using Instance = sd::AppInstanceMo;

constexpr ExecutorNames kNames{"executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb",
                               "ZanDmeFsmSdAppInstanceUpgradeApplicationSendCommand", "UPGRADEAPP"};

/// The document below its root. False when a value is missing, which has been told.
bool addElements(ExecutorFrame& frame, CommandDocument& document, const std::string& slot,
                 const base::String& id, const App& app) {
  const RequiredElement elements[] = {
      {names().appInstanceId, id, MissingLine::kSlot, "UPGRADEAPP:: appInstanceId is missing"},
      {names().url, app.get(App::kPackageFile), MissingLine::kSpaceInstance,
       "UPGRADEAPP:: url is missing"},
      {names().upgradeTimeout, std::to_string(app.get(App::kUpgradeTimeout)),
       MissingLine::kSpaceInstance, "UPGRADEAPP:: upgradeTimeout is missing"},
      {names().reqDataHdd, dataDiskText(app), MissingLine::kInstance,
       "UPGRADEAPP:: reqDataHdd is missing"},
  };
  return frame.addRequired(document, slot, id, elements);
}

void exchange(ExecutorFrame& frame, const std::string& slot, const std::string& document) {
  frame.log(ExecutorFrame::kDocument, "UPGRADEAPP: upgrade request = %s, slot = %s",
            document.c_str(), slot.c_str());
  if (frame.send(slot, document, words().upgradeAppName)) {
    frame.log(ExecutorFrame::kTrace,
              "UPGRADEAPP: %d : Upgrade message sent to SMA with success request / response for "
              "slot %s.",
              100, slot.c_str());
  } else {
    // The doubled word is what people search for.
    frame.log(ExecutorFrame::kError,
              "UPGRADEAPP: Upgrade message message Request/Response between ServiceOrchAG and SMA "
              "failed for slot %s.",
              slot.c_str());
  }
  frame.leave();
}

}  // namespace

void Svc::executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const instance =
      frame.target<Instance>(me.target(), "UPGRADEAPP : cannot find AppInstanceMo",
                             "UPGRADEAPP:: AppInstanceMo is missing");
  if (instance == nullptr) {
    return;
  }
  const base::String& id = instance->get(Instance::kAppInstanceId);
  frame.log(ExecutorFrame::kTrace, "UPGRADEAPP: %s = %s", names().appInstanceId.c_str(),
            id.c_str());
  const auto* const app =
      frame.target<App>(firstApplication(*instance), "UPGRADEAPP : cannot find AppMo",
                        "UPGRADEAPP:: AppMo is missing");
  if (app == nullptr) {
    return;
  }
  frame.log(ExecutorFrame::kTrace, "UPGRADEAPP: FilePath=%s UpgradeTimeout=%lu",
            app->get(App::kPackageFile).c_str(), app->get(App::kUpgradeTimeout));
  if (instance->jobType() != sd::JobType::kUpgrade) {
    frame.refuse("UPGRADEAPP:: Job type is wrong.");
    return;
  }
  const std::string root = words().upgradeAppName + "Request";
  frame.log(ExecutorFrame::kTrace, "UPGRADEAPP: request type: %s", root.c_str());
  const std::string slot = std::to_string(instance->get(Instance::kSlotId));
  CommandDocument document(root);
  if (addElements(frame, document, slot, id, *app)) {
    exchange(frame, slot, document.text());
  }
}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
