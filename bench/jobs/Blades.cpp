#include "bench/jobs/Blades.h"

#include <utility>

namespace jobs {
namespace {

// Below the ephemeral range, and not where simulators listen unless told otherwise.
constexpr std::uint32_t kListenBase = 22'000;

sma::Fleet::Settings settings(const std::string& gateway, std::uint32_t count,
                              std::chrono::milliseconds commandTime) {
  sma::Fleet::Settings settings;
  for (std::uint32_t slot = 1; slot <= count; ++slot) {
    settings.slots.push_back(slot);
  }
  settings.gateway = gateway;
  settings.listenBase = kListenBase;
  settings.report = std::chrono::seconds(10);
  settings.commands.time = commandTime;
  return settings;
}

}  // namespace

Blades::Blades(const std::string& gateway, std::uint32_t count,
               std::chrono::milliseconds commandTime)
    : fleet_(settings(gateway, count, commandTime), {}),
      thread_([this] { fleet_.run([](const sma::Fleet&) {}); }) {}

Blades::~Blades() {
  stop();
}

void Blades::stop() {
  if (thread_.joinable()) {
    fleet_.stop();
    thread_.join();
  }
}

std::uint64_t Blades::executions(std::uint32_t slot, const std::string& command,
                                 const std::string& app) const {
  const sma::CommandDesk::Executions& done = fleet_.blades().at(slot - 1)->desk().executions();
  const auto found = done.find({command, app});
  return found == done.end() ? 0 : found->second;
}

std::uint64_t Blades::executions() const {
  std::uint64_t sum = 0;
  for (const sma::BladeAgent* blade : fleet_.blades()) {
    for (const auto& [what, times] : blade->desk().executions()) {
      sum += times;
    }
  }
  return sum;
}

}  // namespace jobs
