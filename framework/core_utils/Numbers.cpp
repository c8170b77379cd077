#include "framework/core_utils/Numbers.h"

#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace core_utils {
namespace {

[[noreturn]] void refuse(std::string_view text) {
  throw std::invalid_argument("not a decimal number: '" + std::string(text) + "'");
}

// True when all of `digits` is one number of type T.
template <typename T>
bool parseAll(std::string_view digits, T& value) {
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value);
  return error == std::errc() && stop == end;
}

}  // namespace

void stringToInt(const base::String& text, std::int32_t& value) {
  std::string_view digits = text.view();
  // from_chars knows '-' only; a '+' may not be followed by a second sign.
  if (digits.starts_with('+')) {
    digits.remove_prefix(1);
    if (digits.starts_with('-')) {
      refuse(text.view());
    }
  }
  std::int32_t parsed = 0;
  if (!parseAll(digits, parsed)) {
    refuse(text.view());
  }
  value = parsed;
}

void stringToUint(std::string_view text, std::uint32_t& value) {
  std::uint32_t parsed = 0;
  if (!parseAll(text, parsed)) {
    refuse(text);
  }
  value = parsed;
}

base::String uintToString(std::uint32_t value) {
  return base::String(std::to_string(value));
}

}  // namespace core_utils
