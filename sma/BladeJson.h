#pragma once

#include <nlohmann/json.hpp>

#include "sma/agent/BladeAgent.h"

namespace sma {

/// What the blade was told to do and what came of it: log level, time zone, logs cleared, commands
/// carried out, faults that wait.
nlohmann::json toldJson(const BladeAgent& blade);
/// The instances and what is under way on them.
nlohmann::json instancesJson(const BladeAgent& blade);
/// The document as one line of text. What a peer sent may be no UTF-8.
std::string toLine(const nlohmann::json& document);

}  // namespace sma
