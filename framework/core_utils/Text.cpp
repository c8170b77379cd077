#include "framework/core_utils/Text.h"

#include <string>
#include <utility>

namespace core_utils {

base::String toUpperCase(const base::String& text) {
  std::string upper = text.str();
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return base::String(std::move(upper));
}

}  // namespace core_utils
