#pragma once

#include <optional>
#include <string>

#include "dme/jobs/JobChecks.h"
#include "framework/method/Config.h"

namespace dme {

/// The first value without which the command is not sent, as people write it ("app.packageFile");
/// nothing when all are there. `instance` is what the command is made of.
std::optional<std::string> missingValue(const method::Config& instance, JobVerb verb,
                                        const CommandNeeds& needs);

}  // namespace dme
