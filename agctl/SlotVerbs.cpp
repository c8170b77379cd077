#include <array>
#include <ostream>
#include <utility>

#include "agctl/Arguments.h"
#include "agctl/Details.h"
#include "agctl/Offer.h"
#include "agctl/Order.h"
#include "agctl/Table.h"
#include "agctl/Verb.h"
#include "agctl/Writing.h"

namespace agctl {
namespace {

using Slots = std::vector<std::uint32_t>;

Tone toneOf(const std::string& state) {
  if (state == "alive") {
    return Tone::kGood;
  }
  return state == "silent" ? Tone::kBad : state == "late" ? Tone::kUnsure : Tone::kPlain;
}

std::string lastBeat(const Json& beats) {
  const auto since = numberOf(beats, "sinceLastMs");
  return since ? std::to_string(*since / 1000) + " s ago" : "never";
}

Table slotTable(const Json& slots) {
  Table table({{"SLOT", Table::Kind::kNumber},
               {"NAME"},
               {"STATE"},
               {"ADMISSION"},
               {"RUNS", Table::Kind::kLong},
               {"BEATS", Table::Kind::kNumber},
               {"MISSED", Table::Kind::kNumber},
               {"LAST BEAT"}});
  for (const Json& slot : slots) {
    const std::string state = textOf(slot, "state");
    const Json& beats = objectOf(slot, "beats");
    table.add({numberTextOf(slot, "slot"),
               textOf(slot, "name"),
               {state, toneOf(state)},
               textOf(slot, "admission"),
               textOf(objectOf(slot, "running"), "version"),
               numberTextOf(beats, "received"),
               numberTextOf(beats, "missed"),
               lastBeat(beats)});
  }
  return table;
}

Action declareList(CLI::App& /*app*/) {
  return [](Session& session) {
    return session.show("/slots", [&session](const Json& document) -> Outcome<void> {
      slotTable(listOf(document, "slots"))
          .print(session.console().out, session.console().outScreen);
      return {};
    });
  };
}

ExitCode showSlots(Session& session, const Slots& slots) {
  ExitCode code = ExitCode::kDone;
  std::size_t shown = 0;
  for (const std::uint32_t slot : slots) {
    const auto document = session.server().get("/slots/" + std::to_string(slot));
    if (!document) {
      const std::string label = "slot " + std::to_string(slot);
      code = worse(code, session.fail(document.error(), slots.size() > 1 ? label : ""));
      continue;
    }
    if (session.isJson()) {
      session.printJson(*document);
    } else {
      session.console().out << (shown > 0 ? "\n" : "");
      printDetails(session.console().out, session.console().outScreen, *document);
    }
    ++shown;
  }
  if (slots.size() > 1) {
    session.say(std::to_string(shown) + " of " + std::to_string(slots.size()) + " slots shown");
  }
  return code;
}

Action declareShow(CLI::App& app) {
  return [slots = addSlots(app)](Session& session) {
    return showSlots(session, *slots);
  };
}

Action declareSet(CLI::App& app) {
  auto slot = std::make_shared<std::uint32_t>(0);
  app.add_option("SLOT", *slot, "the slot's number")
      ->check(slotNumber())
      ->check(offer(kOfferSlots))
      ->option_text(" ")
      ->required();
  return [slot, writing = addWriting(app, "the blade in it")](Session& session) {
    return write(session, "/slots/" + std::to_string(*slot), *writing);
  };
}

ExitCode orderEach(Session& session, const Slots& slots, const std::string& verb,
                   const std::string& question = "", const Json& body = Json::object()) {
  std::vector<Order> orders;
  for (const std::uint32_t slot : slots) {
    const std::string number = std::to_string(slot);
    std::string target("/slots/");
    target.append(number).append("/").append(verb);
    orders.push_back({"slot " + number, std::move(target), body});
  }
  return carryOut(session, orders, question);
}

std::string named(const Slots& slots) {
  std::string text = slots.size() == 1 ? "slot " : "slots ";
  for (std::size_t i = 0; i < slots.size(); ++i) {
    std::size_t last = i;
    while (last + 1 < slots.size() && slots[last + 1] == slots[last] + 1) {
      ++last;
    }
    text.append(i == 0 ? "" : ",").append(std::to_string(slots[i]));
    if (last > i) {
      text.append("-").append(std::to_string(slots[last]));
    }
    i = last;
  }
  return text;
}

Action declareFormat(CLI::App& app) {
  return [slots = addSlots(app)](Session& session) {
    return orderEach(
        session, *slots, "format",
        "Format the disk of the blade in " + named(*slots) + "? Everything on it will be lost.");
  };
}

Action declareLogLevel(CLI::App& app) {
  auto slots = addSlots(app);
  auto level = std::make_shared<std::string>();
  app.add_option("LEVEL", *level, "debug, info, warning, error or critical")
      ->check(oneOf({"debug", "info", "warning", "error", "critical"}))
      ->option_text(" ")
      ->required();
  return [slots, level](Session& session) {
    return orderEach(session, *slots, "log-level", "", {{"level", *level}});
  };
}

Action declareClearLogs(CLI::App& app) {
  return [slots = addSlots(app)](Session& session) {
    return orderEach(session, *slots, "clear-logs");
  };
}

Action declareDeregister(CLI::App& app) {
  return [slots = addSlots(app)](Session& session) {
    return orderEach(session, *slots, "deregister",
                     "Deregister the blade in " + named(*slots) +
                         "? It loses its token and has to be admitted anew.");
  };
}

}  // namespace

std::span<const Verb> slotVerbs() {
  static constexpr std::array kVerbs{
      Verb{"list", "every slot with its blade's state", "agctl slot list", kPlain, &declareList},
      Verb{"show",
           "all that is known of slots: the blade's machine, its instances, what it works on",
           "agctl slot show 1-4,7", kPlain, &declareShow},
      Verb{"set", "write a serial number or a model of the blade in a slot, or the slot's name",
           "agctl slot set 3 --serial JX2302\n"
           "agctl slot set 3 --name left --model B2 --dry-run",
           kPreview, &declareSet},
      Verb{"format", "format the disk of the blade", "agctl slot format 3 --yes --wait",
           kOrders | kAsks, &declareFormat},
      Verb{"log-level", "set how much the blade writes into its log",
           "agctl slot log-level 1-4,7 debug --wait", kOrders, &declareLogLevel},
      Verb{"clear-logs", "empty the logs of the blade's system",
           "agctl slot clear-logs 1-8 --wait --timeout 30", kOrders, &declareClearLogs},
      Verb{"deregister", "let the blade go", "agctl slot deregister 3 --yes", kOrders | kAsks,
           &declareDeregister}};
  return kVerbs;
}

}  // namespace agctl
