#include "sma/base/Listening.h"

#include <sys/resource.h>

#include <algorithm>
#include <fstream>

namespace sma {
namespace {

/// A socket towards the gateway and its connection; the blade's own end point, what it listens
/// with, and the gateway's connection to it.
constexpr std::size_t kDescriptorsOfBlade = 5;
/// The process's own.
constexpr std::size_t kDescriptorsBesides = 64;

}  // namespace

ListenRoom ListenRoom::ofSystem() {
  ListenRoom room;
  std::ifstream range("/proc/sys/net/ipv4/ip_local_port_range");
  if (std::uint32_t first = 0; range >> first) {
    room.firstEphemeral = first;
  }
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    room.descriptors = limit.rlim_cur;
  }
  return room;
}

std::string whyNotListening(const std::vector<std::uint32_t>& slots, std::uint32_t base,
                            const ListenRoom& room) {
  if (slots.empty()) {
    return {};
  }
  const std::uint32_t last = *std::max_element(slots.begin(), slots.end());
  if (base + last >= room.firstEphemeral) {
    return "the blade in slot " + std::to_string(last) + " would listen on port " +
           std::to_string(base + last) + ", but from port " + std::to_string(room.firstEphemeral) +
           " on the system gives ports to connections of its own choice; choose a smaller "
           "--listen-base, or --no-listen";
  }
  const std::size_t wanted = kDescriptorsOfBlade * slots.size() + kDescriptorsBesides;
  if (wanted > room.descriptors) {
    return std::to_string(slots.size()) + " blades that listen take " + std::to_string(wanted) +
           " file descriptors, but this process may have " + std::to_string(room.descriptors) +
           "; simulate fewer blades in a process, raise the limit (ulimit -Hn), or use --no-listen";
  }
  return {};
}

}  // namespace sma
