#include "framework/mo/Dn.h"

#include <string>

namespace mo {

Dn Dn::child(std::string_view relativeName) const {
  if (empty()) {
    return Dn(relativeName);
  }
  std::string text = text_.str();
  text.append("/").append(relativeName);
  return Dn(text);
}

Dn Dn::parent() const {
  const std::size_t slash = text_.str().rfind('/');
  return slash == std::string::npos ? Dn() : Dn(text_.view().substr(0, slash));
}

std::string escapeStep(std::string_view identifier) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string step;
  step.reserve(identifier.size());
  for (const char character : identifier) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7f || byte == '/' || byte == '%') {
      step.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xfU]});
    } else {
      step.push_back(character);
    }
  }
  return step;
}

}  // namespace mo
