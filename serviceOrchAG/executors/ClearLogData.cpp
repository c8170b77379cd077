#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// Both forms send the same command. The agent tells them apart by whether the document names an
// application instance.

namespace zan_serviceOrchAG {

namespace {

constexpr ExecutorNames kApplicationNames{"executeServiceorchapiClearApplicationLogDataCb", nullptr,
                                          "CLEARLOGDATA : APPLICATION"};
constexpr ExecutorNames kSystemNames{"executeServiceorchapiClearSystemLogDataCb", nullptr,
                                     "CLEARLOGDATA : SYSTEM"};

}  // namespace

void Svc::executeServiceorchapiClearApplicationLogDataCb(
    serviceorchapi::ClearApplicationLogDataMe& me, const base::String& appInstanceId,
    const unsigned int& slot) {
  ExecutorFrame frame(kApplicationNames, me);
  frame.log(ExecutorFrame::kTrace, "CLEARLOGDATA : APPLICATION : %s = %s ",
            names().appInstanceId.c_str(), appInstanceId.c_str());
  const std::string root = words().clearLogDataName + "Request";
  frame.log(ExecutorFrame::kTrace, "CLEARLOGDATA : APPLICATION : request type: %s", root.c_str());
  CommandDocument document(root);
  createChildNode(names().appInstanceId, appInstanceId, document.root(), document.converter());
  const std::string text = document.text();
  frame.log(ExecutorFrame::kDocument, "CLEARLOGDATA : APPLICATION : clear Log request = %s",
            text.c_str());
  if (frame.send(std::to_string(slot), text, words().clearLogDataSubject)) {
    frame.log(ExecutorFrame::kTrace,
              "CLEARLOGDATA : APPLICATION : %d : ClearLogData message sent to SMA.", 100);
    return;
  }
  frame.log(ExecutorFrame::kError, "%s",
            "CLEARLOGDATA : APPLICATION : ClearLogData  message is not sent to SMA.");
  frame.refuse("CLEARLOGDATA : APPLICATION :: ClearLogData message is not sent to SMA.");
}
void Svc::formatSuccessRspServiceorchapiClearApplicationLogDataCb(
    serviceorchapi::ClearApplicationLogDataMe&) {}
void Svc::formatFailedRspServiceorchapiClearApplicationLogDataCb(
    serviceorchapi::ClearApplicationLogDataMe&) {}

void Svc::executeServiceorchapiClearSystemLogDataCb(serviceorchapi::ClearSystemLogDataMe& me,
                                                    const unsigned int& slot) {
  ExecutorFrame frame(kSystemNames, me);
  const std::string slotText = std::to_string(slot);
  frame.log(ExecutorFrame::kTrace, "CLEARLOGDATA : SYSTEM : %s = %s ", names().slot.c_str(),
            slotText.c_str());
  const std::string root = words().clearLogDataName + "Request";
  frame.log(ExecutorFrame::kTrace, "CLEARLOGDATA : SYSTEM : request type : %s, slot : %d",
            root.c_str(), static_cast<int>(slot));
  const std::string text = CommandDocument(root).text();
  frame.log(ExecutorFrame::kDocument, "CLEARLOGDATA : SYSTEM : clear Log request = %s, slot = %d",
            text.c_str(), static_cast<int>(slot));
  if (frame.send(slotText, text, words().clearLogDataSubject)) {
    frame.log(ExecutorFrame::kTrace,
              "CLEARLOGDATA : SYSTEM : %d : ClearLogData message sent to SMA.", 100);
    return;
  }
  frame.log(ExecutorFrame::kError, "%s",
            "CLEARLOGDATA : SYSTEM : ClearLogData  message is not sent to SMA.");
  frame.refuse("CLEARLOGDATA : SYSTEM :: ClearLogData message is not sent to SMA.");
}
void Svc::formatSuccessRspServiceorchapiClearSystemLogDataCb(
    serviceorchapi::ClearSystemLogDataMe&) {}
void Svc::formatFailedRspServiceorchapiClearSystemLogDataCb(serviceorchapi::ClearSystemLogDataMe&) {
}

}  // namespace zan_serviceOrchAG
