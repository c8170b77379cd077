#pragma once

#include <string>
#include <vector>

#include "agctl/Session.h"

namespace agctl {

/// Something to be ordered from the supervisor that makes a job.
struct Order {
  std::string label;   ///< its target as people call it: "slot 3"
  std::string target;  ///< the path below the interface's root
  Json body = Json::object();
};

/// Orders all of them, one after the other, and does what the options want: shows what would be
/// done, or prints the jobs, or waits for their ends. One that fails does not keep the others from
/// being tried. `question` is empty for what need not be asked.
ExitCode carryOut(Session& session, const std::vector<Order>& orders, const std::string& question);

}  // namespace agctl
