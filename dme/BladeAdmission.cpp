#include "dme/BladeAdmission.h"

#include <optional>
#include <string>

#include "dme/Token.h"
#include "framework/core_log/Log.h"

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
  store_.set(*slot, slot_object::kRunningVersion,
             base::String(runningVersion.view().substr(0, kMostVersionBytes)));
  store_.set(*slot, slot_object::kRegistrations, slot->get(slot_object::kRegistrations) + 1);

  Admission admission = Admission::kForeign;
  const base::String held = slot->get(slot_object::kToken);
  if (held.empty()) {
    const std::optional<base::String> fresh = makeToken();
    if (!fresh) {
      core_log::logPrintf("judge", core_log::serviceLevel(), 8,
                          "no random numbers for the token of slot %u", slotNumber);
      return notNow();
    }
    store_.set(*slot, slot_object::kToken, *fresh);
    admission = Admission::kTokenIssued;
  } else if (token.empty() || isSameToken(token.view(), held.view())) {
    admission = Admission::kValid;
  }
  store_.set(*slot, slot_object::kAdmission, static_cast<std::uint8_t>(admission));
  return {false, "",
          admission == Admission::kForeign ? base::String() : slot->get(slot_object::kToken),
          admission == Admission::kValid, admission == Admission::kTokenIssued};
}

}  // namespace dme
