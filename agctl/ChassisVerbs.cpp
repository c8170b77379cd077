#include <array>

#include "agctl/Details.h"
#include "agctl/Verb.h"
#include "agctl/Writing.h"

namespace agctl {
namespace {

Action declareShow(CLI::App& /*app*/) {
  return [](Session& session) {
    return session.show("/chassis", [&session](const Json& document) -> Outcome<void> {
      printDetails(session.console().out, session.console().outScreen, document);
      return {};
    });
  };
}

Action declareSet(CLI::App& app) {
  return [writing = addWriting(app, "the chassis")](Session& session) {
    return write(session, "/chassis", *writing);
  };
}

}  // namespace

std::span<const Verb> chassisVerbs() {
  static constexpr std::array kVerbs{
      Verb{"show", "what is written on it, and the counts of the supervisor", "agctl chassis show",
           kPlain, &declareShow},
      Verb{"set",
           "write a serial number, a model or a name on it; blades are told with the next start",
           "agctl chassis set --serial JX2301\n"
           "agctl chassis set --name upper --model C8 --dry-run",
           kPreview, &declareSet}};
  return kVerbs;
}

}  // namespace agctl
