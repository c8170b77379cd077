#include "sma/tasks/CommandFault.h"

#include <algorithm>

namespace sma {

std::string_view faultName(FaultKind kind) {
  return std::find_if(kFaultNames.begin(), kFaultNames.end(),
                      [kind](const FaultName& each) { return each.kind == kind; })
      ->name;
}

std::optional<CommandFault> CommandFaults::take(std::string_view command) {
  const auto found =
      std::find_if(faults_.begin(), faults_.end(), [command](const CommandFault& each) {
        return each.command.empty() || each.command == command;
      });
  if (found == faults_.end()) {
    return std::nullopt;
  }
  CommandFault fault = *found;
  if (fault.times > 0 && --found->times == 0) {
    faults_.erase(found);
  }
  return fault;
}

}  // namespace sma
