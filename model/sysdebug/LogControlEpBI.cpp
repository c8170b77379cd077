#include "framework/sysdebug/LogControlEpBI.h"

#include <tuple>

#include "framework/core_log/Log.h"
#include "framework/proc/Answer.h"
#include "model/sysdebug/Methods.h"

namespace sysdebug {

namespace {

/// The code with which a method refuses its arguments.
constexpr std::uint32_t kRefused = 1003;

bool apply(std::uint8_t level) {
  const int before = core_log::serviceLevel().get();
  if (!core_log::setLevel(level)) {
    core_log::logPrintf("apply", core_log::serviceLevel(), 6, "log level %d refused",
                        static_cast<int>(level));
    return false;
  }
  if (before != level) {
    core_log::logPrintf("apply", core_log::serviceLevel(), 5, "log level is %d, was %d",
                        static_cast<int>(level), before);
  }
  return true;
}

}  // namespace

void LogControlEpBI::processApply(ApplyLogControlMe& method, const std::uint8_t& level) {
  if (!apply(level)) {
    method.reportFailure(proc::kFrameworkBits, kRefused, "log level is not within 0 and 8");
  }
}

void LogControlEpBI::processRefresh(RefreshLogControlMe& method) {
  std::get<0>(method.out) = static_cast<std::uint8_t>(core_log::serviceLevel().get());
}

void LogControlEpBI::processRefreshResponse(RefreshLogControlMe&, const std::uint8_t& level) {
  apply(level);
}

}  // namespace sysdebug
