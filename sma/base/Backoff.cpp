#include "sma/base/Backoff.h"

#include <algorithm>

namespace sma {

Backoff::Backoff(Duration first, Duration most, std::uint64_t seed)
    : first_(first), most_(most), span_(first), draws_(seed) {}

Backoff::Duration Backoff::next() {
  const Duration pause =
      span_ / 2 + Duration(draws_.oneOf(static_cast<std::size_t>(span_.count() / 2) + 1));
  span_ = std::min(span_ * 2, most_);
  return pause;
}

}  // namespace sma
