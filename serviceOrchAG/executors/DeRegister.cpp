#include <string>

#include "framework/core_log/Log.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {
namespace {

/// Two hexadecimal digits a byte: a cookie is no text.
std::string hex(const base::Buffer& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text += kDigits[bytes.data()[i] >> 4];
    text += kDigits[bytes.data()[i] & 0xF];
  }
  return text;
}

}  // namespace

void Svc::executeServiceorchapiDeRegisterBladeCb(serviceorchapi::DeRegisterBladeMe& me,
                                                 const unsigned int& slot) {
  constexpr int kTrace = 1;
  if (core_log::serviceLevel().admits(kTrace)) {
    core_log::logPrintf("executeServiceorchapiDeRegisterBladeCb", core_log::serviceLevel(), kTrace,
                        "executeServiceorchapiDeRegisterBladeCb, cookie: %s",
                        hex(me.cookie()).c_str());
  }
  MsgHandler::getInstance()->AG_deRegisterSlotId(slot);
}

void Svc::formatSuccessRspServiceorchapiDeRegisterBladeCb(serviceorchapi::DeRegisterBladeMe&) {}
void Svc::formatFailedRspServiceorchapiDeRegisterBladeCb(serviceorchapi::DeRegisterBladeMe&) {}

}  // namespace zan_serviceOrchAG
