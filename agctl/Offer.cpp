#include "agctl/Offer.h"

#include <sstream>

namespace agctl {
namespace {

// A validator is found again by its name, and its description is not shown where an option has a
// text of its own.
constexpr const char* kName = "offers";
constexpr std::string_view kWords = "words:";

std::string listed(const std::vector<std::string>& words) {
  std::string text(kWords);
  for (const std::string& word : words) {
    text += " " + word;
  }
  return text;
}

CLI::Validator refusingNothing(const std::string& description) {
  return {[](std::string&) -> std::string { return {}; }, description, kName};
}

}  // namespace

CLI::Validator offer(const std::string& kind) {
  return refusingNothing(kind);
}

CLI::Validator offerWords(const std::vector<std::string>& words) {
  return refusingNothing(listed(words));
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  return {[words](std::string& text) -> std::string {
            std::string known;
            for (const std::string& word : words) {
              if (word == text) {
                return {};
              }
              known += (known.empty() ? "" : ", ") + word;
            }
            return "'" + text + "' is none of " + known;
          },
          listed(words), kName};
}

Offered offered(CLI::Option& option) {
  try {
    const std::string text = option.get_validator(kName)->get_description();
    if (!text.starts_with(kWords)) {
      return {text, {}};
    }
    std::istringstream words(text.substr(kWords.size()));
    return {"", {std::istream_iterator<std::string>(words), {}}};
  } catch (const CLI::OptionNotFound&) {
    return {};
  }
}

}  // namespace agctl
