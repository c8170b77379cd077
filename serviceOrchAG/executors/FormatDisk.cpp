#include "model/sd/SlotMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using sd::SlotMo;

constexpr ExecutorNames kNames{"executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb",
                               "ZanDmeFsmSdSlotFormatDiskStartDiskFormat", "FORMATDISK"};

void exchange(ExecutorFrame& frame, const std::string& slot, const std::string& document) {
  frame.log(ExecutorFrame::kDocument, "FORMATDISK: format disk request = %s", document.c_str());
  // Neither line names the slot.
  if (frame.send(slot, document, words().formatDiskSubject)) {
    frame.log(ExecutorFrame::kTrace,
              "FORMATDISK: %d : FormatDisk message sent to SMA with success request / response.",
              100);
  } else {
    frame.log(ExecutorFrame::kError, "%s",
              "FORMATDISK: FormatDisk message Request/Response between ServiceOrchAG and SMA "
              "failed.");
  }
  frame.leave();
}

}  // namespace

void Svc::executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe& me, const unsigned int&, const unsigned int&,
    const mo::Dn&, const unsigned long&, const method::Config&) {
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const target = frame.target<SlotMo>(me.target(), "FORMATDISK: cannot find SlotMo",
                                                  "FORMATDISK:: SlotMo is missing");
  if (target == nullptr) {
    return;
  }
  const std::string root = words().formatDiskSubject + "Request";
  frame.log(ExecutorFrame::kTrace, "FORMATDISK: request type: %s", root.c_str());
  const std::string slot = std::to_string(target->get(SlotMo::kNumber));
  frame.log(ExecutorFrame::kTrace, "FORMATDISK: %s = %s ", names().slot.c_str(), slot.c_str());
  CommandDocument document(root);
  if (createChildNode(names().token, target->get(SlotMo::kToken), document.root(),
                      document.converter()) == nullptr) {
    frame.log(ExecutorFrame::kError, "FORMATDISK: %s[%s] : %s : missing", names().slot.c_str(),
              slot.c_str(), names().token.c_str());
    frame.refuse("FORMATDISK:: token is missing");
    return;
  }
  exchange(frame, slot, document.text());
}
void Svc::formatSuccessRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe&) {}
void Svc::formatFailedRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe&) {}

}  // namespace zan_serviceOrchAG
