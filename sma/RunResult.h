#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

#include "sma/agent/BladeAgent.h"

namespace sma {

/// What a run came to.
struct RunResult {
  std::vector<const BladeAgent*> blades;  ///< borrowed
  std::chrono::milliseconds elapsed{0};
  std::uint64_t commands = 0;
  std::vector<std::string> failures;  ///< expectations that did not hold
};

/// A line for each blade with what it sent and got, then the totals and the failures. Beyond
/// `mostRows` blades only the totals are printed.
void printTable(std::ostream& out, const RunResult& result, std::size_t mostRows);
/// The same as one JSON document.
void printJson(std::ostream& out, const RunResult& result);
/// What each blade is at now: slot, state, token, beats and the last reply, a line a blade.
void printLive(std::ostream& out, const std::vector<const BladeAgent*>& blades,
               std::chrono::milliseconds elapsed);
/// One line: how many blades are in which state, and the totals so far.
std::string progressLine(const std::vector<const BladeAgent*>& blades,
                         std::chrono::milliseconds elapsed);

}  // namespace sma
