#include "supervisor/admin/Query.h"

#include <charconv>
#include <limits>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {

std::optional<std::uint64_t> numberOf(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

std::optional<std::string> textField(const Request& request, const std::string& name) {
  const auto field = request.query.find(name);
  return field == request.query.end() ? std::nullopt : std::optional(field->second);
}

std::optional<std::uint64_t> numberField(const Request& request, const std::string& name,
                                         std::uint64_t least, std::uint64_t most) {
  const auto text = textField(request, name);
  if (!text) {
    return std::nullopt;
  }
  const auto number = numberOf(*text);
  if (!number || *number < least || *number > most) {
    throw ProblemError(badValue(
        name, "query field '" + name + "' is '" + *text + "'",
        "give a whole number from " + std::to_string(least) + " to " + std::to_string(most)));
  }
  return number;
}

std::optional<std::uint32_t> slotField(const Request& request) {
  const auto number = numberField(request, "slot", 0, std::numeric_limits<std::uint32_t>::max());
  return number ? std::optional(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

bool flagField(const Request& request, const std::string& name) {
  const auto text = textField(request, name);
  if (text && *text != "true" && *text != "false") {
    throw ProblemError(
        badValue(name, "query field '" + name + "' is '" + *text + "'", "give true or false"));
  }
  return text == "true";
}

}  // namespace supervisor::admin
