#include "agctl/Writing.h"

#include "agctl/Arguments.h"
#include "agctl/Details.h"

namespace agctl {

std::shared_ptr<Writing> addWriting(CLI::App& app, const std::string& whose) {
  auto writing = std::make_shared<Writing>();
  auto* group = app.add_option_group("What is written, at least one of");
  const auto add = [group](const char* option, std::optional<std::string>& text,
                           const std::string& meaning) {
    group->add_option(option, text, meaning)->check(writtenText())->option_text("TEXT");
  };
  add("--serial", writing->serial, "serial number of " + whose + "; empty takes it away");
  add("--model", writing->model, "model of " + whose);
  add("--name", writing->name, "what people call it");
  group->require_option(1, 0);
  return writing;
}

ExitCode write(Session& session, const std::string& target, const Writing& writing) {
  Json body = Json::object();
  const auto put = [&body](const char* member, const std::optional<std::string>& text) {
    if (text) {
      body[member] = *text;
    }
  };
  put("name", writing.name);
  put("model", writing.model);
  put("serial", writing.serial);
  const bool isPreview = session.options().dryRun;
  const auto answer =
      session.server().order("PATCH", target + (isPreview ? "?dryRun=true" : ""), body);
  if (!answer) {
    return session.fail(answer.error());
  }
  const Json& shown = isPreview ? objectOf(*answer, "would") : *answer;
  if (session.isJson()) {
    session.printJson(shown);
  } else {
    printDetails(session.console().out, session.console().outScreen, shown);
  }
  if (isPreview) {
    session.say("nothing was done");
  }
  return ExitCode::kDone;
}

}  // namespace agctl
