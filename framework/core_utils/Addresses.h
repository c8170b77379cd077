#pragma once

#include <cstdint>

#include "framework/base/String.h"

namespace core_utils {

// "192.0.2.1" of 0xc0000201: the first number is the most significant byte.
base::String ipV4ToString(std::uint32_t address);

}  // namespace core_utils
