#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>

#include "sma/Control.h"
#include "sma/Fleet.h"
#include "sma/RunResult.h"
#include "sma/base/LineServer.h"
#include "sma/base/Listening.h"
#include "sma/base/SlotRange.h"
#include "sma/messages/OddRequest.h"
#include "sma/messages/Requests.h"
#include "sma/scenario/Scenario.h"

namespace {

constexpr int kExitUsage = 2;
constexpr int kExitFailed = 1;
constexpr std::size_t kMostRows = 64;

struct Options {
  std::string slots = "1-8";
  std::string gateway = sma::defaultGateway(true);
  double beat = 5;
  double runFor = 0;
  double report = 10;
  unsigned apps = 2;
  double failChance = 0;
  double workChance = 0;
  std::uint64_t seed = 1;
  std::uint32_t listenBase = sma::kListenBase;
  bool isBaseGiven = false;
  bool noListen = false;
  double commandTime = 2;
  double commandJitter = 0.25;
  double commandFailChance = 0;
  std::string scenario;
  std::string state;
  std::string control;
  bool untilJudged = false;
  bool listFaults = false;
  bool json = false;
  bool quiet = false;
  bool live = false;
};

void declare(CLI::App& app, Options& options) {
  app.add_option("--slots", options.slots, "slots to simulate a blade in, e.g. 1-4,7")
      ->capture_default_str();
  app.add_option("--gateway", options.gateway, "end point of the gateway")->capture_default_str();
  app.add_option("--beat", options.beat, "seconds between heartbeats")
      ->check(CLI::Range(0.001, 3600.0))
      ->capture_default_str();
  app.add_option("--report", options.report, "seconds between platform reports; 0: none")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  app.add_option("--apps", options.apps, "application instances on each blade")
      ->check(CLI::Range(0U, 1000U))
      ->capture_default_str();
  app.add_option("--fail-chance", options.failChance,
                 "probability that an instance fails, with each report")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("--work-chance", options.workChance,
                 "probability that an instance is given a hot fix, with each report")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("--for", options.runFor, "seconds to run; without it, until interrupted")
      ->check(CLI::Range(0.001, 1e6));
  app.add_flag(
      "--until-judged", options.untilJudged,
      "end as soon as every reply that the scenario's faults and actions expect is judged");
  app.add_option("--seed", options.seed, "seed of everything that is drawn at random")
      ->capture_default_str();
  app.add_option("--listen-base", options.listenBase,
                 "blade N listens for commands on this port plus N")
      ->check(CLI::Range(1U, 65535U))
      ->capture_default_str();
  app.add_flag("--no-listen", options.noListen, "blades take no commands");
  app.add_option("--command-time", options.commandTime, "seconds that a command takes, on average")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  app.add_option("--command-jitter", options.commandJitter,
                 "part of that time by which a command may take more or less")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("--command-fail-chance", options.commandFailChance,
                 "probability that the work of a command fails")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("--scenario", options.scenario, "JSON file with faults and expectations");
  app.add_option("--state", options.state,
                 "file in which blades keep what they do not forget when the simulator ends");
  app.add_option("--control", options.control,
                 "Unix socket that takes requests, e.g. for faults of commands, while it runs");
  app.add_flag("--list-faults", options.listFaults,
               "print the names of the odd requests that scenarios can play, and end");
  app.add_flag("--json", options.json, "print the result as JSON");
  app.add_flag("--quiet", options.quiet, "no line of progress each second");
  app.add_flag("--live", options.live, "print the state of each blade every second");
  app.footer(
      "Example: sma-sim --slots 1-8 --beat 1 --for 10\n"
      "Exit: 0 done and as expected, 1 an expectation failed, nobody answered or the run could not "
      "start,\n"
      "2 wrong usage.");
}

/// Each blade costs two descriptors, and up to three more if it listens.
void raiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

sma::Fleet* runningFleet = nullptr;

void onSignal(int /*signal*/) {
  runningFleet->stop();
}

void stopOnSignals(sma::Fleet& fleet) {
  runningFleet = &fleet;
  struct sigaction action {};
  action.sa_handler = onSignal;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool heardNothing(const std::vector<const sma::BladeAgent*>& blades) {
  return std::all_of(blades.begin(), blades.end(),
                     [](const sma::BladeAgent* blade) { return blade->counts().replies() == 0; });
}

bool allJudged(const std::vector<const sma::BladeAgent*>& blades) {
  return std::all_of(blades.begin(), blades.end(),
                     [](const sma::BladeAgent* blade) { return blade->isJudged(); });
}

std::chrono::milliseconds toMilliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

/// Blades listen where there is room for it, unless the ports were asked for by name: then the run
/// does not start without. Throws std::runtime_error.
void decideListening(const std::vector<std::uint32_t>& slots, Options& options) {
  if (options.noListen) {
    return;
  }
  const std::string why =
      sma::whyNotListening(slots, options.listenBase, sma::ListenRoom::ofSystem());
  if (why.empty()) {
    return;
  }
  if (options.isBaseGiven) {
    throw std::runtime_error(why);
  }
  std::cerr << "sma-sim: blades take no commands: " << why << '\n';
  options.noListen = true;
}

/// The answer to a request that came while the fleet runs, on another thread.
std::string answer(sma::Fleet& fleet, const std::string& request) {
  std::string text;
  const bool done = fleet.onLoop([&] { text = sma::answerControl(fleet, request); });
  return done ? text : sma::controlError("the run has ended");
}

int simulate(const Options& options, const std::vector<std::uint32_t>& slots,
             const sma::Scenario& scenario) {
  sma::Fleet::Settings settings;
  settings.slots = slots;
  settings.gateway = options.gateway;
  settings.beat = toMilliseconds(options.beat);
  settings.runFor = toMilliseconds(options.runFor);
  settings.report = toMilliseconds(options.report);
  settings.apps = options.apps;
  settings.failChance = options.failChance;
  settings.workChance = options.workChance;
  settings.seed = options.seed;
  settings.listenBase = options.noListen ? 0 : options.listenBase;
  settings.commands.time = toMilliseconds(options.commandTime);
  settings.commands.jitter = options.commandJitter;
  settings.commands.failChance = options.commandFailChance;
  std::optional<sma::StateFile> state;
  if (!options.state.empty()) {
    settings.state = &state.emplace(options.state);
  }
  sma::Fleet fleet(settings, scenario);
  std::optional<sma::LineServer> control;
  if (!options.control.empty()) {
    control.emplace(
        options.control, [&fleet](const std::string& line) { return answer(fleet, line); },
        sma::controlError("a request has at most " + std::to_string(sma::LineServer::kMostLine) +
                          " bytes"));
  }
  stopOnSignals(fleet);
  fleet.run([&options, &fleet](const sma::Fleet& running) {
    if (options.live) {
      sma::printLive(std::cout, running.blades(), running.elapsed());
    } else if (!options.quiet) {
      std::cerr << sma::progressLine(running.blades(), running.elapsed()) << std::endl;
    }
    if (options.untilJudged && allJudged(running.blades())) {
      fleet.stop();
    }
  });
  sma::RunResult result;
  result.blades = fleet.blades();
  result.elapsed = fleet.elapsed();
  result.commands = fleet.commands();
  result.failures = scenario.failures(result.blades);
  if (heardNothing(result.blades)) {
    result.failures.push_back("no blade got an answer from " + options.gateway +
                              "; is a gateway running there?");
  }
  if (options.json) {
    sma::printJson(std::cout, result);
  } else {
    sma::printTable(std::cout, result, kMostRows);
  }
  return result.failures.empty() ? 0 : kExitFailed;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Simulated blades that speak to a gateway over real sockets.", "sma-sim");
  declare(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kExitUsage;
  }
  if (options.listFaults) {
    for (const sma::OddRequest& odd : sma::oddRequests()) {
      std::cout << odd.name << '\n';
    }
    return 0;
  }
  std::vector<std::uint32_t> slots;
  sma::Scenario scenario;
  try {
    slots = sma::parseSlotRange(options.slots);
    if (!options.scenario.empty()) {
      scenario = sma::Scenario::load(options.scenario);
    }
  } catch (const std::exception& error) {
    std::cerr << "sma-sim: " << error.what() << '\n';
    return kExitUsage;
  }
  raiseDescriptorLimit();
  options.isBaseGiven = app.count("--listen-base") > 0;
  try {
    decideListening(slots, options);
    return simulate(options, slots, scenario);
  } catch (const std::exception& error) {
    std::cerr << "sma-sim: " << error.what() << '\n';
    return kExitFailed;
  }
}
