#include "bench/load/Gateway.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "sma/Fleet.h"
#include "sma/messages/Requests.h"

namespace load {
namespace {

std::string besideThisProgram(const char* name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

}  // namespace

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "bench-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::runtime_error("cannot make a folder like " + path_);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Gateway::Gateway(const std::string& engine, const std::string& chassis)
    : process_(command(engine, chassis)) {}

std::string Gateway::endPoint() {
  return sma::defaultGateway(true);
}

std::vector<std::string> Gateway::command(const std::string& engine,
                                          const std::string& chassis) const {
  const std::string file = folder_.path() + "/zedd.toml";
  std::ofstream config(file);
  config << "[supervisor]\nstate_dir = \"" << folder_.path() << "/state\"\n"
         << "[log]\nfile = \"" << folder_.path() << "/zedd.log\"\n";
  config << "[dme]\n";
  if (!engine.empty()) {
    config << "endpoint = \"" << engine << "\"\n";
  }
  if (!chassis.empty()) {
    std::ofstream(folder_.path() + "/chassis.toml") << chassis;
    config << "chassis = \"" << folder_.path() << "/chassis.toml\"\n";
  }
  return {besideThisProgram("zedd"), "--config", file};
}

void registerBlades(const std::string& endPoint, std::uint32_t slots) {
  sma::Fleet::Settings settings;
  for (std::uint32_t slot = 1; slot <= slots; ++slot) {
    settings.slots.push_back(slot);
  }
  settings.gateway = endPoint;
  settings.runFor = std::chrono::seconds(10);
  sma::Fleet fleet(settings, {});
  const auto areRegistered = [&fleet] {
    for (const sma::BladeAgent* blade : fleet.blades()) {
      if (blade->state() != sma::BladeAgent::State::Registered) {
        return false;
      }
    }
    return true;
  };
  fleet.run([&](const sma::Fleet&) {
    if (areRegistered()) {
      fleet.stop();
    }
  });
  if (!areRegistered()) {
    throw std::runtime_error("the gateway at " + endPoint + " does not register blades");
  }
}

}  // namespace load
