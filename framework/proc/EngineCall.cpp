#include "framework/proc/EngineCall.h"

#include <memory>
#include <utility>

#include "framework/proc/BinStimulus.h"
#include "framework/proc/Cookie.h"
#include "framework/proc/Svc.h"

namespace proc {

void callEngine(std::uint32_t classId, std::uint32_t intent, bool responseRequired,
                const std::optional<Address>& address) {
  if (Svc::instance == nullptr) {
    return;
  }
  std::unique_ptr<BinStimulus> stimulus = BinStimulus::obtain(classId, intent, Stimulus::kNoBulk);
  base::Buffer cookie;
  makeCookie(cookie);
  stimulus->setCookie(cookie);
  stimulus->setAddress(address.value_or(Address{26, 1, Svc::instance->serviceId(), 0}));
  stimulus->setResponseRequired(responseRequired);
  stimulus->serialize(stimulus->stream());
  Svc::instance->send(std::move(stimulus));
}

}  // namespace proc
