#pragma once

#include <cstdint>

namespace dme_test {

/// What DurabilityChild writes for each registration that was answered; short enough for an
/// atomic write to a pipe.
struct Acknowledged {
  std::uint32_t slot;
  char token[32];
};

}  // namespace dme_test
