#include "supervisor/admin/Json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace supervisor::admin {
namespace {

/// The double that prints with as few digits as the float needs: 0.1, not 0.10000000149011612.
double widen(float value) {
  if (!std::isfinite(value)) {
    return static_cast<double>(value);
  }
  std::array<char, 32> digits{};
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  double widened = 0;
  std::from_chars(digits.data(), written.ptr, widened);
  return widened;
}

}  // namespace

Json toJson(const method::Value& value) {
  return std::visit(
      [](const auto& held) -> Json {
        using T = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return nullptr;
        } else if constexpr (std::is_same_v<T, base::String>) {
          return held.str();
        } else if constexpr (std::is_same_v<T, float>) {
          return widen(held);
        } else {
          return held;
        }
      },
      value);
}

Json propertiesOf(const dme::ObjectView& object) {
  Json properties = Json::object();
  for (const auto& [name, value] : object.values) {
    properties[name] = toJson(value);
  }
  return properties;
}

std::string render(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string renderModel(const std::vector<dme::ObjectView>& objects) {
  std::string text = "{\"objects\":[";
  const char* separator = "\n";
  for (const dme::ObjectView& object : objects) {
    text += separator + render({{"dn", object.dn},
                                {"class", object.className},
                                {"properties", propertiesOf(object)}});
    separator = ",\n";
  }
  return text + "\n]}\n";
}

Response jsonResponse(const Json& json, unsigned status) {
  return {status, "application/json", render(json) + "\n", ""};
}

Response noContent() {
  return {204, "", "", ""};
}

}  // namespace supervisor::admin
