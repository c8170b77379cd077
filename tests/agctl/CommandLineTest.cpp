#include "agctl/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace agctl {
namespace {

using ::testing::HasSubstr;

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

struct Parsed {
  std::variant<CommandLine, ExitCode> result;
  std::string out;
  std::string err;

  const CommandLine& line() const { return std::get<CommandLine>(result); }
  ExitCode code() const { return std::get<ExitCode>(result); }
};

Parsed parse(const std::string& line) {
  std::ostringstream out;
  std::ostringstream err;
  auto result = parseCommandLine(words(line), out, err);
  return {std::move(result), out.str(), err.str()};
}

template <class Function>
void forEachVerb(const Function& function) {
  for (const Noun& noun : nouns()) {
    for (const Verb& verb : noun.verbs) {
      function(noun, verb);
    }
  }
}

std::vector<std::string> examplesOf(const Verb& verb) {
  std::istringstream lines(verb.examples);
  std::vector<std::string> examples;
  for (std::string line; std::getline(lines, line);) {
    examples.push_back(line);
  }
  return examples;
}

/// Lines of the help that a terminal of 100 columns would break; examples are for copying as they
/// are.
std::string tooWide(const std::string& command) {
  std::istringstream lines(parse(command + " --help").out);
  std::string wide;
  for (std::string line; std::getline(lines, line);) {
    if (line.size() > 100 && line.find("agctl ") == std::string::npos) {
      wide += command + ": " + line + "\n";
    }
  }
  return wide;
}

TEST(CommandLine, HelpFitsIntoATerminal) {
  EXPECT_EQ(tooWide(""), "");
  for (const Noun& noun : nouns()) {
    EXPECT_EQ(tooWide(noun.name), "");
  }
  forEachVerb([](const Noun& noun, const Verb& verb) {
    EXPECT_EQ(tooWide(std::string(noun.name) + " " + verb.name), "");
  });
}

TEST(CommandLine, HelpOfOptionsOfWhichSomeAreNeededSaysSo) {
  EXPECT_THAT(parse("slot set --help").out,
              HasSubstr("\nWhat is written, at least one of:\n"
                        "  --serial TEXT               serial number of the blade in it;"));
  EXPECT_THAT(parse("fault clear --help").out,
              testing::StartsWith("let nothing go wrong at a hook any more; give HOOK or --all\n"
                                  "Usage: "));
}

TEST(CommandLine, WordThatIsNotAmongThoseThatCanBeIsTold) {
  const struct {
    const char* line;
    const char* cause;
  } rows[] = {
      {"slot list -o yaml", "agctl: --output: 'yaml' is none of table, json\n"},
      {"slot log-level 1 loud",
       "agctl: LEVEL: 'loud' is none of debug, info, warning, error, critical\n"},
      {"app create a --deploy-type VM", "agctl: --deploy-type: 'VM' is none of native, lxc, vm\n"}};
  for (const auto& row : rows) {
    const Parsed parsed = parse(row.line);
    EXPECT_EQ(parsed.code(), ExitCode::kUsage);
    EXPECT_THAT(parsed.err, testing::StartsWith(row.cause));
  }
  EXPECT_EQ(parse("slot list -o json").line().options.format, Format::kJson);
  EXPECT_EQ(parse("slot list -o table").line().options.format, Format::kTable);
}

TEST(CommandLine, ExampleOfEveryVerbIsACommandLineForIt) {
  forEachVerb([](const Noun& noun, const Verb& verb) {
    const std::string start = std::string("agctl ") + noun.name + " " + verb.name;
    for (const std::string& example : examplesOf(verb)) {
      EXPECT_THAT(example, testing::StartsWith(start));
      const Parsed parsed = parse(example.substr(std::string("agctl ").size()));
      ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed.result)) << example << parsed.err;
      EXPECT_TRUE(parsed.line().action);
    }
  });
}

TEST(CommandLine, HelpOfEveryVerbEndsWithItsExamples) {
  forEachVerb([](const Noun& noun, const Verb& verb) {
    const Parsed parsed = parse(std::string(noun.name) + " " + verb.name + " --help");
    EXPECT_EQ(parsed.code(), ExitCode::kDone);
    const auto examples = examplesOf(verb);
    EXPECT_THAT(parsed.out, HasSubstr(examples.size() == 1 ? "\nExample: " : "\nExamples:\n  "));
    EXPECT_THAT(parsed.out, testing::EndsWith(examples.back() + "\n"));
    for (const std::string& example : examples) {
      EXPECT_THAT(parsed.out, HasSubstr(" " + example + "\n"));
    }
    EXPECT_THAT(parsed.out, HasSubstr(verb.summary));
    EXPECT_EQ(parsed.err, "");
  });
}

TEST(CommandLine, WhatDestroysCanBeConfirmedAndPreviewed) {
  forEachVerb([](const Noun& noun, const Verb& verb) {
    const std::string help = parse(std::string(noun.name) + " " + verb.name + " --help").out;
    EXPECT_EQ(help.find("--yes") != std::string::npos, (verb.traits & kAsks) != 0) << verb.examples;
    if ((verb.traits & kAsks) != 0) {
      EXPECT_THAT(help, HasSubstr("--dry-run"));
    }
  });
}

TEST(CommandLine, HelpListsVerbsThatPeopleUse) {
  forEachVerb([](const Noun& noun, const Verb& verb) {
    const std::string help = parse(std::string(noun.name) + " --help").out;
    EXPECT_EQ(help.find(std::string("\n  ") + verb.name + " ") == std::string::npos,
              (verb.traits & kHidden) != 0)
        << help;
  });
}

TEST(CommandLine, HelpNamesEveryNounAndEveryExitCode) {
  const Parsed parsed = parse("--help");
  EXPECT_EQ(parsed.code(), ExitCode::kDone);
  for (const Noun& noun : nouns()) {
    EXPECT_THAT(parsed.out, HasSubstr(noun.name));
  }
  EXPECT_THAT(parsed.out, HasSubstr("Example: agctl slot list"));
  EXPECT_THAT(parsed.out, HasSubstr("8 timed out or outcome unknown"));
}

TEST(CommandLine, OptionsOfAllVerbsStandAnywhere) {
  for (const char* text :
       {"-o json --socket s --timeout 1.5 slot list", "slot -o json --socket s --timeout 1.5 list",
        "slot list -o json --socket s --timeout 1.5"}) {
    const Parsed parsed = parse(text);
    ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed.result)) << text << parsed.err;
    const Options& options = parsed.line().options;
    EXPECT_EQ(options.format, Format::kJson);
    EXPECT_EQ(options.socket, "s");
    EXPECT_EQ(options.timeout, 1.5);
  }
}

TEST(CommandLine, OptionsOfOrdersAreRead) {
  const Options options =
      parse("slot format 1 --wait --yes --dry-run --deliver-within 2 --finish-within 0.5")
          .line()
          .options;
  EXPECT_TRUE(options.wait);
  EXPECT_TRUE(options.yes);
  EXPECT_TRUE(options.dryRun);
  EXPECT_EQ(options.deliverWithin, 2.0);
  EXPECT_EQ(options.finishWithin, 0.5);
}

TEST(CommandLine, MistakeIsToldWithTheHelpToLookAt) {
  const Parsed parsed = parse("slot format 1 --hurry");
  EXPECT_EQ(parsed.code(), ExitCode::kUsage);
  EXPECT_THAT(parsed.err, HasSubstr("agctl: The following argument was not expected: --hurry"));
  EXPECT_THAT(parsed.err, HasSubstr("agctl: remedy: see agctl slot format --help"));
  EXPECT_EQ(parsed.out, "");
}

TEST(CommandLine, WordThatIsNoCommandIsToldWithThoseThatAre) {
  EXPECT_THAT(parse("timezone shw").err,
              HasSubstr("agctl: 'shw' is no verb of timezone; there are show, set\n"));
  EXPECT_THAT(parse("blade list").err,
              HasSubstr("agctl: 'blade' is no command; there are chassis, slot, "));
  EXPECT_THAT(parse("timezone").err, HasSubstr("agctl: a verb of timezone is missing; there are"));
  EXPECT_THAT(parse("").err, HasSubstr("agctl: a command is missing; there are"));
  EXPECT_THAT(parse("completion x").err, testing::Not(HasSubstr("words")));
}

TEST(CommandLine, TwoWaysToTheSocketAreOneTooMany) {
  EXPECT_EQ(parse("--socket s --config c slot list").code(), ExitCode::kUsage);
}

}  // namespace
}  // namespace agctl
