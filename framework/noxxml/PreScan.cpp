#include "framework/noxxml/PreScan.h"

#include <algorithm>
#include <cstddef>

#include "framework/noxxml/Characters.h"

namespace noxxml {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kBlanks = " \t\r\n";

class Scanner {
 public:
  Scanner(std::string_view text, const Limits& limits) noexcept : rest_(text), limits_(limits) {
    if (rest_.starts_with("\xef\xbb\xbf")) {
      rest_.remove_prefix(3);
    }
  }

  bool run() noexcept {
    for (std::size_t at = rest_.find('<'); at != kNone; at = rest_.find('<')) {
      if (!isTextAllowed(rest_.substr(0, at))) {
        return false;
      }
      rest_.remove_prefix(at);
      if (!skipMarkup()) {
        return false;
      }
    }
    return rootSeen_ && depth_ == 0 && isTextAllowed(rest_);
  }

 private:
  // Only blanks may stand outside the root element.
  bool isTextAllowed(std::string_view text) const noexcept {
    return depth_ > 0 || text.find_first_not_of(kBlanks) == kNone;
  }

  bool skipMarkup() noexcept {
    if (rest_.starts_with("<!--")) {
      return skipPast("-->", 4);
    }
    if (rest_.starts_with("<![CDATA[")) {
      return depth_ > 0 && skipPast("]]>", 9);
    }
    if (rest_.starts_with("<!")) {
      return false;
    }
    if (rest_.starts_with("<?")) {
      return skipPast("?>", 2);
    }
    if (rest_.starts_with("</")) {
      return skipEndTag();
    }
    return skipStartTag();
  }

  bool skipEndTag() noexcept {
    if (depth_ == 0) {
      return false;
    }
    --depth_;
    return skipPast(">", 2);
  }

  bool skipPast(std::string_view end, std::size_t from) noexcept {
    const std::size_t at = rest_.find(end, from);
    if (at == kNone) {
      return false;
    }
    rest_.remove_prefix(at + end.size());
    return true;
  }

  // Opens a level unless the tag closes itself.
  bool skipStartTag() noexcept {
    if (depth_ == 0 && rootSeen_) {
      return false;
    }
    const std::size_t end = endOfStartTag();
    if (end == kNone || depth_ >= limits_.maxDepth || elements_ >= limits_.maxElements) {
      return false;
    }
    rootSeen_ = true;
    ++elements_;
    if (rest_[end - 1] != '/') {
      ++depth_;
    }
    rest_.remove_prefix(end + 1);
    return true;
  }

  // Where the '>' of the tag is that the rest begins with; one inside quotes does not end it.
  std::size_t endOfStartTag() const noexcept {
    for (std::size_t at = 1; at < rest_.size(); ++at) {
      const char c = rest_[at];
      if (c == '>') {
        return at;
      }
      if (c == '"' || c == '\'') {
        at = rest_.find(c, at + 1);
        if (at == kNone) {
          return kNone;
        }
      }
    }
    return kNone;
  }

  std::string_view rest_;
  const Limits& limits_;
  std::size_t depth_ = 0;
  std::size_t elements_ = 0;
  bool rootSeen_ = false;
};

}  // namespace

bool isAdmissible(std::string_view text, const Limits& limits) noexcept {
  if (text.size() > limits.maxBytes || text.find('\0') != kNone) {
    return false;
  }
  return Scanner(text, limits).run();
}

bool isPlainDocument(std::string_view text, const Limits& limits) noexcept {
  constexpr std::size_t kMostBytes = 65536;
  if (text.size() > std::min(kMostBytes, limits.maxBytes) || legalPrefix(text) != text.size()) {
    return false;
  }
  std::string_view body = text;
  if (body.starts_with("<?xml ")) {
    body.remove_prefix(std::min(body.find("?>"), body.size() - 2) + 2);
  }
  const std::size_t first = body.find_first_not_of(kBlanks);
  if (first == kNone || body[first] != '<') {
    return false;
  }
  for (const char odd : {'!', '?', '&', '='}) {
    if (body.find(odd) != kNone) {
      return false;
    }
  }
  // The first '>' behind the last '<' ends the last tag.
  const std::size_t end = body.find('>', body.rfind('<'));
  return end != kNone && body.find_first_not_of(kBlanks, end + 1) == kNone;
}

}  // namespace noxxml
