#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace load {

/// The middle value, the upper one of two; 0 of none.
inline double median(std::vector<double> values) {
  if (values.empty()) {
    return 0;
  }
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// The median of the rounds' ratios: what disturbs a round disturbs both sides of its ratio. Of
/// each round there is one value on either side.
inline double medianRatio(const std::vector<double>& ours, const std::vector<double>& theirs) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    ratios.push_back(ours[i] / theirs[i]);
  }
  return median(ratios);
}

/// The value that `share` (0 to 1) of the values do not exceed, in microseconds; 0 of none.
inline double percentileMicros(std::vector<std::uint32_t> nanos, double share) {
  if (nanos.empty()) {
    return 0;
  }
  const auto nth =
      nanos.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(nanos.size() - 1) * share);
  std::nth_element(nanos.begin(), nth, nanos.end());
  return *nth / 1e3;
}

}  // namespace load
