#include "fuzz/support/Manner.h"

#include <algorithm>

namespace fuzz {

std::vector<std::string> partsOf(Input input) {
  constexpr char kSeparator = '\x1F';
  const std::string text = textOf(input);
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(kSeparator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

}  // namespace fuzz
