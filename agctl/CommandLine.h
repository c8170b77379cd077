#pragma once

#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

#include "agctl/Verb.h"

namespace agctl {

/// What the program was asked to do.
struct CommandLine {
  Options options;
  Action action;
};

/// The command line without the program's name, or the exit code when there is nothing to do: help
/// or version were printed to `out`, or an error to `err`.
std::variant<CommandLine, ExitCode> parseCommandLine(const std::vector<std::string>& arguments,
                                                     std::ostream& out, std::ostream& err);

}  // namespace agctl
