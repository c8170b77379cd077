#pragma once

#include <cstdint>

namespace sma {

/// SplitMix64's step and output function: neighbouring inputs give unrelated outputs. After Steele,
/// Lea and Flood, "Fast splittable pseudorandom number generators", 2014.
constexpr std::uint64_t mixed(std::uint64_t value) {
  value += 0x9e3779b97f4a7c15U;
  value = (value ^ (value >> 30U)) * 0xbf58476d1ce4e5b9U;
  value = (value ^ (value >> 27U)) * 0x94d049bb133111ebU;
  return value ^ (value >> 31U);
}

/// The bits as a number from 0 up to, but not including, 1.
constexpr double asShare(std::uint64_t bits) {
  constexpr double kScale = 1.0 / static_cast<double>(std::uint64_t{1} << 53U);
  return static_cast<double>(bits >> 11U) * kScale;
}

/// Random numbers in eight bytes of state, for thousands of blades. Equal seeds draw equal numbers.
class Draws {
 public:
  explicit Draws(std::uint64_t seed) : state_(mixed(seed)) {}

  /// From 0 up to, but not including, 1.
  double share() { return asShare(mixed(state_++)); }
  /// One of 0 to `count` - 1; `count` is not 0.
  std::size_t oneOf(std::size_t count) {
    return static_cast<std::size_t>(share() * static_cast<double>(count));
  }

 private:
  std::uint64_t state_;
};

}  // namespace sma
