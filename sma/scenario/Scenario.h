#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sma/agent/BladeAgent.h"
#include "sma/agent/Event.h"

namespace sma {

/// A span that a count must lie in, both ends included.
struct Span {
  std::uint64_t least = 0;
  std::uint64_t most = std::numeric_limits<std::uint64_t>::max();

  bool holds(std::uint64_t count) const { return count >= least && count <= most; }
  /// "3", "at least 1", "at most 4" or "1 to 4".
  std::string text() const;
};

/// How some blades differ from conforming ones.
struct BladeScript {
  std::vector<std::uint32_t> slots;
  std::optional<std::string> token;                ///< held from the start
  std::vector<std::pair<AppRef, AppChange>> apps;  ///< in what instances differ from the usual
  std::vector<Event> events;
  std::optional<BladeAgent::Duration> commandTime;
  std::optional<double> commandJitter;
  std::optional<double> commandFailChance;
  std::vector<CommandFault> commandFaults;
};

/// What must hold of some blades at the end.
struct Expectation {
  std::vector<std::uint32_t> slots;
  std::optional<BladeAgent::State> state;
  std::optional<bool> hasToken;
  std::map<std::string, Span> counts;                       ///< by the names of countByName()
  std::map<std::string, Span> executed;                     ///< commands carried out, by name
  std::map<unsigned, Span> statuses;                        ///< replies by status code
  std::map<RequestKind, std::map<unsigned, Span>> replies;  ///< the same by what was sent
};

/// What a run of the simulator does besides conforming, and what must come of it. Read from a JSON
/// file, in which comments are allowed; docs/sma-sim.md describes it.
struct Scenario {
  std::vector<BladeScript> blades;
  std::vector<Expectation> expectations;

  /// Throws std::runtime_error with one line that names the file, the place and the cause.
  static Scenario load(const std::string& path);
  /// As load(), from text; `name` stands for the file in messages.
  static Scenario parse(const std::string& text, const std::string& name);

  /// Puts what the scripts say of the blade's slot into its settings.
  void apply(BladeAgent::Settings& settings) const;
  /// A line for each expectation that the blades do not meet, of single replies and of the whole
  /// run. A slot that no blade has is one.
  std::vector<std::string> failures(const std::vector<const BladeAgent*>& blades) const;
};

}  // namespace sma
