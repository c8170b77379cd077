#include "agctl/Printable.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>

#include "framework/core_log/LineText.h"

namespace agctl {
namespace {

struct Character {
  char32_t code;
  std::size_t bytes;
};

/// The first character of a text that is valid UTF-8 and not empty.
Character decodeFirst(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {lead, 1};
  }
  const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  char32_t code = lead & (0xFFU >> (bytes + 1));
  for (const char next : text.substr(1, bytes - 1)) {
    code = (code << 6U) | (static_cast<unsigned char>(next) & 0x3FU);
  }
  return {code, std::min(bytes, text.size())};
}

/// A locale of the C library's own, so that the user's does not decide about widths.
class Utf8Locale {
 public:
  Utf8Locale() : before_(uselocale(shared())) {}
  ~Utf8Locale() { uselocale(before_); }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  static locale_t shared() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
  }

  locale_t before_;
};

/// -1 for what has no place on a terminal.
int columnsOf(char32_t code) {
  return wcwidth(static_cast<wchar_t>(code));
}

/// What the C library counts as printable and nobody sees: marks of direction, joiners, fillers,
/// tags.
bool isInvisible(char32_t code) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  static constexpr std::array kRanges{
      Range{0xAD, 0xAD},     Range{0x61C, 0x61C},     Range{0x115F, 0x1160}, Range{0x17B4, 0x17B5},
      Range{0x180B, 0x180F}, Range{0x200B, 0x200F},   Range{0x2028, 0x202E}, Range{0x2060, 0x206F},
      Range{0x3164, 0x3164}, Range{0xFEFF, 0xFEFF},   Range{0xFFA0, 0xFFA0}, Range{0xFFF0, 0xFFFB},
      Range{0xE000, 0xF8FF}, Range{0xE0000, 0x10FFFF}};
  return std::any_of(kRanges.begin(), kRanges.end(), [code](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

bool isShown(char32_t code, Charset charset) {
  if (code < 0x80) {
    return true;
  }
  return charset == Charset::kUtf8 && !isInvisible(code) && columnsOf(code) >= 0;
}

std::string escape(char32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), code > 0xFFFF ? "\\U%08X" : "\\u%04X",
                static_cast<unsigned>(code));
  return text.data();
}

}  // namespace

std::string printable(std::string_view text, Charset charset) {
  const std::string safe = core_log::escapeLine(text, text.size());
  const Utf8Locale locale;
  std::string shown;
  shown.reserve(safe.size());
  for (std::string_view rest = safe; !rest.empty();) {
    const Character next = decodeFirst(rest);
    shown +=
        isShown(next.code, charset) ? std::string(rest.substr(0, next.bytes)) : escape(next.code);
    rest.remove_prefix(next.bytes);
  }
  return shown;
}

std::size_t displayWidth(std::string_view text) {
  const Utf8Locale locale;
  std::size_t width = 0;
  while (!text.empty()) {
    const Character next = decodeFirst(text);
    width += static_cast<std::size_t>(std::max(columnsOf(next.code), 0));
    text.remove_prefix(next.bytes);
  }
  return width;
}

std::string cut(std::string_view text, std::size_t width, Charset charset) {
  if (displayWidth(text) <= width) {
    return std::string(text);
  }
  const std::string_view mark = charset == Charset::kUtf8 ? "…" : "~";
  if (width == 0) {
    return "";
  }
  const Utf8Locale locale;
  std::size_t taken = 0;
  std::size_t columns = 0;
  while (taken < text.size()) {
    const Character next = decodeFirst(text.substr(taken));
    columns += static_cast<std::size_t>(std::max(columnsOf(next.code), 0));
    if (columns > width - 1) {
      break;
    }
    taken += next.bytes;
  }
  return std::string(text.substr(0, taken)) + std::string(mark);
}

}  // namespace agctl
