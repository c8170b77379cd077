#include "agctl/Grammar.h"

#include <string>
#include <string_view>

#include "agctl/HelpFormatter.h"
#include "agctl/Offer.h"

#ifndef ZAN_VERSION
#error "the build names the version"
#endif

namespace agctl {
namespace {

/// A week: longer than any job lives.
constexpr double kMostSeconds = 7 * 24 * 3600.0;
constexpr double kLeastSeconds = 0.001;

CLI::Validator anySeconds() {
  return {[](std::string& text) -> std::string {
            double seconds = 0;
            // Written so that what is no number fails.
            const bool isIn = CLI::detail::lexical_cast(text, seconds) &&
                              seconds >= kLeastSeconds && seconds <= kMostSeconds;
            return isIn ? "" : "'" + text + "' is not between 0.001 and 604800 seconds";
          },
          "SECONDS"};
}

void declareCommon(CLI::App& app, Options& options) {
  auto* socket = app.add_option("--socket", options.socket, "the supervisor's socket")
                     ->check(offer(kOfferFiles))
                     ->option_text("PATH");
  app.add_option("--config", options.config,
                 "the supervisor's configuration file; its state directory holds the socket")
      ->check(offer(kOfferFiles))
      ->option_text("FILE")
      ->excludes(socket);
  app.add_option_function<std::string>(
         "-o,--output",
         [&options](const std::string& word) {
           options.format = word == "json" ? Format::kJson : Format::kTable;
         },
         "table, or json: the supervisor's documents, one a line")
      ->check(oneOf({"table", "json"}))
      ->option_text("table|json");
  app.add_option("--timeout", options.timeout,
                 "how long to wait for the supervisor's answer (30 unless given) and, with "
                 "--wait, for the end of the jobs (for ever)")
      ->check(anySeconds())
      ->option_text("SECONDS");
  app.set_version_flag("--version", "agctl " ZAN_VERSION);
  app.require_subcommand(1);
  app.footer(std::string("Example: agctl slot list\n"
                         "Each verb has its own help: agctl slot format --help\n"
                         "The socket is --socket, else that of --config, else $AGCTL_SOCKET, "
                         "else /var/lib/zedd/admin.sock.\n") +
             kExitCodeHelp);
}

void declareTraits(CLI::App& app, Options& options, unsigned traits) {
  if ((traits & kWaits) != 0) {
    app.add_flag("--wait", options.wait, "wait until it is over, and show how far it has come");
  }
  if ((traits & kPreview) != 0) {
    app.add_flag("--dry-run", options.dryRun, "show what would be done, and do nothing");
  }
  if ((traits & kAsks) != 0) {
    app.add_flag("--yes", options.yes, "do not ask whether it is meant");
  }
  if ((traits & kTimes) != 0) {
    app.add_option("--deliver-within", options.deliverWithin,
                   "give up when the blade cannot be told within this time")
        ->check(anySeconds())
        ->option_text("SECONDS");
    app.add_option("--finish-within", options.finishWithin,
                   "how long the blade may take until its outcome counts as unknown")
        ->check(anySeconds())
        ->option_text("SECONDS");
  }
}

/// One example in the line that says so, several below it.
std::string exampleText(std::string_view examples) {
  if (examples.find('\n') == std::string_view::npos) {
    return "Example: " + std::string(examples);
  }
  std::string text = "Examples:\n  ";
  for (const char letter : examples) {
    text += letter;
    if (letter == '\n') {
      text += "  ";
    }
  }
  return text;
}

void declareVerb(CLI::App& noun, const Verb& verb, CommandLine& line) {
  CLI::App* app = noun.add_subcommand(verb.name, verb.summary);
  app->fallthrough();
  app->require_subcommand(0);
  const Action action = verb.declare(*app);
  declareTraits(*app, line.options, verb.traits);
  if ((verb.traits & kHidden) != 0) {
    app->group("");
  }
  app->footer(
      "-o table|json, --socket PATH, --config FILE and --timeout SECONDS "
      "work with every verb: agctl --help\n" +
      exampleText(verb.examples));
  app->callback([&line, action] { line.action = action; });
}

}  // namespace

std::unique_ptr<CLI::App> makeGrammar(CommandLine& line) {
  auto app = std::make_unique<CLI::App>("Command line of a chassis' supervisor.", "agctl");
  app->formatter(std::make_shared<HelpFormatter>());
  declareCommon(*app, line.options);
  for (const Noun& noun : nouns()) {
    CLI::App* nounApp = app->add_subcommand(noun.name, noun.summary);
    nounApp->require_subcommand(1);
    nounApp->fallthrough();
    nounApp->footer("Each verb has its own help: agctl " + std::string(noun.name) + " " +
                    noun.verbs.front().name + " --help\n" + kExitCodeHelp);
    for (const Verb& verb : noun.verbs) {
      declareVerb(*nounApp, verb, line);
    }
  }
  return app;
}

}  // namespace agctl
