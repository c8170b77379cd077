#pragma once

#include <cstdint>
#include <string>

namespace agctl {

/// Milliseconds since the epoch as 2026-05-01 12:00:03Z; nothing for 0, the number for what is no
/// date.
std::string timeText(std::uint64_t milliseconds);

}  // namespace agctl
