#include "framework/base/String.h"

#include <ostream>

namespace base {

void String::init() noexcept {}

std::ostream& operator<<(std::ostream& out, const String& text) {
  return out << text.str();
}

}  // namespace base
