#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/executors/ApplicationPackage.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using Instance = sd::AppInstanceMo;

constexpr ExecutorNames kNames{"executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb",
                               "ZanDmeFsmSdAppInstanceStartApplicationSendCommand", "STARTAPP"};

/// The document below its root. False when the instance cannot be started so, which has been told.
bool addElements(StartDocument& start) {
  if (!addResources(start) || !addDataVnics(start) || !addClusterBootstraps(start) ||
      !addClusterMgmtBootstrap(start) || !addMgmtBootstrap(start) || !addInterfaceList(start)) {
    return false;
  }
  addGatewayAddresses(start);
  if (!addIdentity(start)) {
    return false;
  }
  addNetMgmtBootstraps(start);
  return true;
}

void exchange(ExecutorFrame& frame, const std::string& slot, const std::string& document) {
  frame.log(ExecutorFrame::kDocument, "STARTAPP: xml request = %s", document.c_str());
  if (frame.send(slot, document, words().startAppName)) {
    frame.log(ExecutorFrame::kTrace,
              "STARTAPP: %d : Start message sent to SMA with success request / response for slot "
              "%s.",
              100, slot.c_str());
  } else {
    frame.log(ExecutorFrame::kError,
              "STARTAPP: Start message Request/Response between ServiceOrchAG and SMA failed for "
              "slot %s.",
              slot.c_str());
  }
  frame.leave();
}

}  // namespace

void Svc::executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const instance = frame.target<Instance>(
      me.target(), "STARTAPP : cannot find AppInstanceMo", "STARTAPP:: AppInstanceMo is missing");
  if (instance == nullptr) {
    return;
  }
  frame.log(ExecutorFrame::kTrace, "STARTAPP: %s = %s ", names().appInstanceId.c_str(),
            instance->get(Instance::kAppInstanceId).c_str());
  const auto* const ldu = frame.target<sd::LduMo>(
      instance->resolveSdLdu(), "STARTAPP: cannot find LduMo", "STARTAPP:: LduMo is missing");
  if (ldu == nullptr) {
    return;
  }
  const auto* const app = frame.target<sm::AppMo>(
      firstApplication(*instance), "STARTAPP : cannot find AppMo", "STARTAPP:: AppMo is missing");
  if (app == nullptr) {
    return;
  }
  if (instance->jobType() != sd::JobType::kStart) {
    frame.refuse("STARTAPP: Job type is wrong.");
    return;
  }
  const std::string root = words().startAppName + "Request";
  frame.log(ExecutorFrame::kTrace, "STARTAPP: request type: %s", root.c_str());
  StartDocument start(frame, *instance, *app, *ldu, root);
  if (addElements(start)) {
    exchange(frame, start.slot(), start.text());
  }
}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
