#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/base/BioStream.h"

namespace command_round_trip {

/// Prepares the process to run executors as the gateway's service does, once.
void startService();

/// The five parts of the command that StopCommand makes, with a message id of usual length.
std::vector<std::string> stopCommandParts(std::uint32_t slot);

/// A stage of the engine's that asks for an application to be stopped, and all that the gateway
/// does with it on the service's thread: from the stage's bytes to the bytes of its outcome.
class StopCommand {
 public:
  /// Takes the slot for the blade that listens at the port of loopback, or, of several commands to
  /// one slot, the port of the first.
  StopCommand(std::uint32_t slot, unsigned port);
  ~StopCommand();
  StopCommand(const StopCommand&) = delete;
  StopCommand& operator=(const StopCommand&) = delete;

  /// False if the outcome is not success.
  bool exchange();

 private:
  const std::string slot_;
  base::OBioStream stage_;
};

}  // namespace command_round_trip
