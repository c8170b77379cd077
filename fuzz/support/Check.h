#pragma once

#include <string_view>

namespace fuzz {

/// Ends the process by abort(), after a line on standard error that names the property and shows
/// the detail with its unprintable bytes escaped. libFuzzer then keeps the input.
[[noreturn]] void fail(std::string_view property, std::string_view detail);

/// Fails unless the property holds.
inline void check(bool holds, std::string_view property, std::string_view detail = {}) {
  if (!holds) {
    fail(property, detail);
  }
}

}  // namespace fuzz
