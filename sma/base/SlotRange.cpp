#include "sma/base/SlotRange.h"

#include <charconv>
#include <set>
#include <stdexcept>

namespace sma {
namespace {

constexpr std::uint32_t kMostSlot = 65535;

[[noreturn]] void refuse(std::string_view piece, const char* why) {
  throw std::invalid_argument("slots: '" + std::string(piece) + "' " + why +
                              "; write slots and ranges as in 1-4,7");
}

std::uint32_t parseSlot(std::string_view text, std::string_view piece) {
  std::uint32_t slot = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), slot);
  if (error != std::errc() || end != text.data() + text.size()) {
    refuse(piece, "is no slot number");
  }
  if (slot == 0 || slot > kMostSlot) {
    refuse(piece, "is outside 1 to 65535");
  }
  return slot;
}

void addPiece(std::string_view piece, std::set<std::uint32_t>& slots) {
  const std::size_t dash = piece.find('-');
  const std::uint32_t first = parseSlot(piece.substr(0, dash), piece);
  const std::uint32_t last =
      dash == std::string_view::npos ? first : parseSlot(piece.substr(dash + 1), piece);
  if (last < first) {
    refuse(piece, "runs backwards");
  }
  for (std::uint32_t slot = first; slot <= last; ++slot) {
    slots.insert(slots.end(), slot);
  }
}

}  // namespace

std::vector<std::uint32_t> parseSlotRange(std::string_view text) {
  std::set<std::uint32_t> slots;
  while (true) {
    const std::size_t comma = text.find(',');
    addPiece(text.substr(0, comma), slots);
    if (comma == std::string_view::npos) {
      break;
    }
    text.remove_prefix(comma + 1);
  }
  return {slots.begin(), slots.end()};
}

}  // namespace sma
