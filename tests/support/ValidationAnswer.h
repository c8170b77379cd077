#pragma once

#include <string>

#include "framework/base/Buffer.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/RecordingSvc.h"

namespace test_support {

/// The engine's answer to the validation of a blade under this cookie arrives.
inline void answerValidation(const base::Buffer& cookie, bool isValid, bool shouldRetry,
                             const std::string& token) {
  serviceorchapi::ValidateBladeStateMe me;
  me.setCookie(cookie);
  zan_serviceOrchAG::Svc::successRspServiceorchapiValidateBladeStateCb(me, token, isValid,
                                                                       shouldRetry);
}

/// The engine's refusal of that call arrives.
inline void rejectValidation(const base::Buffer& cookie) {
  serviceorchapi::ValidateBladeStateMe me;
  me.setCookie(cookie);
  zan_serviceOrchAG::Svc::failedRspServiceorchapiValidateBladeStateCb(me, 7, "no such slot");
}

/// The engine answers every validation from now on like this, at once.
inline void answerValidations(RecordingSvc& service, bool isValid, bool shouldRetry,
                              const std::string& token) {
  service.onSend([isValid, shouldRetry, token](const RecordingSvc::Sent& call) {
    if (call.classId == serviceorchapi::ValidateBladeStateMe::kClassId) {
      answerValidation(call.cookie, isValid, shouldRetry, token);
    }
  });
}

/// The engine refuses every validation from now on, at once.
inline void rejectValidations(RecordingSvc& service) {
  service.onSend([](const RecordingSvc::Sent& call) {
    if (call.classId == serviceorchapi::ValidateBladeStateMe::kClassId) {
      rejectValidation(call.cookie);
    }
  });
}

}  // namespace test_support
