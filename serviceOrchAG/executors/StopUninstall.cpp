#include "model/sd/AppInstanceMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using Instance = sd::AppInstanceMo;
using core_log::FormatString;

/// The two commands are one but for their names and texts.
struct Texts {
  ExecutorNames names;
  sd::JobType job;
  const std::string& command;  // and the root's stem
  const char* noTarget;
  const char* noTargetFailure;
  FormatString<const char*, const char*> instanceTrace;
  const char* wrongJob;
  FormatString<const char*> rootTrace;
  const char* noInstanceId;
  FormatString<const char*, const char*> documentTrace;
  FormatString<int, const char*> sent;
  FormatString<const char*> notSent;
};

template <class Me>
void run(const Texts& texts, Me& me) {
  ExecutorFrame frame(texts.names, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const instance =
      frame.target<Instance>(me.target(), texts.noTarget, texts.noTargetFailure);
  if (instance == nullptr) {
    return;
  }
  const base::String& id = instance->get(Instance::kAppInstanceId);
  frame.log(ExecutorFrame::kTrace, texts.instanceTrace, names().appInstanceId.c_str(), id.c_str());
  if (instance->jobType() != texts.job) {
    frame.refuse(texts.wrongJob);
    return;
  }
  const std::string root = texts.command + "Request";
  frame.log(ExecutorFrame::kTrace, texts.rootTrace, root.c_str());
  const std::string slot = std::to_string(instance->get(Instance::kSlotId));
  CommandDocument document(root);
  const RequiredElement elements[] = {
      {names().appInstanceId, id, MissingLine::kSlot, texts.noInstanceId}};
  if (!frame.addRequired(document, slot, id, elements)) {
    return;
  }
  const std::string text = document.text();
  frame.log(ExecutorFrame::kDocument, texts.documentTrace, text.c_str(), slot.c_str());
  if (frame.send(slot, text, texts.command)) {
    frame.log(ExecutorFrame::kTrace, texts.sent, 100, slot.c_str());
  } else {
    frame.log(ExecutorFrame::kError, texts.notSent, slot.c_str());
  }
  frame.leave();
}

const Texts& stopTexts() {
  static const Texts& texts = *new Texts{
      {"executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceStopApplicationSendCommand", "STOPAPP"},
      sd::JobType::kStop,
      words().stopAppName,
      "STOPAPP : cannot find AppInstanceMo",
      "STOPAPP:: AppInstanceMo is missing",
      "STOPAPP: %s = %s ",
      "STOPAPP:: Job type is wrong.",
      "STOPAPP: request type: %s",
      "STOPAPP:: appInstanceId is missing",
      "STOPAPP: stop request = %s, slot = %s",
      "STOPAPP: %d : Stop message sent to SMA with success request / response for slot %s.",
      "STOPAPP: Stop message Request/Response between ServiceOrchAG and SMA failed for slot %s."};
  return texts;
}

const Texts& uninstallTexts() {
  static const Texts& texts = *new Texts{
      {"executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb",
       "ZanDmeFsmSdAppInstanceUninstallApplicationSendCommand", "UNINSTALLAPP"},
      sd::JobType::kUninstall,
      words().uninstallAppName,
      "UNINSTALLAPP : cannot find AppInstanceMo",
      "UNINSTALLAPP:: AppInstanceMo is missing",
      "UNINSTALLAPP: %s = %s ",
      "UNINSTALLAPP:: Job type is wrong.",
      "UNINSTALLAPP: request type: %s",
      "UNINSTALLAPP:: appInstanceId is missing",
      "UNINSTALLAPP: uninstall request = %s, slot = %s",
      "UNINSTALLAPP: %d : Uninstall message sent to SMA with success request / response for slot "
      "%s.",
      "UNINSTALLAPP: Uninstall message Request/Response between ServiceOrchAG and SMA failed for "
      "slot %s."};
  return texts;
}

}  // namespace

void Svc::executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  run(stopTexts(), me);
}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe&) {}

void Svc::executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  run(uninstallTexts(), me);
}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
