#pragma once

#include <cstdint>

namespace msglyr {

// What the request workers' sockets have seen since the process started. A peer that sends a
// single frame beyond Bounds::maxMessageBytes is cut off inside the transport before the layer
// sees anything of it: it shows up as a dropped peer, not as a refused message.
struct Counters {
  std::uint64_t bound = 0;          // listening sockets bound, for workers to share
  std::uint64_t received = 0;       // requests handed to a worker
  std::uint64_t refusedParts = 0;   // requests dropped for more than Bounds::maxParts parts
  std::uint64_t refusedBytes = 0;   // requests dropped for more than Bounds::maxMessageBytes
  std::uint64_t sent = 0;           // replies taken over by the transport
  std::uint64_t sendFailed = 0;     // replies whose peer was gone or did not read
  std::uint64_t receiveErrors = 0;  // failures of the transport itself while receiving
};

// A snapshot; each figure is exact, together they need not be of one instant. Any thread.
Counters counters();

}  // namespace msglyr
