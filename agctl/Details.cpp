#include "agctl/Details.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>

#include "agctl/Times.h"

namespace agctl {
namespace {

constexpr std::size_t kIndent = 2;

bool isBranch(const Json& value) {
  return value.is_object() ||
         (value.is_array() && std::any_of(value.begin(), value.end(), [](const Json& element) {
            return element.is_structured();
          }));
}

/// Members that hold milliseconds since the epoch, as the supervisor names them.
bool isTime(std::string_view name) {
  return name.ends_with("At") || name == "deliverBy" || name == "finishBy" || name == "since";
}

/// How the supervisor calls the member that tells what a number is called.
constexpr std::string_view kNameSuffix = "Name";

/// What a number is called, if the member beside it tells that; else the value itself.
const Json& nameOr(const Json& value, const std::string& name, const Json& object) {
  const auto named = object.find(name + std::string(kNameSuffix));
  const bool isNamed = value.is_number() && named != object.end() && named->is_string();
  return isNamed ? *named : value;
}

/// Whether the member is shown in the place of the number that it names.
bool isShownElsewhere(const std::string& name, const Json& object) {
  if (!name.ends_with(kNameSuffix)) {
    return false;
  }
  const std::string number = name.substr(0, name.size() - kNameSuffix.size());
  const auto named = object.find(number);
  return named != object.end() && &nameOr(*named, number, object) != &*named;
}

std::string valueText(const std::string& name, const Json& value) {
  if (isTime(name) && value.is_number_unsigned()) {
    return timeText(value.get<std::uint64_t>());
  }
  if (!value.is_array()) {
    return plain(value);
  }
  std::string text;
  for (const Json& element : value) {
    text += (text.empty() ? "" : ", ") + plain(element);
  }
  return text;
}

class Printer {
 public:
  Printer(std::ostream& out, const Screen& screen) : out_(out), screen_(screen) {}

  /// Each member starts `indent` columns in. The first follows `mark`, which stands in the columns
  /// before it.
  void members(const Json& object, std::size_t indent, std::string mark = "") {
    std::size_t width = 0;
    for (const auto& [name, value] : object.items()) {
      if (!isBranch(value) && !isShownElsewhere(name, object)) {
        width = std::max(width, displayWidth(shown(name)));
      }
    }
    for (const auto& [name, value] : object.items()) {
      if (isShownElsewhere(name, object)) {
        continue;
      }
      const std::string start = std::string(indent - mark.size(), ' ') + mark;
      mark.clear();
      if (isBranch(value)) {
        line(start, shown(name), "");
        branch(value, indent + kIndent);
      } else {
        const std::string label = shown(name);
        const std::string text = shown(valueText(name, nameOr(value, name, object)));
        line(start, label,
             std::string(width - displayWidth(label) + kIndent, ' ') + (text.empty() ? "-" : text));
      }
    }
  }

 private:
  void branch(const Json& value, std::size_t indent) {
    if (value.is_object()) {
      members(value, indent);
      return;
    }
    for (const Json& element : value) {
      if (element.is_object() && !element.empty()) {
        members(element, indent + kIndent, "- ");
      } else {
        line(std::string(indent, ' ') + "- ", "", shown(plain(element)));
      }
    }
  }
  void line(const std::string& start, const std::string& label, const std::string& rest) {
    const std::string text = start + label;
    if (displayWidth(text + rest) > screen_.columns) {
      out_ << cut(text + rest, screen_.columns, screen_.charset) << '\n';
    } else {
      out_ << start << screen_.coloured(label, Tone::kHeader) << rest << '\n';
    }
  }
  std::string shown(const std::string& text) const { return printable(text, screen_.charset); }

  std::ostream& out_;
  const Screen& screen_;
};

}  // namespace

void printDetails(std::ostream& out, const Screen& screen, const Json& document) {
  Printer(out, screen).members(document, 0);
}

}  // namespace agctl
