#include <array>

#include "model/sd/SlotMo.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using sd::SlotMo;

constexpr ExecutorNames kNames{"executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb",
                               "ZanDmeFsmSdSlotChangePlatformLogLevelSendCommand",
                               "PLATFORMLOGLEVELSET"};

/// A number that is no level is taken for "debug".
const base::String& levelText(std::uint8_t level) {
  const std::array levels{&names().debug, &names().info, &names().warning, &names().error,
                          &names().critical};
  return level < levels.size() ? *levels[level] : names().debug;
}

void exchange(ExecutorFrame& frame, const std::string& slot, const std::string& document) {
  frame.log(ExecutorFrame::kDocument,
            "PLATFORMLOGLEVELSET: platformLogLevelSet request = %s, slot = %s", document.c_str(),
            slot.c_str());
  if (frame.send(slot, document, words().platformLogLevelSetSubject)) {
    frame.log(ExecutorFrame::kTrace,
              "PLATFORMLOGLEVELSET: %d : PlatformLogLevelSet message sent to SMA with success "
              "request / response for slot %s.",
              100, slot.c_str());
  } else {
    frame.log(ExecutorFrame::kError,
              "PLATFORMLOGLEVELSET: PlatformLogLevelSet message Request/Response between "
              "ServiceOrchAG and SMA failed for slot %s.",
              slot.c_str());
  }
  frame.leave();
}

}  // namespace

void Svc::executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe& me, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  const auto* const target =
      frame.target<SlotMo>(me.target(), "PLATFORMLOGLEVELSET : cannot find slotMo",
                           "PLATFORMLOGLEVELSET:: slotMo is missing");
  if (target == nullptr) {
    return;
  }
  const std::string slot = std::to_string(target->get(SlotMo::kNumber));
  frame.log(ExecutorFrame::kTrace, "PLATFORMLOGLEVELSET: %s = %s ", names().slot.c_str(),
            slot.c_str());
  if (target->get(SlotMo::kSlotCommand) != sd::kChangePlatformLogLevel) {
    frame.refuse("PLATFORMLOGLEVELSET:: Change platform log command is wrong.");
    return;
  }
  const std::string root = words().platformLogLevelSetName + "Request";
  frame.log(ExecutorFrame::kTrace, "PLATFORMLOGLEVELSET: request type: %s", root.c_str());
  CommandDocument document(root);
  if (createChildNode(names().logLevel, levelText(target->get(SlotMo::kPlatformLogLevel)),
                      document.root(), document.converter()) == nullptr) {
    frame.log(ExecutorFrame::kError, "PLATFORMLOGLEVELSET: %s[%s]:%s : missing",
              names().slot.c_str(), slot.c_str(), names().logLevel.c_str());
    frame.refuse("PLATFORMLOGLEVELSET:: logLevel is missing");
    return;
  }
  exchange(frame, slot, document.text());
}
void Svc::formatSuccessRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
