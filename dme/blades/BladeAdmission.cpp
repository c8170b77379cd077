#include "dme/blades/BladeAdmission.h"

#include <optional>
#include <string>

#include "dme/base/Text.h"
#include "dme/blades/Token.h"
#include "framework/core_log/Log.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

Verdict refuse(std::uint32_t slotNumber) {
  const std::string slot = "slot " + std::to_string(slotNumber);
  const bool isPossible = slotNumber >= 1 && slotNumber <= base::kHighestSlot;
  const std::string reason =
      isPossible ? slot + " is not part of the chassis"
                 : slot + " is not within 1 and " + std::to_string(base::kHighestSlot);
  return {true, reason, "", false, false};
}

}  // namespace

Verdict BladeAdmission::judge(std::uint32_t slotNumber, const base::String& runningVersion,
                              const base::String& token) {
  Object* slot = chassis_.slotForBlade(slotNumber);
  if (slot == nullptr) {
    return refuse(slotNumber);
  }
  store_.set(*slot, sd::SlotMo::kRunningVersion, cutText(runningVersion));
  store_.set(*slot, sd::SlotMo::kRegistrations, slot->get(sd::SlotMo::kRegistrations) + 1);

  sd::Admission admission = sd::Admission::kForeign;
  const base::String held = slot->get(sd::SlotMo::kToken);
  if (held.empty()) {
    const std::optional<base::String> fresh = makeToken();
    if (!fresh) {
      core_log::logPrintf("judge", core_log::serviceLevel(), 8,
                          "no random numbers for the token of slot %u", slotNumber);
      return notNow();
    }
    store_.set(*slot, sd::SlotMo::kToken, *fresh);
    admission = sd::Admission::kTokenIssued;
  } else if (token.empty() || isSameToken(token.view(), held.view())) {
    admission = sd::Admission::kValid;
  }
  store_.set(*slot, sd::SlotMo::kAdmission, static_cast<std::uint8_t>(admission));
  return {false, "",
          admission == sd::Admission::kForeign ? base::String() : slot->get(sd::SlotMo::kToken),
          admission == sd::Admission::kValid, admission == sd::Admission::kTokenIssued};
}

}  // namespace dme
