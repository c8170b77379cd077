#include "fuzz/support/Check.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {
namespace {

constexpr std::size_t kMostShown = 2048;

std::string printable(std::string_view text) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string shown;
  for (const char c : text.substr(0, kMostShown)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      shown += c;
    } else {
      shown.append("\\x").append(1, kHexDigits[byte >> 4U]).append(1, kHexDigits[byte & 0x0FU]);
    }
  }
  return text.size() > kMostShown ? shown + "..." : shown;
}

}  // namespace

void fail(std::string_view property, std::string_view detail) {
  const std::string name(property);
  std::fprintf(stderr, "property broken: %s: %s\n", name.c_str(), printable(detail).c_str());
  std::abort();
}

}  // namespace fuzz
