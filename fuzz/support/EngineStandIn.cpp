#include "fuzz/support/EngineStandIn.h"

#include <algorithm>
#include <utility>

#include "fuzz/support/Refusal.h"
#include "fuzz/support/StimulusChecks.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace fuzz {
namespace {

using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateBladeStateMe;
using Callbacks = zan_serviceOrchAG::Svc;

constexpr std::uint32_t kServiceId = 26;
constexpr std::uint32_t kFailureCode = 7;
constexpr std::size_t kCookieBytes = 16;
constexpr const char* kHostileToken = "</token><x a=\"&\">\x01\n\x1b[2J\xff\xc2\x9b";

void accept(const base::Buffer& cookie, const base::String& token, bool isValid, bool shouldRetry) {
  ValidateBladeStateMe me;
  me.setCookie(cookie);
  Callbacks::successRspServiceorchapiValidateBladeStateCb(me, token, isValid, shouldRetry);
}

void reject(const base::Buffer& cookie) {
  ValidateBladeStateMe me;
  me.setCookie(cookie);
  Callbacks::failedRspServiceorchapiValidateBladeStateCb(me, kFailureCode, "no such slot");
}

void answerValidation(Manner manner, const base::Buffer& cookie) {
  switch (manner) {
    case Manner::kAccepts:
    case Manner::kRefusesAddress:
      return accept(cookie, "token", true, false);
    case Manner::kRejects:
      return accept(cookie, "", false, false);
    case Manner::kWantsRetry:
      return accept(cookie, "token", false, true);
    case Manner::kFails:
      return reject(cookie);
    case Manner::kAnswersTwice:
      accept(cookie, "token", true, false);
      return reject(cookie);
    case Manner::kHostileToken:
      return accept(cookie, kHostileToken, true, false);
    case Manner::kSilent:
    case Manner::kRefusesToSend:
      return;
  }
}

void answerPlatformInfo(Manner manner, const base::Buffer& cookie) {
  UpdatePlatformInfoMe me;
  me.setCookie(cookie);
  if (manner == Manner::kSilent) {
    return;
  }
  if (manner == Manner::kFails || manner == Manner::kRejects) {
    Callbacks::failedRspServiceorchapiUpdatePlatformInfoCb(me, kFailureCode, "not stored");
    return;
  }
  Callbacks::successRspServiceorchapiUpdatePlatformInfoCb(me);
  if (manner == Manner::kAnswersTwice) {
    Callbacks::failedRspServiceorchapiUpdatePlatformInfoCb(me, kFailureCode, "not stored");
  }
}

}  // namespace

EngineStandIn::EngineStandIn(Manner manner)
    : proc::Svc(kServiceId), manner_(manner), previous_(std::exchange(proc::Svc::instance, this)) {}

EngineStandIn::~EngineStandIn() {
  proc::Svc::instance = previous_;
}

void EngineStandIn::send(std::unique_ptr<proc::Stimulus> stimulus) {
  if (manner_ == Manner::kRefusesToSend) {
    throw Refusal();
  }
  base::OBioStream stream;
  stimulus->encode(stream);
  checkCall(stream.data(), stream.size());
  Call call{stimulus->classId(), stimulus->cookie(),
            std::vector<unsigned char>(stream.data(), stream.data() + stream.size())};
  check(call.cookie.size() == kCookieBytes, "a call carries a cookie");
  check(std::none_of(calls_.begin(), calls_.end(),
                     [&call](const Call& other) { return other.cookie == call.cookie; }),
        "a call carries a cookie of its own");
  calls_.push_back(call);
  answer(call);
}

std::size_t EngineStandIn::calls(std::uint32_t classId) const {
  return static_cast<std::size_t>(
      std::count_if(calls_.begin(), calls_.end(),
                    [classId](const Call& call) { return call.classId == classId; }));
}

void EngineStandIn::answer(const Call& call) const {
  if (call.classId == ValidateBladeStateMe::kClassId) {
    answerValidation(manner_, call.cookie);
  } else if (call.classId == UpdatePlatformInfoMe::kClassId) {
    answerPlatformInfo(manner_, call.cookie);
  }
}

}  // namespace fuzz
