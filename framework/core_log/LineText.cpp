#include "framework/core_log/LineText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "framework/core_log/Log.h"

namespace core_log {
namespace {

// What is formatted of a text that is too long: one byte over the bound and the LF after it.
constexpr std::size_t kFormattedBytes = kMaxLineBytes + 1 + 1;
// Holds most documents: printf counts what does not fit one byte at a time.
constexpr std::size_t kUsualBytes = 8192;
constexpr std::size_t kMarkerBytes = 48;
constexpr std::size_t kBytesBeforeMarker = kMaxLineBytes - kMarkerBytes;
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool isContinuation(unsigned char byte) {
  return (byte & 0xC0U) == 0x80U;
}

/// Length of the sequence that `lead` begins, 0 if it begins none.
std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) {
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) {
    return 2;
  }
  if (lead >= 0xE0 && lead <= 0xEF) {
    return 3;
  }
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// The second byte decides about overlong forms, surrogates, numbers beyond U+10FFFF and the C1
/// control characters (C2 80 to C2 9F).
bool isPrintableSecondByte(unsigned char lead, unsigned char second) {
  switch (lead) {
    case 0xC2:
      return second >= 0xA0;
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second <= 0x9F;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second <= 0x8F;
    default:
      return true;
  }
}

/// Length of the printable character at the front of `text`, 0 if its first byte must be escaped.
std::size_t printableLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = sequenceLength(lead);
  if (length == 1) {
    return lead >= 0x20 && lead != 0x7F ? 1 : 0;
  }
  if (length == 0 || text.size() < length) {
    return 0;
  }
  const std::string_view rest = text.substr(1, length - 1);
  const bool wellFormed = std::all_of(rest.begin(), rest.end(), [](char c) {
    return isContinuation(static_cast<unsigned char>(c));
  });
  if (!wellFormed || !isPrintableSecondByte(lead, static_cast<unsigned char>(rest.front()))) {
    return 0;
  }
  return length;
}

/// True when eight bytes are all within ' ' and '~'; may be false for some that are.
bool arePlain(const char* eight) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  constexpr std::uint64_t kTops = 0x80 * kOnes;
  std::uint64_t word = 0;
  std::memcpy(&word, eight, sizeof(word));
  const std::uint64_t belowBlank = word - ' ' * kOnes;
  const std::uint64_t isDelete = (word ^ (0x7F * kOnes)) - kOnes;
  return ((word | belowBlank | isDelete) & kTops) == 0;
}

/// Length of the run of plain characters at the front of `text`, in steps of eight.
std::size_t plainLength(std::string_view text) {
  std::size_t length = 0;
  while (text.size() - length >= 8 && arePlain(text.data() + length)) {
    length += 8;
  }
  return length;
}

void appendEscaped(std::string& out, char c) {
  const auto byte = static_cast<unsigned char>(c);
  out += "\\x";
  out += kHexDigits[byte >> 4U];
  out += kHexDigits[byte & 0x0FU];
}

/// Cuts `out` back so that the marker fits, at the boundary `end` that the caller remembered.
void appendMarker(std::string& out, std::size_t end, std::size_t originalSize) {
  out.resize(end);
  out += "...[cut, ";
  out += std::to_string(originalSize);
  out += " bytes]";
}

bool endsInLineFeed(const char* format) {
  const std::size_t length = std::strlen(format);
  return length > 0 && format[length - 1] == '\n';
}

std::string unprintable(const char* format) {
  const std::string text = std::string("(unprintable) ") + format;
  return escapeLine(text, text.size());
}

/// `raw` is the formatted text or its beginning, `whole` the length of all of it.
std::string finishLine(std::string_view raw, std::size_t whole, bool lineFeed) {
  if (lineFeed) {
    raw.remove_suffix(1);
    --whole;
  }
  return escapeLine(raw, whole);
}

}  // namespace

std::string escapeLine(std::string_view text, std::size_t originalSize) {
  std::string out;
  out.reserve(std::min(text.size(), kMaxLineBytes) + kMarkerBytes);
  std::size_t cutAt = 0;  // the last boundary after which the marker still fits
  while (!text.empty()) {
    const std::size_t room = kBytesBeforeMarker - cutAt;
    const std::size_t plain = plainLength(text.substr(0, room));
    const std::size_t length = plain > 0 ? plain : printableLength(text);
    if (length == 0) {
      appendEscaped(out, text.front());
    } else {
      out.append(text.substr(0, length));
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
    if (out.size() > kMaxLineBytes) {
      appendMarker(out, cutAt, originalSize);
      return out;
    }
    if (out.size() <= kBytesBeforeMarker) {
      cutAt = out.size();
    }
  }
  return out;
}

std::string formatLine(const char* format, std::va_list args) {
  std::va_list again;
  va_copy(again, args);
  std::array<char, kUsualBytes> shortText;
  const int written = std::vsnprintf(shortText.data(), shortText.size(), format, args);
  const bool lineFeed = endsInLineFeed(format);
  std::string line;
  try {
    if (written < 0) {
      line = unprintable(format);
    } else if (const auto whole = static_cast<std::size_t>(written); whole < shortText.size()) {
      line = finishLine({shortText.data(), whole}, whole, lineFeed);
    } else {
      std::string longText(std::min(whole, kFormattedBytes), '\0');
      std::vsnprintf(longText.data(), longText.size() + 1, format, again);
      line = finishLine(longText, whole, lineFeed);
    }
  } catch (...) {
    va_end(again);
    throw;
  }
  va_end(again);
  return line;
}

}  // namespace core_log
