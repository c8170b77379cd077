#include "agctl/CommandLine.h"

#include <ostream>

#include "agctl/Grammar.h"
#include "agctl/Printable.h"

namespace agctl {
namespace {

/// The commands that were recognised, as the user wrote them.
std::string chosen(const CLI::App& grammar) {
  std::string text = "agctl";
  const CLI::App* app = &grammar;
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    text += " " + app->get_name();
  }
  return text;
}

/// The last command that was recognised.
const CLI::App& deepest(const CLI::App& grammar) {
  const auto chosen = grammar.get_subcommands();
  return chosen.empty() ? grammar : deepest(*chosen.front());
}

/// What is wrong, in more than the library's words where it does not tell the word that it met.
std::string causeOf(const CLI::App& grammar, const CLI::ParseError& error) {
  const CLI::App& app = deepest(grammar);
  const auto commands = app.get_subcommands(
      [](const CLI::App* each) { return !each->get_group().empty() && !each->get_name().empty(); });
  if (dynamic_cast<const CLI::RequiredError*>(&error) == nullptr || commands.empty()) {
    return error.what();
  }
  std::string names;
  for (const CLI::App* each : commands) {
    names += (names.empty() ? "" : ", ") + each->get_name();
  }
  const std::vector<std::string> words = grammar.remaining(true);
  const std::string kind = &app == &grammar ? "command" : "verb of " + app.get_name();
  return (words.empty() ? "a " + kind + " is missing" : "'" + words.front() + "' is no " + kind) +
         "; there are " + names;
}

ExitCode explain(const CLI::App& grammar, const CLI::ParseError& error, std::ostream& out,
                 std::ostream& err) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    grammar.exit(error, out, err);
    return ExitCode::kDone;
  }
  err << "agctl: " << printable(causeOf(grammar, error), Charset::kUtf8) << '\n'
      << "agctl: remedy: see " << chosen(grammar) << " --help" << std::endl;
  return ExitCode::kUsage;
}

}  // namespace

std::variant<CommandLine, ExitCode> parseCommandLine(const std::vector<std::string>& arguments,
                                                     std::ostream& out, std::ostream& err) {
  CommandLine line;
  const auto grammar = makeGrammar(line);
  try {
    grammar->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return explain(*grammar, error, out, err);
  }
  return line;
}

}  // namespace agctl
