#include <array>
#include <limits>
#include <ostream>

#include "agctl/AppDescription.h"
#include "agctl/Arguments.h"
#include "agctl/Confirm.h"
#include "agctl/Details.h"
#include "agctl/Offer.h"
#include "agctl/Order.h"
#include "agctl/Table.h"
#include "agctl/Verb.h"

namespace agctl {
namespace {

Tone toneOf(const std::string& phase, bool isFailed) {
  if (isFailed) {
    return Tone::kBad;
  }
  return phase == "started" ? Tone::kGood : phase == "unsure" ? Tone::kUnsure : Tone::kPlain;
}

Table appTable(const Json& apps) {
  Table table({{"APP"},
               {"SLOT", Table::Kind::kNumber},
               {"PHASE"},
               {"FAILED"},
               {"VERSION"},
               {"JOB", Table::Kind::kNumber},
               {"PACKAGE", Table::Kind::kLong}});
  for (const Json& app : apps) {
    const std::string phase = textOf(app, "phase");
    const bool isFailed = flagOf(app, "isFailed");
    const auto job = numberOf(app, "job");
    table.add({textOf(app, "id"),
               numberTextOf(app, "slot"),
               {phase, toneOf(phase, isFailed)},
               isFailed ? "yes" : "no",
               textOf(app, "version"),
               job.value_or(0) == 0 ? "" : std::to_string(*job),
               textOf(app, "packageFile")});
  }
  return table;
}

void print(const Session& session, const Table& table) {
  table.print(session.console().out, session.console().outScreen);
}

Action declareList(CLI::App& app) {
  auto slot = std::make_shared<std::uint32_t>(0);
  app.add_option("--slot", *slot, "only those of one slot")
      ->check(slotNumber())
      ->check(offer(kOfferSlots))
      ->option_text("N");
  return [slot](Session& session) {
    const std::string query = *slot == 0 ? "" : "?slot=" + std::to_string(*slot);
    return session.show("/apps" + query, [&session](const Json& document) -> Outcome<void> {
      print(session, appTable(listOf(document, "apps")));
      return {};
    });
  };
}

Action declareShow(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return session.show("/apps/" + encode(*id), [&session](const Json& document) -> Outcome<void> {
      printDetails(session.console().out, session.console().outScreen, document);
      return {};
    });
  };
}

ExitCode create(Session& session, const AppDescription& description) {
  const auto document = description.document(session.console().in);
  if (!document) {
    return session.fail(document.error());
  }
  if (session.options().dryRun) {
    session.printJson(*document);
    session.say("this would be sent; nothing was done");
    return ExitCode::kDone;
  }
  const auto created = session.server().order("POST", "/apps", *document);
  if (!created) {
    return session.fail(created.error());
  }
  if (session.isJson()) {
    session.printJson(*created);
  } else {
    print(session, appTable(Json::array({*created})));
    session.say("install it with: agctl app install " + description.id);
  }
  return ExitCode::kDone;
}

void addAmount(CLI::App& app, const std::string& name, std::optional<std::uint32_t>& amount,
               const std::string& meaning) {
  app.add_option(name, amount, meaning)
      ->check(wholeNumber(1, std::numeric_limits<std::uint32_t>::max()))
      ->option_text("N");
}

Action declareCreate(CLI::App& app) {
  auto id = addAppId(app, true);
  auto description = std::make_shared<AppDescription>();
  app.add_option("--slot", description->slot, "where it is to run; needed unless the file tells it")
      ->check(slotNumber())
      ->check(offer(kOfferSlots))
      ->option_text("N");
  app.add_option("--package", description->package,
                 "where the blade fetches the package; needed unless the file tells it")
      ->check(shortText())
      ->option_text("URL");
  app.add_option("--version", description->version, "the package's version; any unless given")
      ->check(shortText())
      ->option_text("TEXT");
  app.add_option("--deploy-type", description->deployType, "how it is run; native unless given")
      ->check(oneOf({"native", "lxc", "vm"}))
      ->option_text("native|lxc|vm");
  addAmount(app, "--cores", description->cores, "processor cores; 1 unless given");
  addAmount(app, "--memory", description->memory, "memory in megabytes; 1024 unless given");
  addAmount(app, "--disk", description->disk, "data disk in megabytes; 1024 unless given");
  app.add_flag("--vdp", description->isVdp,
               "it has cluster links and an internal management interface");
  app.add_option("--file", description->file,
                 "description as JSON, - for standard input; options override it")
      ->check(offer(kOfferFiles))
      ->option_text("FILE");
  return [id, description](Session& session) {
    description->id = *id;
    return create(session, *description);
  };
}

ExitCode order(Session& session, const std::string& id, const std::string& verb,
               const std::string& question = "", const Json& body = Json::object()) {
  return carryOut(session, {{"app " + id, "/apps/" + encode(id) + "/" + verb, body}}, question);
}

Action declareInstall(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return order(session, *id, "install");
  };
}

Action declareStart(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return order(session, *id, "start");
  };
}

Action declareStop(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return order(session, *id, "stop");
  };
}

Action declareUpgrade(CLI::App& app) {
  auto id = addAppId(app);
  auto package = std::make_shared<std::string>();
  auto version = std::make_shared<std::string>();
  app.add_option("--package", *package, "where the blade fetches the new package")
      ->check(shortText())
      ->option_text("URL")
      ->required();
  app.add_option("--version", *version, "the new package's version")
      ->check(shortText())
      ->option_text("TEXT");
  return [id, package, version](Session& session) {
    Json body{{"packageFile", *package}};
    if (!version->empty()) {
      body["version"] = *version;
    }
    return order(session, *id, "upgrade", "", body);
  };
}

Action declareUninstall(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return order(session, *id, "uninstall",
                 "Uninstall " + *id + "? What it keeps on its blade will be lost.");
  };
}

Action declareClearLogs(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return order(session, *id, "clear-logs");
  };
}

ExitCode erase(Session& session, const std::string& id) {
  const bool isPreview = session.options().dryRun;
  if (!isPreview) {
    if (const auto allowed = confirm(session, "Delete the description of " + id + "?"); !allowed) {
      return session.fail(allowed.error());
    }
  }
  const auto answer = session.server().order(
      "DELETE", "/apps/" + encode(id) + (isPreview ? "?dryRun=true" : ""), Json());
  if (!answer) {
    return session.fail(answer.error());
  }
  if (!isPreview) {
    session.say(id + " is deleted");
    return ExitCode::kDone;
  }
  const Json& would = objectOf(*answer, "wouldDelete");
  if (session.isJson()) {
    session.printJson(would);
  } else {
    print(session, appTable(Json::array({would})));
  }
  session.say("nothing was done");
  return ExitCode::kDone;
}

Action declareDelete(CLI::App& app) {
  return [id = addAppId(app)](Session& session) {
    return erase(session, *id);
  };
}

}  // namespace

std::span<const Verb> appVerbs() {
  static constexpr std::array kVerbs{
      Verb{"list", "every instance, and how far it has come", "agctl app list --slot 3", kPlain,
           &declareList},
      Verb{"show", "all that is known of an instance", "agctl app show slot3-app1 -o json", kPlain,
           &declareShow},
      Verb{"create", "describe an instance; nothing is installed yet",
           "agctl app create fw-1 --slot 3 --package http://10.0.0.1/fw-1.2.pkg --cores 2 "
           "--memory 2048",
           kPreview, &declareCreate},
      Verb{"install", "install an instance on its blade", "agctl app install fw-1 --wait", kOrders,
           &declareInstall},
      Verb{"start", "start an instance", "agctl app start fw-1 --wait --timeout 60", kOrders,
           &declareStart},
      Verb{"stop", "stop an instance", "agctl app stop fw-1 --wait", kOrders, &declareStop},
      Verb{"upgrade", "put another package in the place of an instance's",
           "agctl app upgrade fw-1 --package http://10.0.0.1/fw-1.3.pkg --wait", kOrders,
           &declareUpgrade},
      Verb{"uninstall", "take an instance off its blade", "agctl app uninstall fw-1 --yes --wait",
           kOrders | kAsks, &declareUninstall},
      Verb{"clear-logs", "empty the logs of an instance", "agctl app clear-logs slot1-app1 --wait",
           kOrders, &declareClearLogs},
      Verb{"delete", "forget an instance that is not installed", "agctl app delete fw-1 --yes",
           kPreview | kAsks, &declareDelete}};
  return kVerbs;
}

}  // namespace agctl
