#pragma once

#include <vector>

#include "framework/base/String.h"

namespace base {

class Regexp {
 public:
  // The pieces of `text` between the occurrences of `separator`, which is taken literally and
  // searched from the left without overlap. Empty pieces are kept, the leading and the trailing
  // one too, so n occurrences always give n + 1 pieces. An empty separator occurs nowhere.
  static std::vector<String> split(const String& text, const String& separator);
};

}  // namespace base
