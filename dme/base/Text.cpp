#include "dme/base/Text.h"

#include <algorithm>

#include "framework/base/ConfigKeys.h"

namespace dme {

namespace {

bool isOfIdentifier(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '_' || c == ':' || c == '-';
}

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7f;
}

bool isInsideCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

base::String cutText(const base::String& text, std::size_t most) {
  if (text.size() <= most) {
    return text;
  }
  constexpr std::size_t kLongestCharacter = 4;
  const std::string_view bytes = text.view();
  for (std::size_t end = most; end > 0 && most - end < kLongestCharacter; --end) {
    if (!isInsideCharacter(bytes[end])) {
      return bytes.substr(0, end);
    }
  }
  return bytes.substr(0, most);  // no UTF-8 at all
}

bool standsForNothing(std::string_view text) {
  return text.empty() || text == "0" || text == "::";
}

bool isIdentifier(std::string_view text) {
  return text.size() <= kMostIdentifierBytes && !standsForNothing(text) &&
         std::all_of(text.begin(), text.end(), isOfIdentifier);
}

bool isPlainText(std::string_view text) {
  return text.size() <= kMostTextBytes && std::none_of(text.begin(), text.end(), isControl);
}

std::string oneLine(std::string_view text, std::size_t most) {
  return base::quoted(cutText(base::String(text), most).view());
}

}  // namespace dme
