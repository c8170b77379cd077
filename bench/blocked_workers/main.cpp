// Latency of heartbeats through the real gateway while none to four of its five request workers
// wait for the engine, each in the registration of a blade that the engine does not answer. The
// reference of every ratio is the same load with no worker blocked, in the same round.
#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/blocked_workers/HoldingEngine.h"
#include "bench/load/Gateway.h"
#include "bench/load/Load.h"
#include "bench/load/Statistics.h"
#include "framework/msglyr/DealerSet.h"
#include "sma/messages/Requests.h"

namespace blocked_workers {
namespace {

constexpr load::Shape kShape{8, 1};
constexpr std::chrono::milliseconds kWarmUp{150};
constexpr unsigned kMostBlocked = 4;
constexpr std::uint32_t kFirstHeldSlot = 201;
constexpr std::chrono::seconds kPatience{10};

struct Options {
  int rounds = 7;
  int millis = 700;
};

struct Figures {
  std::vector<double> p50, p99, ratio;
};

using Clock = std::chrono::steady_clock;

/// Registrations that the engine does not answer, one for each worker to block.
class Blockers {
 public:
  Blockers(HoldingEngine& engine, unsigned count) : engine_(engine) {
    for (unsigned i = 0; i < count; ++i) {
      sockets_.add(load::Gateway::endPoint());
    }
    const Clock::time_point giveUp = Clock::now() + kPatience;
    for (unsigned i = 0; i < count; ++i) {
      while (!sockets_.send(i, request(i)) && Clock::now() < giveUp) {
        sockets_.poll(std::chrono::milliseconds(10), [](auto, const auto&, auto&) {});
      }
    }
    while (engine_.held() < count && Clock::now() < giveUp) {
      sockets_.poll(std::chrono::milliseconds(10), [](auto, const auto&, auto&) {});
    }
    if (engine_.held() != count) {
      throw std::runtime_error("the workers cannot be blocked");
    }
  }

  ~Blockers() {
    const std::size_t waiting = engine_.held();
    engine_.release();
    std::size_t answered = 0;
    const Clock::time_point giveUp = Clock::now() + kPatience;
    while (answered < waiting && Clock::now() < giveUp) {
      answered += sockets_.poll(std::chrono::milliseconds(100), [](auto, const auto&, auto&) {});
    }
  }

 private:
  static msglyr::Message request(unsigned number) {
    sma::Registration blade;
    blade.slot = kFirstHeldSlot + number;
    blade.ip = "127.0.0.1";
    blade.port = 20'000;
    return sma::makeRequest("register", "1", blade.slot, sma::registerDocument(blade));
  }

  HoldingEngine& engine_;
  msglyr::DealerSet sockets_;
};

load::Result measure(const load::Gateway& gateway, int millis) {
  const load::Plan plan{load::Gateway::endPoint(), kShape, kWarmUp,
                        std::chrono::milliseconds(millis), gateway.cpuClock()};
  load::Result result = load::loadHeartbeats(plan);
  if (!result.failure.empty()) {
    throw std::runtime_error(result.failure);
  }
  return result;
}

int run(const Options& options) {
  const load::TemporaryFolder folder;
  const std::string endPoint = "ipc://" + folder.path() + "/engine";
  HoldingEngine engine(endPoint);
  const load::Gateway gateway(endPoint);
  load::registerBlades(load::Gateway::endPoint(), load::kLoadSlots);
  std::array<Figures, kMostBlocked + 1> board;
  for (int round = 0; round < options.rounds; ++round) {
    double reference = 0;
    for (unsigned blocked = 0; blocked <= kMostBlocked; ++blocked) {
      const Blockers blockers(engine, blocked);
      const load::Result result = measure(gateway, options.millis);
      const double p99 = load::percentileMicros(result.nanos, 0.99);
      reference = blocked == 0 ? p99 : reference;
      board[blocked].p50.push_back(load::percentileMicros(result.nanos, 0.5));
      board[blocked].p99.push_back(p99);
      board[blocked].ratio.push_back(p99 / reference);
    }
  }
  std::printf("%u clients x %u\n", kShape.clients, kShape.outstanding);
  std::printf("  %-16s %10s %10s %16s\n", "blocked workers", "p50 us", "p99 us", "p99 / none");
  for (unsigned blocked = 0; blocked <= kMostBlocked; ++blocked) {
    std::printf("  %-16u %10.0f %10.0f %16.2f\n", blocked, load::median(board[blocked].p50),
                load::median(board[blocked].p99), load::median(board[blocked].ratio));
  }
  return 0;
}

}  // namespace
}  // namespace blocked_workers

int main(int argc, char** argv) {
  blocked_workers::Options options;
  CLI::App app("Heartbeats while workers of the gateway wait for the engine.");
  app.add_option("--rounds", options.rounds, "rounds")->capture_default_str();
  app.add_option("--millis", options.millis, "length of a turn")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    return blocked_workers::run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "blocked_workers: %s\n", error.what());
    return 1;
  }
}
