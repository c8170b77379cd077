#include "fuzz/support/LogChecks.h"

#include <cstdint>

#include "fuzz/support/Check.h"

namespace fuzz {
namespace {

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

/// Takes one character off the front of `text`; kNoCharacter when no UTF-8 character is there.
/// Written apart from the logger's own table of bytes, which it is to judge.
char32_t takeCharacter(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const unsigned length = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length == 0 || lead > 0xF7 || text.size() < length) {
    return kNoCharacter;
  }
  char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
  for (unsigned i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80U) {
      return kNoCharacter;
    }
    character = (character << 6U) | (next & 0x3FU);
  }
  constexpr char32_t kLeastOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kLeastOfLength[length] || character > 0x10FFFF || isSurrogate) {
    return kNoCharacter;
  }
  text.remove_prefix(length);
  return character;
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F);
}

}  // namespace

void checkLogLine(std::string_view text) {
  check(text.size() <= core_log::kMaxLineBytes, "a log line is bounded", text);
  for (std::string_view rest = text; !rest.empty();) {
    const char32_t character = takeCharacter(rest);
    check(character != kNoCharacter, "a log line is UTF-8", text);
    check(!isControl(character), "a log line holds no control characters", text);
  }
}

LogChecks::LogChecks() : previousLevel_(core_log::serviceLevel().get()) {
  core_log::init(this, false);
  core_log::setLevel(0);
}

LogChecks::~LogChecks() {
  core_log::setLevel(previousLevel_);
  core_log::init(nullptr, false);
}

void LogChecks::write(int /*level*/, std::string_view function, std::string_view text) {
  checkLogLine(function);
  checkLogLine(text);
}

}  // namespace fuzz
