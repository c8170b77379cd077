#pragma once

#include <span>
#include <string_view>

#include "fuzz/support/Manner.h"

namespace fuzz {

/// Something that takes input from outside, with the properties that hold for every input.
struct Target {
  std::string_view name;  ///< of the program (after "fuzz_"), the corpus folder and the dictionary
  /// Runs one input. Returns when all properties hold, else ends the process. One thread at a time.
  void (*run)(Input input);
};

std::span<const Target> targets();
/// The target, or null.
const Target* findTarget(std::string_view name);

// The targets, a file each in fuzz/targets.
void runAdminBody(Input input);
void runAnswer(Input input);
void runAppFailure(Input input);
void runCommandProgress(Input input);
void runConfig(Input input);
void runEngine(Input input);
void runHeartbeat(Input input);
void runInbound(Input input);
void runPlatformInfo(Input input);
void runRegister(Input input);
void runRequest(Input input);
void runStimulus(Input input);
void runXml(Input input);

}  // namespace fuzz
