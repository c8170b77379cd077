#pragma once

#include <string>

#include "agctl/Session.h"

namespace agctl {

/// Success when --yes was given or somebody at a terminal says so. The failure is for the user.
/// Blocks on the user.
Outcome<void> confirm(const Session& session, const std::string& question);

}  // namespace agctl
