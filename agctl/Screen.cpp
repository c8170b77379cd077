#include "agctl/Screen.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>

namespace agctl {
namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kUsualRows = 24;

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return value == nullptr ? "" : value;
}

Charset usersCharset() {
  const locale_t users = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (users == nullptr) {
    return Charset::kAscii;
  }
  const bool isUtf8 = std::string_view(nl_langinfo_l(CODESET, users)) == "UTF-8";
  freelocale(users);
  return isUtf8 ? Charset::kUtf8 : Charset::kAscii;
}

const char* startOf(Tone tone) {
  switch (tone) {
    case Tone::kHeader:
      return "\x1b[1m";
    case Tone::kGood:
      return "\x1b[32m";
    case Tone::kBad:
      return "\x1b[31m";
    case Tone::kUnsure:
      return "\x1b[33m";
    case Tone::kPlain:
      break;
  }
  return nullptr;
}

}  // namespace

Screen Screen::of(int descriptor) {
  Screen screen;
  if (::isatty(descriptor) == 0) {
    return screen;
  }
  const std::string_view term = environment("TERM");
  screen.isTerminal = true;
  screen.canMove = !term.empty() && term != "dumb";
  screen.hasColours = screen.canMove && environment("NO_COLOR").empty();
  screen.charset = usersCharset();
  winsize size{};
  const bool isKnown = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0;
  screen.columns = isKnown && size.ws_col > 0 ? size.ws_col : kUsualColumns;
  screen.rows = isKnown && size.ws_row > 0 ? size.ws_row : kUsualRows;
  return screen;
}

std::string Screen::coloured(const std::string& text, Tone tone) const {
  const char* start = hasColours ? startOf(tone) : nullptr;
  return start == nullptr ? text : start + text + "\x1b[0m";
}

}  // namespace agctl
