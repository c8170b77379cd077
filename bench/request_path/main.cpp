// Server CPU per request, rate and latency of heartbeats through the real gateway with its
// embedded engine, beside references that are measured in the same run, in turns:
//
//   proxy    zmq_proxy between a ROUTER and five workers that echo
//   grpc     gRPC's synchronous server with an empty handler
//   router   one thread that echoes on a ROUTER: the floor of the transport
//
// The loads are clients x requests that each has under way.
#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <vector>

#include "bench/load/EchoServer.h"
#include "bench/load/Gateway.h"
#include "bench/load/Load.h"
#include "bench/load/ServerProcess.h"
#include "bench/load/Statistics.h"
#include "bench/request_path/GrpcLoad.h"
#include "bench/request_path/Server.h"

namespace request_path {
namespace {

constexpr std::array<load::Shape, 3> kShapes{{{8, 1}, {64, 1}, {16, 16}}};
constexpr std::chrono::milliseconds kWarmUp{150};

struct Options {
  std::string serve;
  int rounds = 7;
  int millis = 500;
  unsigned clients = 0;
};

struct Contender {
  std::string name;
  std::string endPoint;
  clockid_t cpuClock;
  load::Result (*offer)(const load::Plan&);
};

/// What the rounds of one contender under one load came to.
struct Figures {
  std::vector<double> cpu, rate, p50, p99;
};

using Board = std::map<std::string, Figures>;

void runRound(const std::vector<Contender>& contenders, const load::Shape& shape, int millis,
              Board& board) {
  for (const Contender& contender : contenders) {
    const load::Plan plan{contender.endPoint, shape, kWarmUp, std::chrono::milliseconds(millis),
                          contender.cpuClock};
    const load::Result result = contender.offer(plan);
    if (!result.failure.empty()) {
      throw std::runtime_error(contender.name + ": " + result.failure);
    }
    Figures& figures = board[contender.name];
    figures.cpu.push_back(result.serverCpuMicros);
    figures.rate.push_back(result.rate());
    figures.p50.push_back(load::percentileMicros(result.nanos, 0.5));
    figures.p99.push_back(load::percentileMicros(result.nanos, 0.99));
  }
}

void print(const std::vector<Contender>& contenders, const load::Shape& shape, Board& board) {
  std::printf("%u clients x %u\n", shape.clients, shape.outstanding);
  std::printf("  %-8s %12s %12s %10s %10s\n", "", "CPU us/req", "req/s", "p50 us", "p99 us");
  for (const Contender& contender : contenders) {
    const Figures& figures = board[contender.name];
    std::printf("  %-8s %12.2f %12.0f %10.0f %10.0f\n", contender.name.c_str(),
                load::median(figures.cpu), load::median(figures.rate), load::median(figures.p50),
                load::median(figures.p99));
  }
  const Figures& ours = board["gateway"];
  for (const char* reference : {"proxy", "grpc", "router"}) {
    std::printf("  gateway / %-7s CPU %.2f, rate %.2f\n", reference,
                load::medianRatio(ours.cpu, board[reference].cpu),
                load::medianRatio(ours.rate, board[reference].rate));
  }
}

int run(const Options& options) {
  const std::string self = "/proc/self/exe";
  std::vector<std::unique_ptr<load::ServerProcess>> references;
  std::vector<Contender> contenders;
  for (const char* name : {"proxy", "grpc", "router"}) {
    references.push_back(
        std::make_unique<load::ServerProcess>(std::vector<std::string>{self, "--serve", name}));
    const load::ServerProcess& process = *references.back();
    contenders.push_back({name, process.firstLine(), process.cpuClock(),
                          name == std::string("grpc") ? loadGrpc : load::loadHeartbeats});
  }
  const load::Gateway gateway;
  load::registerBlades(load::Gateway::endPoint(), load::kLoadSlots);
  contenders.push_back(
      {"gateway", load::Gateway::endPoint(), gateway.cpuClock(), load::loadHeartbeats});
  for (const load::Shape& shape : kShapes) {
    if (options.clients != 0 && options.clients != shape.clients) {
      continue;
    }
    Board board;
    for (int round = 0; round < options.rounds; ++round) {
      runRound(contenders, shape, options.millis, board);
    }
    print(contenders, shape, board);
  }
  return 0;
}

[[noreturn]] void serve(const std::string& kind) {
  if (kind == "proxy") {
    serveProxy();
  }
  if (kind == "router") {
    load::serveRouter();
  }
  serveGrpc();
}

}  // namespace
}  // namespace request_path

int main(int argc, char** argv) {
  request_path::Options options;
  CLI::App app("Heartbeats through the gateway beside two references.");
  app.add_option("--serve", options.serve)->group("");
  app.add_option("--rounds", options.rounds, "rounds per load")->capture_default_str();
  app.add_option("--millis", options.millis, "length of a round's turn")->capture_default_str();
  app.add_option("--clients", options.clients, "only the load of so many clients")
      ->check(CLI::IsMember({8, 16, 64}));
  CLI11_PARSE(app, argc, argv);
  try {
    if (!options.serve.empty()) {
      request_path::serve(options.serve);
    }
    return request_path::run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "request_path: %s\n", error.what());
    return 1;
  }
}
