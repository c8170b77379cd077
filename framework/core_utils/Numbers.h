#pragma once

#include <cstdint>

#include "framework/base/String.h"

// Numbers as decimal text. None of these depends on the locale.
namespace core_utils {

// The whole text must be decimal digits, for stringToInt after one optional '+' or '-', and the
// number must fit its type; leading zeros are accepted, blanks are not. Anything else throws
// std::invalid_argument, whose text names the offending value, and leaves `value` as it was.
void stringToInt(const base::String& text, std::int32_t& value);
void stringToUint(const base::String& text, std::uint32_t& value);

base::String uintToString(std::uint32_t value);

}  // namespace core_utils
