#pragma once

#include "framework/base/String.h"

namespace core_utils {

// The text with the letters a to z as A to Z. Every other byte stays, those of UTF-8 sequences
// included, whatever the locale.
base::String toUpperCase(const base::String& text);

}  // namespace core_utils
