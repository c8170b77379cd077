#pragma once

#include <chrono>
#include <cstdint>

#include "sma/base/Random.h"

namespace sma {

/// Growing pauses between attempts, each drawn at random from the upper half of its span, so that
/// blades that failed together do not come back together. Not thread-safe.
class Backoff {
 public:
  using Duration = std::chrono::milliseconds;

  /// The first pause is at most `first`, each later one at most twice the one before, never more
  /// than `most`. Equal seeds give equal pauses.
  Backoff(Duration first, Duration most, std::uint64_t seed);

  Duration next();
  /// After a success: the next pause is a first one again.
  void reset() { span_ = first_; }

 private:
  const Duration first_;
  const Duration most_;
  Duration span_;
  Draws draws_;
};

}  // namespace sma
