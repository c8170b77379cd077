#include "framework/core_utils/Addresses.h"

#include <string>

namespace core_utils {

base::String ipV4ToString(std::uint32_t address) {
  return base::String(std::to_string(address >> 24) + '.' + std::to_string(address >> 16 & 0xff) +
                      '.' + std::to_string(address >> 8 & 0xff) + '.' +
                      std::to_string(address & 0xff));
}

}  // namespace core_utils
