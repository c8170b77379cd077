#include <algorithm>
#include <array>
#include <limits>
#include <ostream>

#include "agctl/Arguments.h"
#include "agctl/Offer.h"
#include "agctl/Table.h"
#include "agctl/Verb.h"

namespace agctl {
namespace {

constexpr std::uint32_t kMostDelayMs = 3'600'000;

Table faultTable(const Json& document) {
  Table table({{"HOOK"},
               {"ACTION"},
               {"BITS", Table::Kind::kNumber},
               {"DELAY MS", Table::Kind::kNumber},
               {"TIMES", Table::Kind::kNumber}});
  std::vector<std::string> set;
  for (const Json& fault : listOf(document, "faults")) {
    set.push_back(textOf(fault, "hook"));
    table.add({set.back(),
               {textOf(fault, "action"), Tone::kUnsure},
               numberTextOf(fault, "lBits"),
               numberTextOf(fault, "delayMs"),
               numberTextOf(fault, "times")});
  }
  for (const Json& hook : listOf(document, "hooks")) {
    if (std::find(set.begin(), set.end(), plain(hook)) == set.end()) {
      table.add({plain(hook), "", "", "", ""});
    }
  }
  return table;
}

void print(const Session& session, const Json& document) {
  faultTable(document).print(session.console().out, session.console().outScreen);
}

Action declareList(CLI::App& /*app*/) {
  return [](Session& session) {
    return session.show("/faults", [&session](const Json& document) -> Outcome<void> {
      print(session, document);
      return {};
    });
  };
}

std::shared_ptr<std::string> addHook(CLI::App& app) {
  auto hook = std::make_shared<std::string>();
  app.add_option("HOOK", *hook, "the hook's name: see agctl fault list")
      ->check(shortText())
      ->check(offer(kOfferHooks))
      ->option_text(" ");
  return hook;
}

/// What is to happen at a hook, as the user gives it.
struct Fault {
  std::string action;
  std::optional<std::int32_t> bits;
  std::optional<std::uint32_t> delayMs;
  std::optional<std::uint32_t> times;

  Json document() const {
    Json body{{"action", action}};
    const auto put = [&body](const char* name, const auto& value) {
      if (value) {
        body[name] = *value;
      }
    };
    put("lBits", bits);
    put("delayMs", delayMs);
    put("times", times);
    return body;
  }
};

Action declareSet(CLI::App& app) {
  auto hook = addHook(app);
  app.get_option("HOOK")->required();
  auto fault = std::make_shared<Fault>();
  app.add_option(
         "--action", fault->action,
         "return: the command ends there as if it were done; fail: it fails with --bits, at a "
         "FINJ_FSM_FAIL_ hook; own: the engine gets no answer to it; delay: it is only held "
         "up; crash: the supervisor crashes")
      ->check(oneOf({"return", "crash", "fail", "own", "delay"}))
      ->option_text("ACTION")
      ->required();
  app.add_option("--bits", fault->bits, "result bits of a command that fails; 1 unless given")
      ->check(wholeNumber(0, std::numeric_limits<std::int32_t>::max()))
      ->option_text("N");
  app.add_option("--delay-ms", fault->delayMs,
                 "how long it is held; of every action, and needed for delay")
      ->check(wholeNumber(1, kMostDelayMs))
      ->option_text("MS");
  app.add_option("--times", fault->times, "how often; for ever unless given")
      ->check(wholeNumber(1, std::numeric_limits<std::uint32_t>::max()))
      ->option_text("N");
  return [hook, fault](Session& session) {
    if (fault->action == "delay" && !fault->delayMs) {
      return session.fail({ExitCode::kUsage,
                           "--action delay needs --delay-ms",
                           "say for how many milliseconds the command is held: --delay-ms 500",
                           {}});
    }
    const auto answer =
        session.server().order("PUT", "/faults/" + encode(*hook), fault->document());
    if (!answer) {
      return session.fail(answer.error());
    }
    if (session.isJson()) {
      session.printJson(*answer);
    } else {
      Json shown = *answer;
      shown["hook"] = *hook;
      print(session, {{"faults", Json::array({shown})}});
    }
    return ExitCode::kDone;
  };
}

Action declareClear(CLI::App& app) {
  auto hook = addHook(app);
  auto all = std::make_shared<bool>(false);
  app.add_flag("--all", *all, "those of all hooks")->excludes("HOOK")->option_text(" ");
  app.require_option(1);
  return [hook, all](Session& session) {
    const std::string target = *all ? "/faults" : "/faults/" + encode(*hook);
    const auto answer = session.server().order("DELETE", target, Json());
    if (!answer) {
      return session.fail(answer.error());
    }
    session.say(*all ? "no hook has a fault any more" : *hook + " has no fault any more");
    return ExitCode::kDone;
  };
}

}  // namespace

std::span<const Verb> faultVerbs() {
  static constexpr std::array kVerbs{
      Verb{"list", "the hooks, and what is set to happen there", "agctl fault list", kPlain,
           &declareList},
      Verb{"set", "let something go wrong at a hook",
           "agctl fault set FINJ_PRE_ZanDmeFsmSdSlotFormatDiskStartDiskFormat --action delay "
           "--delay-ms 500 --times 3\n"
           "agctl fault set FINJ_FSM_FAIL_ZanDmeFsmSdAppInstanceStartApplicationSendCommand "
           "--action fail --bits 16 --times 1\n"
           "agctl fault set FINJ_POST_ZanDmeFsmSdSlotChangePlatformLogLevelSendCommand "
           "--action own --times 1",
           kPlain, &declareSet},
      Verb{"clear", "let nothing go wrong at a hook any more; give HOOK or --all",
           "agctl fault clear --all", kPlain, &declareClear}};
  return kVerbs;
}

}  // namespace agctl
