#include "dme/blades/Token.h"

#include <sys/random.h>

#include <array>
#include <cstddef>
#include <string>

namespace dme {

std::optional<base::String> makeToken() {
  std::array<unsigned char, 16> bytes{};
  // So few bytes come at once or not at all.
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    return std::nullopt;
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string token;
  for (const unsigned byte : bytes) {
    token += kDigits[byte >> 4];
    token += kDigits[byte & 15];
  }
  return base::String(std::move(token));
}

bool isSameToken(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) {
    return false;
  }
  unsigned difference = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    difference |= static_cast<unsigned>(static_cast<unsigned char>(left[i]) ^
                                        static_cast<unsigned char>(right[i]));
  }
  return difference == 0;
}

}  // namespace dme
