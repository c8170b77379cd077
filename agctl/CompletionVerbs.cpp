#include <array>
#include <chrono>
#include <ostream>

#include "agctl/BashCompletion.h"
#include "agctl/Completion.h"
#include "agctl/CurlExchanges.h"
#include "agctl/Endpoint.h"
#include "agctl/Grammar.h"
#include "agctl/Verb.h"

namespace agctl {
namespace {

using std::chrono::milliseconds;

/// Nobody wants to wait longer for a shell to go on.
constexpr milliseconds kAnswerWithin{1'000};
/// Stands for names of files; no word is like it.
constexpr const char* kFiles = "*";

Action declareBash(CLI::App& /*app*/) {
  return [](Session& session) {
    session.console().out << kBashCompletion;
    return ExitCode::kDone;
  };
}

Outcome<Json> askAt(const std::string& socket, const std::string& target) {
  CurlExchanges exchanges(socket, -1);
  return Server(exchanges, socket, kAnswerWithin).get(target);
}

Ask connect(const std::string& socket, const std::string& config) {
  return [path = socketPath(socket, config)](const std::string& target) -> Outcome<Json> {
    return path ? askAt(*path, target)
                : tl::unexpected(Failure{ExitCode::kUsage, path.error(), "", {}});
  };
}

Action declareWords(CLI::App& app) {
  auto typed = std::make_shared<std::vector<std::string>>();
  app.add_option("WORD", *typed, "the words after the program's name, the last may be empty")
      ->option_text(" ");
  return [typed](Session& session) {
    CommandLine line;
    const Completion completion = complete(*makeGrammar(line), *typed, &connect);
    if (completion.wantsFiles) {
      session.console().out << kFiles << '\n';
    }
    for (const std::string& word : completion.words) {
      session.console().out << word << '\n';
    }
    return ExitCode::kDone;
  };
}

}  // namespace

std::span<const Verb> completionVerbs() {
  static constexpr std::array kVerbs{
      Verb{"bash", "print a script for bash; to use it: source <(agctl completion bash)",
           "agctl completion bash", kPlain, &declareBash},
      Verb{"words", "print what can stand in the place of the last word, * for names of files",
           "agctl completion words -- slot sh", kHidden, &declareWords}};
  return kVerbs;
}

}  // namespace agctl
