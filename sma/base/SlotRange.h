#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sma {

/// Reads a list of slots and ranges of slots such as "1-4,7". The result is sorted and names each
/// slot once. Throws std::invalid_argument, quoting the piece at fault, on anything else: a slot
/// below 1 or above 65535, a range that runs backwards, an empty piece.
std::vector<std::uint32_t> parseSlotRange(std::string_view text);

}  // namespace sma
