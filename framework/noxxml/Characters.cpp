#include "framework/noxxml/Characters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace noxxml {
namespace {

// The first character of a text. `size` is the number of bytes that it takes, 1 when they are
// not UTF-8; `code` is kBroken then.
struct Character {
  std::uint32_t code;
  std::size_t size;
};
constexpr std::uint32_t kBroken = 0xffffffff;

// The bounds of a sequence by its first byte, so that no over-long form, surrogate or code above
// U+10FFFF is taken for a character.
Character decode(std::string_view text) noexcept {
  const auto byte = [&](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at]));
  };
  const std::uint32_t lead = byte(0);
  if (lead < 0x80) {
    return {lead, 1};
  }
  std::size_t size = 0;
  std::uint32_t smallest = 0;
  if (lead >= 0xc2 && lead <= 0xdf) {
    size = 2;
    smallest = 0x80;
  } else if (lead >= 0xe0 && lead <= 0xef) {
    size = 3;
    smallest = 0x800;
  } else if (lead >= 0xf0 && lead <= 0xf4) {
    size = 4;
    smallest = 0x10000;
  }
  if (size == 0 || text.size() < size) {
    return {kBroken, 1};
  }
  std::uint32_t code = lead & (0xffu >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xc0) != 0x80) {
      return {kBroken, 1};
    }
    code = (code << 6) | (byte(i) & 0x3f);
  }
  if (code < smallest || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) {
    return {kBroken, 1};
  }
  return {code, size};
}

// True when all of so many eights of bytes at `bytes` are printable ASCII or DEL, which is most
// text.
template <std::size_t kWords>
bool arePlainWords(const char* bytes) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  std::uint64_t marks = 0;
  for (std::size_t i = 0; i < kWords; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes + i * sizeof(word), sizeof(word));
    // The high bit of a byte that is below 0x20 or above 0x7f; one may spill into the byte above
    // a byte that is itself marked, which does no harm.
    marks |= (word - kOnes * 0x20) | word;
  }
  return (marks & (kOnes * 0x80)) == 0;
}

bool isLegal(std::uint32_t code) noexcept {
  if (code < 0x20) {
    return code == '\t' || code == '\n' || code == '\r';
  }
  return code <= 0x10ffff && code != 0xfffe && code != 0xffff;
}

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// NameStartChar beyond ASCII.
constexpr Range kNameStart[] = {{0xc0, 0xd6},     {0xd8, 0xf6},     {0xf8, 0x2ff},
                                {0x370, 0x37d},   {0x37f, 0x1fff},  {0x200c, 0x200d},
                                {0x2070, 0x218f}, {0x2c00, 0x2fef}, {0x3001, 0xd7ff},
                                {0xf900, 0xfdcf}, {0xfdf0, 0xfffd}, {0x10000, 0xeffff}};
// What NameChar adds to it.
constexpr Range kNameRest[] = {{0xb7, 0xb7}, {0x300, 0x36f}, {0x203f, 0x2040}};

template <std::size_t N>
bool isIn(const Range (&ranges)[N], std::uint32_t code) noexcept {
  return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

bool isAsciiNameStart(std::uint32_t code) noexcept {
  return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || code == '_';
}

bool isNameStart(std::uint32_t code) noexcept {
  return code < 0x80 ? isAsciiNameStart(code) : isIn(kNameStart, code);
}

bool isNameCharacter(std::uint32_t code) noexcept {
  if (code < 0x80) {
    return isAsciiNameStart(code) || (code >= '0' && code <= '9') || code == '-' || code == '.';
  }
  return isIn(kNameStart, code) || isIn(kNameRest, code);
}

// The replacement of each byte that is not written as it stands, else null.
using Escapes = std::array<const char*, 256>;

constexpr Escapes textEscapes() {
  Escapes escapes{};
  escapes['&'] = "&amp;";
  escapes['<'] = "&lt;";
  escapes['>'] = "&gt;";
  escapes['\r'] = "&#13;";
  return escapes;
}

constexpr Escapes attributeEscapes() {
  Escapes escapes = textEscapes();
  escapes['"'] = "&quot;";
  escapes['\t'] = "&#9;";
  escapes['\n'] = "&#10;";
  return escapes;
}

constexpr Escapes kTextEscapes = textEscapes();
constexpr Escapes kAttributeEscapes = attributeEscapes();

void appendEscaped(std::string& out, std::string_view text, const Escapes& escapes) {
  std::size_t written = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char* const escape = escapes[static_cast<unsigned char>(text[i])];
    if (escape != nullptr) {
      out.append(text, written, i - written);
      out += escape;
      written = i + 1;
    }
  }
  out.append(text, written, std::string_view::npos);
}

}  // namespace

bool isLegalName(std::string_view name) noexcept {
  if (name.empty()) {
    return false;
  }
  const Character first = decode(name);
  if (!isNameStart(first.code)) {
    return false;
  }
  for (std::size_t at = first.size; at < name.size();) {
    const Character next = decode(name.substr(at));
    if (!isNameCharacter(next.code)) {
      return false;
    }
    at += next.size;
  }
  return true;
}

std::size_t legalPrefix(std::string_view text) noexcept {
  std::size_t at = 0;
  while (text.size() - at >= 64 && arePlainWords<8>(text.data() + at)) {
    at += 64;
  }
  while (at < text.size()) {
    if (text.size() - at >= 8 && arePlainWords<1>(text.data() + at)) {
      at += 8;
      continue;
    }
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20 && byte < 0x80) {
      ++at;
      continue;
    }
    const Character next = decode(text.substr(at));
    if (!isLegal(next.code)) {
      break;
    }
    at += next.size;
  }
  return at;
}

std::string repaired(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t legal = legalPrefix(text);
    result += text.substr(0, legal);
    text.remove_prefix(legal);
    if (!text.empty()) {
      result += "\xef\xbf\xbd";
      text.remove_prefix(decode(text).size);
    }
  }
  return result;
}

void appendEscapedText(std::string& out, std::string_view text) {
  appendEscaped(out, text, kTextEscapes);
}

void appendEscapedAttribute(std::string& out, std::string_view value) {
  appendEscaped(out, value, kAttributeEscapes);
}

}  // namespace noxxml
