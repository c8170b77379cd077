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

constexpr ExecutorNames kNames{"executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb",
                               "ZanDmeFsmSdAppInstanceInstallApplicationSendCommand", "INSTALLAPP"};

/// The document below its root. False when a value is missing, which has been told.
bool addElements(ExecutorFrame& frame, CommandDocument& document, const std::string& slot,
                 const base::String& id, const App& app) {
  const RequiredElement elements[] = {
      {names().packageFile, app.get(App::kPackageFile), MissingLine::kSpaceInstance,
       "INSTALLAPP:: packageFile is missing."},
      {names().appInstanceId, id, MissingLine::kSlot, "INSTALLAPP:: appInstanceId is missing."},
      {names().reqDataHdd, dataDiskText(app), MissingLine::kSpaceInstance,
       "INSTALLAPP:: reqDataHdd is missing."},
      {names().installType, getDeployType(app), MissingLine::kSpaceInstance,
       "INSTALLAPP:: installType is missing."},
      {names().installTimeout, std::to_string(app.get(App::kInstallTimeout)),
       MissingLine::kSpaceInstance, "INSTALLAPP:: installTimeout is missing."},
      {names().uninstallTimeout, std::to_string(app.get(App::kUninstallTimeout)),
       MissingLine::kInstance, "INSTALLAPP:: uninstallTimeout is missing."},
  };
  return frame.addRequired(document, slot, id, elements);
}

void exchange(ExecutorFrame& frame, const std::string& slot, const std::string& document) {
  frame.log(ExecutorFrame::kDocument, "INSTALLAPP: xml request = %s", document.c_str());
  if (frame.send(slot, document, words().installAppName)) {
    frame.log(ExecutorFrame::kTrace,
              "INSTALLAPP:  %d : Install message sent to SMA with success request / response for "
              "slot %s.",
              100, slot.c_str());
  } else {
    frame.log(ExecutorFrame::kError,
              "INSTALLAPP: Install message Request/Response between ServiceOrchAG and SMA failed "
              "for slot %s.",
              slot.c_str());
  }
  frame.leave();
}

}  // namespace

void Svc::executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const instance =
      frame.target<Instance>(me.target(), "INSTALLAPP : cannot find AppInstanceMo",
                             "INSTALLAPP:: AppInstanceMo is missing");
  if (instance == nullptr) {
    return;
  }
  const base::String& id = instance->get(Instance::kAppInstanceId);
  frame.log(ExecutorFrame::kTrace, "INSTALLAPP: %s = %s", names().appInstanceId.c_str(),
            id.c_str());
  const auto* const app =
      frame.target<App>(firstApplication(*instance), "INSTALLAPP : cannot find AppMo",
                        "INSTALLAPP:: AppMo is missing");
  if (app == nullptr) {
    return;
  }
  frame.log(ExecutorFrame::kTrace, "INSTALLAPP: FilePath=%s Timeout=%lu",
            app->get(App::kPackageFile).c_str(), app->get(App::kInstallTimeout));
  if (instance->jobType() != sd::JobType::kInstall) {
    frame.refuse("INSTALLAPP:: ServiceOrchAG: Job type is wrong.");
    return;
  }
  const std::string root = words().installAppName + "Request";
  frame.log(ExecutorFrame::kTrace, "INSTALLAPP: command : %s", root.c_str());
  const std::string slot = std::to_string(instance->get(Instance::kSlotId));
  CommandDocument document(root);
  if (addElements(frame, document, slot, id, *app)) {
    exchange(frame, slot, document.text());
  }
}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
