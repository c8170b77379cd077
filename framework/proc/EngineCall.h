#pragma once

#include <cstdint>
#include <optional>

#include "framework/proc/Stimulus.h"

namespace proc {

/// Class ids of the calls without arguments that the framework itself makes. The method objects of
/// the same classes are in model/.
inline constexpr std::uint32_t kClusterStateRequestClass = 446;
inline constexpr std::uint32_t kRefreshLogControlClass = 502;
inline constexpr std::uint32_t kBootstrapClass = 575;
inline constexpr std::uint32_t kBootstrapDoneClass = 576;

/// Sends a call without arguments and without bulk, under a cookie of its own. `address` is this
/// service's own unless given. Without a service in the process it has no effect. Does not block.
void callEngine(std::uint32_t classId, std::uint32_t intent, bool responseRequired,
                const std::optional<Address>& address = std::nullopt);

}  // namespace proc
