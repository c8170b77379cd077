#include "supervisor/admin/FaultResource.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <limits>
#include <string_view>

#include "framework/core_log/Log.h"
#include "framework/finj/FinjManager.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

using finj::Activity;
using finj::FinjManager;

// What an activity returns to its hook. The first two mean the same everywhere. Another value
// means that the hook fails the command, or that nobody answers the engine.
constexpr std::int32_t kReturn = 2;
constexpr std::int32_t kCrash = 4;
constexpr std::int32_t kOther = 1;

constexpr std::string_view kFailureHook = "FINJ_FSM_FAIL_";
constexpr std::string_view kHookKinds[] = {"FINJ_PRE_", kFailureHook, "FINJ_POST_"};
/// The variable from which a failure hook takes the result bits.
constexpr const char* kResultBits = "lBits";

/// The commands that have hooks.
constexpr std::string_view kCommands[] = {
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe::kName,
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe::kName,
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe::kName,
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe::kName,
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe::kName,
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe::kName,
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe::kName,
    serviceorchapi::UpdateTimeZoneMe::kName,
};

constexpr std::uint64_t kMostDelayMs = 3'600'000;
constexpr std::uint64_t kMostTimes = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kMostBits = std::numeric_limits<std::int32_t>::max();

/// "ZanDmeFsmX" of the method "zan_dme::FsmX".
std::string stemOf(std::string_view method) {
  std::string stem;
  bool isFirst = true;
  for (const char c : method) {
    const bool isSeparator = c == '_' || c == ':';
    if (!isSeparator) {
      stem += isFirst ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    isFirst = isSeparator;
  }
  return stem;
}

const std::vector<std::string>& hooks() {
  static const std::vector<std::string> kHooks = [] {
    std::vector<std::string> names;
    for (const std::string_view command : kCommands) {
      for (const std::string_view kind : kHookKinds) {
        names.push_back(std::string(kind) + stemOf(command));
      }
    }
    return names;
  }();
  return kHooks;
}

const std::string& hookStep(const Request& request) {
  const std::string& name = request.parameters.front();
  const auto hook = std::ranges::find(hooks(), name);
  if (hook == hooks().end()) {
    throw ProblemError({404, "unknown-hook", "There is no hook of this name",
                        "no hook is named '" + name + "'", "see the hooks at /api/v1/faults"});
  }
  return *hook;
}

bool isFailureHook(std::string_view hook) {
  return hook.starts_with(kFailureHook);
}

std::string_view actionOf(const std::string& hook, const Activity& activity) {
  if ((activity.result & kReturn) != 0) {
    return "return";
  }
  if ((activity.result & kCrash) != 0) {
    return "crash";
  }
  if (activity.result == 0) {
    return "delay";
  }
  return isFailureHook(hook) ? "fail" : "own";
}

Json toJson(const std::string& hook, const Activity& activity) {
  Json json{{"hook", hook}, {"action", actionOf(hook, activity)}};
  if (const auto bits = activity.assignments.find(kResultBits);
      bits != activity.assignments.end()) {
    json["lBits"] = bits->second;
  }
  if (activity.delay.count() != 0) {
    json["delayMs"] = activity.delay.count();
  }
  if (activity.times != 0) {
    json["times"] = activity.times;
  }
  return json;
}

std::int32_t resultOf(const std::string& action, const std::string& hook) {
  if (action == "return") {
    return kReturn;
  }
  if (action == "crash") {
    return kCrash;
  }
  if (action == "delay") {
    return 0;
  }
  if (action == (isFailureHook(hook) ? "fail" : "own")) {
    return kOther;
  }
  throw ProblemError(badValue("action", "'action' is '" + action + "'",
                              isFailureHook(hook) ? "give return, crash, fail or delay here"
                                                  : "give return, crash, own or delay here"));
}

Activity activityIn(const Json& body, const std::string& hook) {
  Fields fields(body);
  Activity activity;
  const std::string action = fields.requiredText("action");
  activity.result = resultOf(action, hook);
  const auto delay = fields.number("delayMs", 0, kMostDelayMs);
  activity.delay = std::chrono::milliseconds(delay.value_or(0));
  activity.times = static_cast<unsigned>(fields.number("times", 0, kMostTimes).value_or(0));
  if (action == "fail") {
    activity.assignments[kResultBits] =
        static_cast<std::int32_t>(fields.number("lBits", 0, kMostBits).value_or(1));
  }
  fields.end();
  if (action == "delay" && delay.value_or(0) == 0) {
    throw ProblemError(badValue("delayMs", "'delayMs' is missing",
                                "give the milliseconds for which the command is held"));
  }
  return activity;
}

}  // namespace

Response getFaults(const Context& /*context*/, const Request& /*request*/) {
  Json faults = Json::array();
  for (const auto& [hook, activity] : FinjManager::getInstance().activities()) {
    faults.push_back(toJson(hook, activity));
  }
  return jsonResponse({{"hooks", hooks()}, {"faults", std::move(faults)}});
}

Response putFault(const Context& /*context*/, const Request& request) {
  const std::string& hook = hookStep(request);
  const Activity activity = activityIn(bodyOf(request), hook);
  FinjManager::getInstance().setActivity(hook, activity);
  const Json json = toJson(hook, activity);
  core_log::logPrintf("putFault", core_log::serviceLevel(), 5, "admin: fault is set: %s",
                      render(json).c_str());
  return jsonResponse(json);
}

Response deleteFault(const Context& /*context*/, const Request& request) {
  const std::string& hook = hookStep(request);
  if (FinjManager::getInstance().removeActivity(hook)) {
    core_log::logPrintf("deleteFault", core_log::serviceLevel(), 5, "admin: no fault any more: %s",
                        hook.c_str());
  }
  return noContent();
}

Response deleteFaults(const Context& /*context*/, const Request& /*request*/) {
  FinjManager::getInstance().clear();
  core_log::logPrintf("deleteFaults", core_log::serviceLevel(), 5, "admin: no faults any more");
  return noContent();
}

}  // namespace supervisor::admin
