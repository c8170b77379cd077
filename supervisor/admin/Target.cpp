#include "supervisor/admin/Target.h"

#include <charconv>
#include <optional>
#include <utility>

namespace supervisor::admin {
namespace {

std::optional<std::string> decode(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned char byte = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) {
      return std::nullopt;
    }
    decoded += static_cast<char>(byte);
    i += 2;
  }
  return decoded;
}

/// Takes what stands before the separator off the text.
std::string_view cut(std::string_view& text, char separator) {
  const std::size_t at = text.find(separator);
  const std::string_view piece = text.substr(0, at);
  text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
  return piece;
}

bool decodeSteps(std::string_view path, Target& target) {
  path.remove_prefix(1);
  while (!path.empty()) {
    auto step = decode(cut(path, '/'));
    if (!step) {
      return false;
    }
    target.steps.push_back(std::move(*step));
  }
  return true;
}

std::optional<std::string> decodeField(std::string_view text) {
  std::string form(text);
  for (char& character : form) {
    character = character == '+' ? ' ' : character;
  }
  return decode(form);
}

}  // namespace

tl::expected<Target, std::string> parseTarget(std::string_view text) {
  std::string_view query = text;
  const std::string_view path = cut(query, '?');
  if (!path.starts_with('/') || text.find('#') != std::string_view::npos) {
    return tl::unexpected<std::string>("the target is no path from the root");
  }
  Target target;
  if (!decodeSteps(path, target)) {
    return tl::unexpected<std::string>("an escape in the path is not % and two digits");
  }
  while (!query.empty()) {
    std::string_view rest = cut(query, '&');
    auto name = decodeField(cut(rest, '='));
    auto value = decodeField(rest);
    if (!name || !value) {
      return tl::unexpected<std::string>("an escape in the query is not % and two digits");
    }
    if (!target.query.emplace(*name, std::move(*value)).second) {
      return tl::unexpected("the query names '" + *name + "' twice");
    }
  }
  return target;
}

std::string escapeQueryValue(std::string_view text) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string escaped;
  for (const char character : text) {
    if (kPlain.find(character) != std::string_view::npos) {
      escaped += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    escaped += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
  }
  return escaped;
}

}  // namespace supervisor::admin
