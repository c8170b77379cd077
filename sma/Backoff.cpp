#include "sma/Backoff.h"

#include <algorithm>

namespace sma {

Backoff::Backoff(Duration first, Duration most, std::uint64_t seed)
    : first_(first), most_(most), span_(first), random_(seed) {}

Backoff::Duration Backoff::next() {
  std::uniform_int_distribution<Duration::rep> pause(span_.count() / 2, span_.count());
  span_ = std::min(span_ * 2, most_);
  return Duration(pause(random_));
}

}  // namespace sma
