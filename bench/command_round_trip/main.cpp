// The time of a command to a blade: from a stage of the engine's, as bytes, through its executor
// and the channel to the blade and back to the bytes of the stage's outcome. The blade is an echo
// in a process of its own. Beside it, in turns and in the same run:
//
//   echo     a bare DEALER and the same blade, with the same five parts: the floor
//   command  as in operation: lines of level 5 and above go to a file
//   quiet    the command without these lines, two for each
//
// The CPU time is this process's, the threads of the transport included.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/command_round_trip/BareEcho.h"
#include "bench/command_round_trip/StopCommand.h"
#include "bench/load/EchoServer.h"
#include "bench/load/Gateway.h"
#include "bench/load/Load.h"
#include "bench/load/ServerProcess.h"
#include "bench/load/Statistics.h"
#include "framework/core_log/Log.h"
#include "sma/Fleet.h"

namespace command_round_trip {
namespace {

constexpr std::uint32_t kSlot = 3;
constexpr std::uint32_t kSimulatedSlot = 4;
// Below the ephemeral range, and not where simulators listen unless told otherwise.
constexpr std::uint32_t kListenBase = 21'000;
constexpr int kOperationLevel = 5;
constexpr int kQuietLevel = 6;

struct Options {
  bool servesBlade = false;
  bool servesSimulator = false;
  int rounds = 15;
  int commands = 2000;
};

struct Contender {
  const char* name;
  int logLevel;
  std::function<bool()> exchange;
  /// Of each round.
  std::vector<double> p50, p99, cpu;

  void runRound(int commands) {
    core_log::setLevel(logLevel);
    run(commands / 10);
    const double cpuBefore = load::cpuMicros(CLOCK_PROCESS_CPUTIME_ID);
    const std::vector<std::uint32_t> nanos = run(commands);
    cpu.push_back((load::cpuMicros(CLOCK_PROCESS_CPUTIME_ID) - cpuBefore) / commands);
    p50.push_back(load::percentileMicros(nanos, 0.5));
    p99.push_back(load::percentileMicros(nanos, 0.99));
  }

 private:
  std::vector<std::uint32_t> run(int commands) const {
    using Clock = std::chrono::steady_clock;
    std::vector<std::uint32_t> nanos;
    nanos.reserve(static_cast<std::size_t>(commands));
    for (int i = 0; i < commands; ++i) {
      const Clock::time_point start = Clock::now();
      if (!exchange()) {
        throw std::runtime_error(std::string(name) + ": an exchange failed");
      }
      nanos.push_back(static_cast<std::uint32_t>((Clock::now() - start).count()));
    }
    return nanos;
  }
};

void print(const std::vector<Contender>& contenders) {
  const Contender& echo = contenders.front();
  std::printf("%-10s %10s %10s %12s\n", "", "p50 us", "p99 us", "CPU us each");
  for (const Contender& each : contenders) {
    std::printf("%-10s %10.1f %10.1f %12.1f\n", each.name, load::median(each.p50),
                load::median(each.p99), load::median(each.cpu));
  }
  for (std::size_t i = 1; i < contenders.size(); ++i) {
    const Contender& each = contenders[i];
    std::printf("%-9s / echo: p50 %.2f, p99 %.2f, CPU %.2f\n", each.name,
                load::medianRatio(each.p50, echo.p50), load::medianRatio(each.p99, echo.p99),
                load::medianRatio(each.cpu, echo.cpu));
  }
}

/// A blade of the simulator's that never hears from a gateway.
[[noreturn]] void serveSimulator() {
  sma::Fleet::Settings settings;
  settings.slots = {kSimulatedSlot};
  settings.gateway = "tcp://127.0.0.1:" + std::to_string(kListenBase);  // where nobody listens
  settings.apps = 1;
  settings.listenBase = kListenBase;
  settings.commands.time = std::chrono::hours(1);
  std::thread([settings] { sma::Fleet(settings, {}).run([](const sma::Fleet&) {}); }).detach();
  load::announceAndWait("tcp://127.0.0.1:" + std::to_string(kListenBase + kSimulatedSlot));
}

unsigned portOf(const load::ServerProcess& blade) {
  const std::string& endPoint = blade.firstLine();
  return static_cast<unsigned>(std::stoul(endPoint.substr(endPoint.rfind(':') + 1)));
}

int run(const Options& options) {
  const load::TemporaryFolder folder;
  if (core_log::setFile(folder.path() + "/service.log")) {
    throw std::runtime_error("cannot write a log below " + folder.path());
  }
  const load::ServerProcess blade({"/proc/self/exe", "--serve-blade"});
  const load::ServerProcess simulator({"/proc/self/exe", "--serve-simulator"});
  startService();
  BareEcho echo(blade.firstLine(), stopCommandParts(kSlot));
  StopCommand command(kSlot, portOf(blade));
  StopCommand simulated(kSimulatedSlot, portOf(simulator));
  std::vector<Contender> contenders(4);
  contenders[0] = {"echo", kQuietLevel, [&] { return echo.exchange(); }, {}, {}, {}};
  contenders[1] = {"command", kOperationLevel, [&] { return command.exchange(); }, {}, {}, {}};
  contenders[2] = {"quiet", kQuietLevel, [&] { return command.exchange(); }, {}, {}, {}};
  contenders[3] = {"simulator", kOperationLevel, [&] { return simulated.exchange(); }, {}, {}, {}};
  for (int round = 0; round < options.rounds; ++round) {
    for (Contender& each : contenders) {
      each.runRound(options.commands);
    }
  }
  print(contenders);
  return 0;
}

}  // namespace
}  // namespace command_round_trip

int main(int argc, char** argv) {
  command_round_trip::Options options;
  CLI::App app("A command to a blade and back, beside a bare echo.");
  app.add_flag("--serve-blade", options.servesBlade)->group("");
  app.add_flag("--serve-simulator", options.servesSimulator)->group("");
  app.add_option("--rounds", options.rounds, "rounds of each contender")->capture_default_str();
  app.add_option("--commands", options.commands, "exchanges in a round")
      ->check(CLI::Range(10, 1'000'000))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  if (options.servesBlade) {
    load::serveRouter();
  }
  if (options.servesSimulator) {
    command_round_trip::serveSimulator();
  }
  try {
    return command_round_trip::run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "command_round_trip: %s\n", error.what());
    return 1;
  }
}
