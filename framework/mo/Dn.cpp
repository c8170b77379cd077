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

}  // namespace mo
