#include <array>
#include <ostream>

#include "agctl/Arguments.h"
#include "agctl/Batch.h"
#include "agctl/Details.h"
#include "agctl/Interrupt.h"
#include "agctl/Verb.h"

namespace agctl {
namespace {

Action declareShow(CLI::App& /*app*/) {
  return [](Session& session) {
    return session.show("/timezone", [&session](const Json& document) -> Outcome<void> {
      printDetails(session.console().out, session.console().outScreen, document);
      return {};
    });
  };
}

ExitCode set(Session& session, const std::string& zone) {
  const Interrupt::Hold hold;
  const auto answer = session.server().order("PUT", "/timezone", {{"timezone", zone}});
  if (!answer) {
    return session.fail(answer.error());
  }
  const Json& jobs = listOf(*answer, "jobs");
  session.say("the time zone is " + textOf(*answer, "timezone") + "; " +
              std::to_string(jobs.size()) + (jobs.size() == 1 ? " blade is" : " blades are") +
              " told");
  Batch batch(session);
  for (const Json& job : jobs) {
    batch.add("", Job::read(job));
  }
  return batch.finish();
}

Action declareSet(CLI::App& app) {
  auto zone = std::make_shared<std::string>();
  app.add_option("ZONE", *zone, "a zone of the system's database")
      ->check(shortText())
      ->option_text(" ")
      ->required();
  return [zone](Session& session) {
    return set(session, *zone);
  };
}

}  // namespace

std::span<const Verb> timeZoneVerbs() {
  static constexpr std::array kVerbs{
      Verb{"show", "the zone that is set", "agctl timezone show", kPlain, &declareShow},
      Verb{"set", "set the zone and tell every registered blade",
           "agctl timezone set Europe/Berlin --wait", kWaits, &declareSet}};
  return kVerbs;
}

}  // namespace agctl
