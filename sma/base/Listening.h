#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sma {

/// What the system leaves for blades that listen.
struct ListenRoom {
  std::uint32_t firstEphemeral = 32768;  ///< port from which on the system picks ports itself
  std::size_t descriptors = 1024;        ///< that this process may have

  /// The room that there is now. A setting that cannot be read counts as its usual value.
  static ListenRoom ofSystem();
};

/// By the ports below it, blade N listens on this port plus N unless told otherwise.
inline constexpr std::uint32_t kListenBase = 20'000;

/// Why blades in these slots cannot listen on `base` plus their slot's number, and what to do about
/// it; empty when they can.
std::string whyNotListening(const std::vector<std::uint32_t>& slots, std::uint32_t base,
                            const ListenRoom& room);

}  // namespace sma
