#include <optional>
#include <string>
#include <vector>

#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "supervisor/admin/AppDescription.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Problem.h"
#include "tests/support/ObjectViews.h"

// The body of a request that describes an application instance. What is refused is refused with a
// problem that can be written; what is taken is shown as a description that is taken again and
// shows the same.

namespace fuzz {
namespace {

using supervisor::admin::AppDescription;
using supervisor::admin::Json;
using supervisor::admin::Problem;

void checkProblem(const Problem& problem, const std::string& text) {
  check(problem.status == 400, "what is wrong with a body is the client's", text);
  check(problem.kind == "bad-body" || problem.field.has_value(), "a wrong value is named", text);
  const Json json = Json::parse(supervisor::admin::toResponse(problem).body, nullptr, false);
  check(json.is_object() && !json.value("detail", "").empty() && !json.value("remedy", "").empty(),
        "a problem says what is wrong and what to do", text);
}

std::optional<AppDescription> read(const std::string& text) {
  try {
    return supervisor::admin::readApp(supervisor::admin::parseBody(text));
  } catch (const supervisor::admin::ProblemError& error) {
    checkProblem(error.problem(), text);
    return std::nullopt;
  }
}

std::string describe(const AppDescription& app) {
  const std::string dn = "sys/chassis-1/slot-1/app-x";
  std::vector<dme::ObjectView> views;
  test_support::addViews(*app.instance, dn, views);
  return supervisor::admin::render(supervisor::admin::describeApp(app.slot, dn, views));
}

}  // namespace

void runAdminBody(Input input) {
  const std::string text = textOf(input);
  const auto app = read(text);
  if (!app) {
    return;
  }
  const std::string shown = describe(*app);
  const auto again = read(shown);
  check(again.has_value(), "what is shown is taken", shown);
  check(describe(*again) == shown, "what is taken again shows the same", shown);
}

}  // namespace fuzz
