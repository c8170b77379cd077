#pragma once

#include <string>

#include "sma/Fleet.h"

namespace sma {

/// Does what a request says and answers it; both are JSON objects. The answer has "ok", and "error"
/// if that is false. Must be called on the fleet's thread, or before it runs.
std::string answerControl(Fleet& fleet, const std::string& request);

/// The answer to a request that was not looked at.
std::string controlError(const std::string& cause);

}  // namespace sma
