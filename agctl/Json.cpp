#include "agctl/Json.h"

#include <array>
#include <stdexcept>

namespace agctl {
namespace {

constexpr int kMostLevels = 64;
/// A member is looked for among all of its object's, so their number is bounded.
constexpr unsigned kMostMembers = 512;

/// Throws std::length_error when a document passes a bound.
class Bounds {
 public:
  void see(int depth, Json::parse_event_t event) {
    // A key is told with the level of the members, its object with the level above.
    if (event == Json::parse_event_t::key) {
      if (++members_.at(static_cast<std::size_t>(depth)) > kMostMembers) {
        throw std::length_error("an object has more than 512 members");
      }
    } else if (event == Json::parse_event_t::object_start ||
               event == Json::parse_event_t::array_start) {
      if (depth >= kMostLevels) {
        throw std::length_error("it nests deeper than 64 levels");
      }
      members_.at(static_cast<std::size_t>(depth) + 1) = 0;
    }
  }

 private:
  std::array<unsigned, kMostLevels + 1> members_{};
};

const Json* find(const Json& json, const char* name) {
  if (!json.is_object()) {
    return nullptr;
  }
  const auto found = json.find(name);
  return found == json.end() ? nullptr : &*found;
}

}  // namespace

tl::expected<Json, std::string> readJson(std::string_view text) {
  Bounds bounds;
  try {
    return Json::parse(text, [&bounds](int depth, Json::parse_event_t event, Json& /*parsed*/) {
      bounds.see(depth, event);
      return true;
    });
  } catch (const Json::parse_error& error) {
    return tl::unexpected("it is no JSON from byte " + std::to_string(error.byte) + " on");
  } catch (const Json::exception&) {
    return tl::unexpected<std::string>("it holds a number that is too large");
  } catch (const std::length_error& error) {
    return tl::unexpected<std::string>(error.what());
  }
}

std::string render(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string textOf(const Json& json, const char* name) {
  const Json* value = find(json, name);
  return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

std::optional<std::uint64_t> numberOf(const Json& json, const char* name) {
  const Json* value = find(json, name);
  const bool isNumber = value != nullptr && value->is_number_integer() &&
                        (value->is_number_unsigned() || value->get<std::int64_t>() >= 0);
  return isNumber ? std::optional(value->get<std::uint64_t>()) : std::nullopt;
}

std::string numberTextOf(const Json& json, const char* name) {
  const auto number = numberOf(json, name);
  return number ? std::to_string(*number) : "";
}

bool flagOf(const Json& json, const char* name) {
  const Json* value = find(json, name);
  return value != nullptr && value->is_boolean() && value->get<bool>();
}

const Json& listOf(const Json& json, const char* name) {
  static const Json none = Json::array();
  const Json* value = find(json, name);
  return value != nullptr && value->is_array() ? *value : none;
}

const Json& objectOf(const Json& json, const char* name) {
  static const Json none = Json::object();
  const Json* value = find(json, name);
  return value != nullptr && value->is_object() ? *value : none;
}

std::string plain(const Json& value) {
  if (value.is_null()) {
    return "";
  }
  return value.is_string() ? value.get<std::string>() : render(value);
}

}  // namespace agctl
