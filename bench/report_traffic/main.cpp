// Latency of heartbeats through the real gateway while every blade reports its platform, in 8 KB
// each second. The reference of each ratio is the same load without reports, in the same round.
// With --memory: the supervisor's memory over so many reports instead, as fast as they are taken.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/load/Gateway.h"
#include "bench/load/Load.h"
#include "bench/load/PlatformReports.h"
#include "bench/load/Statistics.h"

namespace report_traffic {
namespace {

constexpr load::Shape kBeats{8, 1};
constexpr load::Shape kReports{16, 1};
constexpr std::chrono::milliseconds kWarmUp{150};
constexpr std::chrono::milliseconds kReportInterval{1000};
constexpr double kMegabyte = 1024.0 * 1024.0;

struct Options {
  int rounds = 7;
  int millis = 2000;
  unsigned blades = load::kLoadSlots;
  std::uint64_t memory = 0;
};

struct Figures {
  std::vector<double> cpu, rate, p50, p99;
};

load::Result checked(load::Result result) {
  if (!result.failure.empty()) {
    throw std::runtime_error(result.failure);
  }
  if (result.refused > 0) {
    throw std::runtime_error(std::to_string(result.refused) + " requests were refused");
  }
  return result;
}

/// The p99.
double measure(const load::Gateway& gateway, int millis, Figures& figures) {
  const load::Plan plan{load::Gateway::endPoint(), kBeats, kWarmUp,
                        std::chrono::milliseconds(millis), gateway.cpuClock()};
  const load::Result result = checked(load::loadHeartbeats(plan));
  figures.cpu.push_back(result.serverCpuMicros);
  figures.rate.push_back(result.rate());
  figures.p50.push_back(load::percentileMicros(result.nanos, 0.5));
  figures.p99.push_back(load::percentileMicros(result.nanos, 0.99));
  return figures.p99.back();
}

void print(const char* name, const Figures& figures) {
  std::printf("  %-16s %12.2f %12.0f %10.0f %10.0f\n", name, load::median(figures.cpu),
              load::median(figures.rate), load::median(figures.p50), load::median(figures.p99));
}

void measureLatency(const load::Gateway& gateway, const Options& options) {
  Figures alone;
  Figures beside;
  std::vector<double> ratios;
  load::ReportTraffic::Figures reports;
  for (int round = 0; round < options.rounds; ++round) {
    const double reference = measure(gateway, options.millis, alone);
    load::ReportTraffic traffic(load::Gateway::endPoint(), options.blades, kReportInterval);
    ratios.push_back(measure(gateway, options.millis, beside) / reference);
    const load::ReportTraffic::Figures these = traffic.stop();
    reports.refused += these.refused;
    reports.late += these.late;
    reports.nanos.insert(reports.nanos.end(), these.nanos.begin(), these.nanos.end());
  }
  std::printf("heartbeats of %u clients x %u\n", kBeats.clients, kBeats.outstanding);
  std::printf("  %-16s %12s %12s %10s %10s\n", "", "CPU us/req", "req/s", "p50 us", "p99 us");
  print("alone", alone);
  print("beside reports", beside);
  std::printf("  beside reports / alone: p99 %.2f\n", load::median(ratios));
  std::printf(
      "reports of %u blades: %zu answered, %zu refused, %zu late, p50 %.0f us, p99 %.0f us\n",
      options.blades, reports.nanos.size(), reports.refused, reports.late,
      load::percentileMicros(reports.nanos, 0.5), load::percentileMicros(reports.nanos, 0.99));
}

/// Reports as fast as they are taken; the memory after each tenth.
void measureMemory(const load::Gateway& gateway, std::uint64_t reports) {
  constexpr std::size_t kDocuments = 16;
  constexpr std::chrono::milliseconds kStretch{1000};
  constexpr std::uint64_t kSteps = 10;
  const load::Request request = load::platformReports(1, kDocuments);
  const load::Plan plan{load::Gateway::endPoint(), kReports, std::chrono::milliseconds(0), kStretch,
                        gateway.cpuClock()};
  std::printf("%12s %12s\n%12d %9.1f MB\n", "reports", "resident", 0,
              static_cast<double>(gateway.residentBytes()) / kMegabyte);
  std::uint64_t done = 0;
  for (std::uint64_t step = 1; step <= kSteps; ++step) {
    while (done < reports * step / kSteps) {
      done += checked(load::loadRequests(plan, request)).requests;
    }
    std::printf("%12llu %9.1f MB\n", static_cast<unsigned long long>(done),
                static_cast<double>(gateway.residentBytes()) / kMegabyte);
    std::fflush(stdout);
  }
}

int run(const Options& options) {
  const load::Gateway gateway;
  load::registerBlades(load::Gateway::endPoint(), std::max(options.blades, load::kLoadSlots));
  if (options.memory > 0) {
    measureMemory(gateway, options.memory);
  } else {
    measureLatency(gateway, options);
  }
  return 0;
}

}  // namespace
}  // namespace report_traffic

int main(int argc, char** argv) {
  report_traffic::Options options;
  CLI::App app("Heartbeats while blades report their platforms.");
  app.add_option("--rounds", options.rounds, "rounds")->capture_default_str();
  app.add_option("--millis", options.millis, "length of a turn")->capture_default_str();
  app.add_option("--blades", options.blades, "blades that report")->capture_default_str();
  app.add_option("--memory", options.memory, "watch the memory over so many reports instead");
  CLI11_PARSE(app, argc, argv);
  try {
    return report_traffic::run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "report_traffic: %s\n", error.what());
    return 1;
  }
}
