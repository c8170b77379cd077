#include "serviceOrchAG/executors/ExecutorFrame.h"

#include <algorithm>
#include <utility>

#include "serviceOrchAG/bridge/SMAClient.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

constexpr proc::Stimulus::ResultBits kRefusedBits = 1;
constexpr std::uint32_t kRefusedCode = 1003;

/// Masks of what a hook returns.
constexpr std::int32_t kReturnMask = 2;
constexpr std::int32_t kCrashMask = 4;

/// Ends the process as a fault in it would. The compiler must not see that it is one.
void crash() {
  int* volatile nowhere = nullptr;
  *static_cast<volatile int*>(nowhere) = 0;  // NOLINT(clang-analyzer-core.NullDereference)
}

}  // namespace

SendCommand sendCommand = &sendMsg;

noxxml::AgElement* createChildNode(base::String name, base::String value, noxxml::AgElement* parent,
                                   noxxml::XMLConverter& converter) {
  if (value.empty() || value == "0" || value == "::") {
    return nullptr;
  }
  return converter.xmlAddChildNode(name, value, parent);
}

proc::Stimulus::ResultBits statusToResultBits(unsigned int status) {
  switch (status) {
    case 506:
      return 1U << 3;
    case 507:
      return 1U << 11;
    case 508:
      return 1U << 21;
    case 509:
      return 1U << 20;
    case 510:
      return 1U << 26;
    case 511:
    case 514:
      return 1U << 6;
    case 512:
      return 1U << 4;
    default:
      return status >= 576 && status <= 581 ? 1U << 4 : 1U;
  }
}

bool ExecutorFrame::enter() {
  if (names_.hookStem == nullptr) {
    return true;
  }
  if (const Wish wish = runHook("FINJ_PRE_"); wish != Wish::kGoOn) {
    if (wish == Wish::kOwnAction) {
      stage_.setResponseRequired(false);
    }
    return false;
  }
  finj::FinjManager::getInstance().setLocalVar("lBits", &lBits_);
  if (const Wish wish = runHook("FINJ_FSM_FAIL_"); wish != Wish::kGoOn) {
    if (wish == Wish::kOwnAction) {
      stage_.reportFailure(static_cast<proc::Stimulus::ResultBits>(lBits_), 0, "FINJ_INJECTED");
    }
    return false;
  }
  return true;
}

ExecutorFrame::Wish ExecutorFrame::runHook(const char* kind) const {
  const std::int32_t result =
      finj::FinjManager::getInstance().executeActivities(std::string(kind) + names_.hookStem);
  if ((result & kReturnMask) != 0) {
    return Wish::kReturn;
  }
  if ((result & kCrashMask) != 0) {
    crash();
  }
  return result != 0 ? Wish::kOwnAction : Wish::kGoOn;
}

void ExecutorFrame::refuse(const base::String& text) {
  stage_.reportFailure(kRefusedBits, kRefusedCode, text);
}

noxxml::AgElement* ExecutorFrame::addRequired(CommandDocument& document, noxxml::AgElement* parent,
                                              const std::string& slot,
                                              const base::String& appInstanceId,
                                              const RequiredElement& element) {
  noxxml::AgElement* const added =
      createChildNode(element.name, element.value, parent, document.converter());
  if (added == nullptr) {
    logMissing(element, slot, appInstanceId);
    refuse(element.failure);
  }
  return added;
}

bool ExecutorFrame::addRequired(CommandDocument& document, const std::string& slot,
                                const base::String& appInstanceId,
                                std::span<const RequiredElement> elements) {
  return std::all_of(elements.begin(), elements.end(), [&](const RequiredElement& element) {
    return addRequired(document, document.root(), slot, appInstanceId, element) != nullptr;
  });
}

void ExecutorFrame::logMissing(const RequiredElement& element, const std::string& slot,
                               const base::String& appInstanceId) const {
  const char* const name = element.name.c_str();
  const char* const slotTag = names().slot.c_str();
  const char* const instanceTag = names().appInstanceId.c_str();
  switch (element.line) {
    case MissingLine::kSlot:
      log(kError, "%s: %s[%s]: %s : missing", names_.prefix, slotTag, slot.c_str(), name);
      break;
    case MissingLine::kSpaceInstance:
      log(kError, "%s: %s[%s]: %s [%s]: %s : missing", names_.prefix, slotTag, slot.c_str(),
          instanceTag, appInstanceId.c_str(), name);
      break;
    case MissingLine::kInstance:
      log(kError, "%s: %s[%s]: %s[%s]: %s : missing", names_.prefix, slotTag, slot.c_str(),
          instanceTag, appInstanceId.c_str(), name);
      break;
    case MissingLine::kInstanceFirst:
      log(kError, "%s: %s[%s]: %s[%s]: %s : missing", names_.prefix, instanceTag,
          appInstanceId.c_str(), slotTag, slot.c_str(), name);
      break;
    case MissingLine::kForInstance:
      log(kError, "%s: %s: missing for %s[%s].", names_.prefix, name, instanceTag,
          appInstanceId.c_str());
      break;
    case MissingLine::kElement:
      log(kError, "%s: %s: missing", names_.prefix, name);
      break;
  }
}

bool ExecutorFrame::send(const std::string& slot, const std::string& document,
                         const std::string& command) {
  status_ = sendCommand(slot, document, command);
  return status_ == status::kSuccess;
}

void ExecutorFrame::leave() {
  if (status_ != status::kSuccess) {
    stage_.reportFailure(statusToResultBits(status_), status_,
                         std::string(names_.prefix) + ":: " + getStatusCodeText(status_));
  }
  if (names_.hookStem != nullptr && runHook("FINJ_POST_") == Wish::kOwnAction) {
    stage_.setResponseRequired(false);
  }
}

}  // namespace zan_serviceOrchAG
