#include "agctl/Session.h"

#include <cmath>
#include <ostream>
#include <utility>

namespace agctl {

Session::Session(Options options, Console console, Server server, Interrupts interrupts)
    : options_(std::move(options)),
      console_(std::move(console)),
      server_(std::move(server)),
      interrupts_(std::move(interrupts)) {
  if (options_.timeout) {
    deadline_ = os::Clock::instance().now() + toMilliseconds(*options_.timeout);
  }
}

void Session::say(const std::string& text) const {
  console_.err << "agctl: " << printable(text, console_.errScreen.charset) << '\n' << std::flush;
}

ExitCode Session::tell(const Failure& failure, const std::string& label) const {
  say(label.empty() ? failure.cause : label + ": " + failure.cause);
  if (!failure.remedy.empty()) {
    say("remedy: " + failure.remedy);
  }
  return failure.exitCode;
}

ExitCode Session::fail(const Failure& failure, const std::string& label) const {
  if (isJson()) {
    printJson(problemDocument(failure, label));
  }
  return tell(failure, label);
}

void Session::printJson(const Json& document) const {
  console_.out << render(document) << '\n' << std::flush;
}

ExitCode Session::show(const std::string& target,
                       const std::function<Outcome<void>(const Json&)>& table) {
  const auto document = server_.get(target);
  if (!document) {
    return fail(document.error());
  }
  if (isJson()) {
    printJson(*document);
    return ExitCode::kDone;
  }
  const auto shown = table(*document);
  return shown ? ExitCode::kDone : fail(shown.error());
}

Json problemDocument(const Failure& failure, const std::string& label) {
  Json problem = failure.problem;
  if (problem.is_null()) {
    problem = {{"type", "/problems/no-answer"},
               {"title", "There is no answer of the supervisor to show"},
               {"detail", failure.cause},
               {"remedy", failure.remedy}};
  }
  if (!label.empty()) {
    problem["target"] = label;
  }
  return problem;
}

std::chrono::milliseconds toMilliseconds(double seconds) {
  return std::chrono::milliseconds(std::llround(seconds * 1000));
}

}  // namespace agctl
