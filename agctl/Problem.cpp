#include "agctl/Problem.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace agctl {
namespace {

constexpr std::string_view kPrefix = "/problems/";

struct Kind {
  std::string_view name;
  ExitCode exitCode;
  const char* remedy = nullptr;  ///< in the place of the supervisor's, which names paths
};
constexpr std::array kKinds{
    Kind{"unknown-slot", ExitCode::kNotFound, "see the slots with: agctl slot list"},
    Kind{"unknown-app", ExitCode::kNotFound, "see the instances with: agctl app list"},
    Kind{"unknown-job", ExitCode::kNotFound,
         "see the jobs with: agctl job list; the oldest that are over are forgotten"},
    Kind{"unknown-hook", ExitCode::kNotFound, "see the hooks with: agctl fault list"},
    Kind{"already-there", ExitCode::kConflict},
    Kind{"job-in-the-way", ExitCode::kConflict},
    Kind{"wrong-state", ExitCode::kConflict},
    Kind{"bad-body", ExitCode::kUsage},
    Kind{"unknown-field", ExitCode::kUsage},
    Kind{"bad-value", ExitCode::kUsage},
    Kind{"body-too-large", ExitCode::kUsage},
    Kind{"no-answer", ExitCode::kOther,
         "see what became of it before you repeat it, with: agctl job list"},
    Kind{"too-many-connections", ExitCode::kUnreachable},
};

Kind kindOf(const std::string& type) {
  constexpr Kind kOther{"", ExitCode::kOther};
  if (!type.starts_with(kPrefix)) {
    return kOther;
  }
  const std::string_view name = std::string_view(type).substr(kPrefix.size());
  const auto* const found = std::find_if(kKinds.begin(), kKinds.end(),
                                         [name](const Kind& kind) { return kind.name == name; });
  return found == kKinds.end() ? kOther : *found;
}

std::string joined(const std::string& title, const std::string& detail) {
  return title.empty() || detail.empty() ? title + detail : title + ": " + detail;
}

}  // namespace

Failure problemOf(long status, const std::string& body) {
  auto document = readJson(body);
  if (!document || !document->is_object() || textOf(*document, "type").empty()) {
    return {ExitCode::kOther,
            "the supervisor answered with status " + std::to_string(status),
            "install agctl and zedd from one release",
            {}};
  }
  const std::string type = textOf(*document, "type");
  const Kind kind = kindOf(type);
  Failure failure{kind.exitCode,
                  joined(textOf(*document, "title"), textOf(*document, "detail")),
                  kind.remedy != nullptr ? kind.remedy : textOf(*document, "remedy"),
                  {}};
  if (type == "/problems/unknown-path" || type == "/problems/unknown-method") {
    failure.remedy = "this supervisor does not know the command yet: install both from one release";
  } else if (const auto job = numberOf(*document, "job"); job && *job != 0) {
    failure.remedy += (failure.remedy.empty() ? "" : "; ") +
                      ("look at it with: agctl job show " + std::to_string(*job));
  }
  failure.problem = std::move(*document);
  return failure;
}

bool isBusy(const Failure& failure) {
  const std::string type = failure.problem.is_null() ? "" : textOf(failure.problem, "type");
  return type == "/problems/too-many-waits" || type == "/problems/too-many-connections";
}

}  // namespace agctl
