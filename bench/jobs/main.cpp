// Jobs over sixteen blades, ordered over the admin interface of a real supervisor: each blade has
// an instance that is installed, started, stopped and uninstalled again and again, and the next
// operation is ordered when the one before is over. Prints jobs per second, and fails unless every
// job has succeeded and the blades carried out each command exactly once for each job.
//
// A job is durable when it is accepted, before it is sent, and with each change afterwards: beside
// the rate stands what one synchronised write costs here, and how many the database made.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/jobs/Blades.h"
#include "bench/jobs/Orders.h"
#include "bench/load/Gateway.h"
#include "bench/load/Load.h"
#include "bench/load/Statistics.h"

namespace jobs {
namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::uint32_t blades = 16;
  unsigned cycles = 16;
  unsigned commandMillis = 10;
};

/// What a page takes to the disk that the state lies on, as the median of many.
double syncMicros(const std::string& folder) {
  const std::string path = folder + "/sync";
  const int file = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  const std::string page(4096, 'x');
  std::vector<double> micros;
  for (int i = 0; i < 200 && file >= 0; ++i) {
    const Clock::time_point start = Clock::now();
    if (write(file, page.data(), page.size()) < 0 || fdatasync(file) != 0) {
      throw std::runtime_error("cannot write " + path);
    }
    micros.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  close(file);
  return load::median(micros);
}

void awaitBlades(Orders& orders, std::uint32_t blades) {
  for (int i = 0; i < 200; ++i) {
    std::uint32_t valid = 0;
    const agctl::Json answer = orders.get("/slots");
    for (const agctl::Json& slot : agctl::listOf(answer, "slots")) {
      valid += agctl::textOf(slot, "admission") == "valid" ? 1 : 0;
    }
    if (valid == blades) {
      return;
    }
    usleep(50'000);
  }
  throw std::runtime_error("the blades do not register");
}

void expect(std::uint64_t is, std::uint64_t wanted, const std::string& what) {
  if (is != wanted) {
    throw std::runtime_error(what + ": " + std::to_string(is) + " instead of " +
                             std::to_string(wanted));
  }
}

void checkExecutions(const Blades& blades, const Options& options) {
  for (std::uint32_t slot = 1; slot <= options.blades; ++slot) {
    for (const Step& step : kCycle) {
      expect(blades.executions(slot, step.command, appIn(slot)), options.cycles,
             std::string(step.command) + " carried out in slot " + std::to_string(slot));
    }
  }
  expect(blades.executions(), std::uint64_t{options.blades} * options.cycles * kCycle.size(),
         "commands carried out");
}

/// Looks at them in pages: a list is bounded.
void checkJobs(Orders& orders, const Options& options) {
  std::uint64_t found = 0;
  std::string query = "/jobs?limit=1000&state=succeeded";
  std::string before;
  do {
    const agctl::Json page = orders.get(query + before);
    before.clear();
    for (const agctl::Json& job : agctl::listOf(page, "jobs")) {
      ++found;
      expect(agctl::numberOf(job, "attempts").value_or(0), 1, "attempts of " + agctl::render(job));
      before = "&before=" + agctl::numberTextOf(job, "id");
    }
  } while (!before.empty());
  expect(found, std::uint64_t{options.blades} * options.cycles * kCycle.size(),
         "jobs that succeeded");
}

std::uint64_t commits(Orders& orders) {
  const agctl::Json chassis = orders.get("/chassis");
  return agctl::numberOf(agctl::objectOf(chassis, "database"), "commits").value_or(0);
}

/// With all that applications need to be started.
std::string chassis(std::uint32_t blades) {
  std::string text = "[chassis]\nmodel = \"C16\"\nserial = \"CH1\"\n";
  for (std::uint32_t slot = 1; slot <= blades; ++slot) {
    const std::string number = std::to_string(slot);
    text.append("[[slot]]\nnumber = ").append(number).append("\nmodel = \"B2\"\n");
    text.append("serial = \"BL").append(number).append("\"\n");
  }
  return text;
}

int run(const Options& options) {
  const load::TemporaryFolder folder;
  const double sync = syncMicros(folder.path());
  const load::Gateway gateway("", chassis(options.blades));
  Blades blades(load::Gateway::endPoint(), options.blades,
                std::chrono::milliseconds(options.commandMillis));
  Orders orders(gateway.adminSocket());
  awaitBlades(orders, options.blades);
  orders.createApps(options.blades);

  const std::uint64_t commitsBefore = commits(orders);
  const double cpuBefore = load::cpuMicros(gateway.cpuClock());
  const Clock::time_point start = Clock::now();
  const std::vector<std::uint32_t> nanos = orders.run(options.blades, options.cycles);
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  const double cpu = load::cpuMicros(gateway.cpuClock()) - cpuBefore;
  const auto count = static_cast<double>(nanos.size());
  const auto written = static_cast<double>(commits(orders) - commitsBefore);
  checkJobs(orders, options);
  blades.stop();
  checkExecutions(blades, options);

  std::printf("%zu jobs over %u blades that take %u ms for each\n", nanos.size(), options.blades,
              options.commandMillis);
  std::printf("  %.0f jobs/s; a job takes p50 %.1f ms, p99 %.1f ms\n", count / seconds,
              load::percentileMicros(nanos, 0.5) / 1e3, load::percentileMicros(nanos, 0.99) / 1e3);
  std::printf("  %.2f ms CPU of the supervisor for each\n", cpu / count / 1e3);
  std::printf("  %.1f synchronised writes for each, of %.2f ms when alone\n", written / count,
              sync / 1e3);
  std::printf("  every job succeeded, every command was carried out once\n");
  return 0;
}

}  // namespace
}  // namespace jobs

int main(int argc, char** argv) {
  jobs::Options options;
  CLI::App app("Jobs through a real supervisor to simulated blades.");
  app.add_option("--blades", options.blades, "blades")->capture_default_str();
  app.add_option("--cycles", options.cycles, "times that each instance comes and goes")
      ->capture_default_str();
  app.add_option("--command-ms", options.commandMillis, "time that a blade takes for a command")
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    return jobs::run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "jobs: %s\n", error.what());
    return 1;
  }
}
