#include "framework/base/Regexp.h"

#include <cstddef>
#include <string_view>

namespace base {

std::vector<String> Regexp::split(const String& text, const String& separator) {
  std::vector<String> pieces;
  std::string_view rest = text.view();
  if (!separator.empty()) {
    for (std::size_t at = rest.find(separator.view()); at != std::string_view::npos;
         at = rest.find(separator.view())) {
      pieces.emplace_back(rest.substr(0, at));
      rest.remove_prefix(at + separator.size());
    }
  }
  pieces.emplace_back(rest);
  return pieces;
}

}  // namespace base
