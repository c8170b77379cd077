#include "supervisor/admin/JsonBody.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

[[noreturn]] void refuse(const std::string& detail, const std::string& remedy) {
  throw ProblemError({400, "bad-body", "The body cannot be read", detail, remedy});
}

/// Looks at what the parser finds, before it is kept.
class Watch {
 public:
  /// `depth` counts from 1 for what begins at the outermost level.
  bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
    using Event = Json::parse_event_t;
    if (event == Event::object_start || event == Event::array_start) {
      if (depth >= kMostBodyDepth) {
        refuse("the body is nested more than " + std::to_string(kMostBodyDepth) + " levels deep",
               "see docs/admin.md for the members that are known");
      }
      names_.emplace_back();
    } else if (event == Event::object_end || event == Event::array_end) {
      names_.pop_back();
    } else if (event == Event::key) {
      add(parsed.get<std::string>());
    }
    return true;
  }

 private:
  void add(const std::string& name) {
    if (!names_.back().insert(name).second) {
      refuse("the member '" + name + "' stands twice in one object", "name each member once");
    }
    if (names_.back().size() > kMostMembers) {
      refuse("an object has more than " + std::to_string(kMostMembers) + " members",
             "see docs/admin.md for the members that are known");
    }
  }

  std::vector<std::set<std::string>> names_;  // of the objects that are open
};

/// What the parser says, without its own number of it.
std::string causeOf(const Json::exception& error) {
  const std::string text = error.what();
  const std::size_t end = text.find("] ");
  return end == std::string::npos ? text : text.substr(end + 2);
}

bool isJson(std::string_view contentType) {
  std::string type(contentType.substr(0, contentType.find(';')));
  type.erase(std::find_if(type.begin(), type.end(), [](char c) { return c == ' ' || c == '\t'; }),
             type.end());
  std::transform(type.begin(), type.end(), type.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return type == "application/json";
}

}  // namespace

Json parseBody(std::string_view text) {
  Json body;
  try {
    body = Json::parse(text, Watch());
  } catch (const Json::exception& error) {
    refuse(causeOf(error), "send one JSON object in UTF-8");
  }
  if (!body.is_object()) {
    refuse("the body is no JSON object", "send one JSON object in UTF-8");
  }
  return body;
}

Json bodyOf(const Request& request) {
  if (request.body.empty()) {
    return Json::object();
  }
  if (!isJson(request.contentType)) {
    throw ProblemError({415, "unsupported-media-type", "The body is of another kind",
                        request.contentType.empty()
                            ? "the body does not say what it is"
                            : "the body says that it is '" + request.contentType + "'",
                        "send JSON with the field 'Content-Type: application/json'"});
  }
  return parseBody(request.body);
}

}  // namespace supervisor::admin
