#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>

#include "framework/base/String.h"

// Numbers as decimal text. None of these depends on the locale.
namespace core_utils {

// The whole text must be decimal digits, for stringToInt after one optional '+' or '-', and the
// number must fit its type; leading zeros are accepted, blanks are not. Anything else throws
// std::invalid_argument, whose text names the offending value, and leaves `value` as it was.
void stringToInt(const base::String& text, std::int32_t& value);
void stringToUint(std::string_view text, std::uint32_t& value);
// Of that type only: whatever else is a text is a view.
template <std::same_as<base::String> Text>
void stringToUint(const Text& text, std::uint32_t& value) {
  stringToUint(text.view(), value);
}

base::String uintToString(std::uint32_t value);

}  // namespace core_utils
