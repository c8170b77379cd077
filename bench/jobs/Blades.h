#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include "sma/Fleet.h"

namespace jobs {

/// Blades of the simulator's on a thread of their own.
class Blades {
 public:
  /// Blades in slots 1 to `count` that take this long for a command, without instances.
  Blades(const std::string& gateway, std::uint32_t count, std::chrono::milliseconds commandTime);
  ~Blades();
  Blades(const Blades&) = delete;
  Blades& operator=(const Blades&) = delete;

  /// Ends the thread; what the blades did may be asked afterwards.
  void stop();
  /// How often the blade in the slot carried out the command for the instance.
  std::uint64_t executions(std::uint32_t slot, const std::string& command,
                           const std::string& app) const;
  /// All that the blades carried out.
  std::uint64_t executions() const;

 private:
  sma::Fleet fleet_;
  std::thread thread_;
};

}  // namespace jobs
