#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <span>

#include "agctl/Session.h"

// The command line is made from tables: a noun is a row of kNouns, a verb a row of its noun.

namespace agctl {

using Action = std::function<ExitCode(Session&)>;

/// What a verb understands besides what is its own.
enum Trait : std::uint8_t {
  kPlain = 0,
  kWaits = 1,    ///< --wait
  kTimes = 2,    ///< --deliver-within, --finish-within
  kPreview = 4,  ///< --dry-run
  kAsks = 8,     ///< --yes: it destroys something
  kHidden = 16,  ///< for programs: the help does not list it
  kOrders = kWaits | kTimes | kPreview,
};

struct Verb {
  const char* name;
  const char* summary;
  const char* examples;  ///< whole command lines, one a line
  unsigned traits;
  /// Adds the verb's own arguments and returns what is done with them, once they are read.
  Action (*declare)(CLI::App& app);
};

struct Noun {
  const char* name;
  const char* summary;
  std::span<const Verb> verbs;
};

/// All of them, in the order of the help.
std::span<const Noun> nouns();

std::span<const Verb> chassisVerbs();
std::span<const Verb> slotVerbs();
std::span<const Verb> appVerbs();
std::span<const Verb> jobVerbs();
std::span<const Verb> timeZoneVerbs();
std::span<const Verb> faultVerbs();
std::span<const Verb> completionVerbs();

}  // namespace agctl
