#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace supervisor {

/// What the program was asked to do.
struct CommandLine {
  std::string config;                  ///< file
  std::vector<std::string> overrides;  ///< KEY=VALUE, later ones win
  bool checkConfig = false;
  std::optional<std::string> dumpModel;  ///< the object to begin with, "" for the whole tree
};

/// The command line, or the exit code when there is nothing to run: help or version were printed,
/// or an error was.
std::variant<CommandLine, int> parseCommandLine(int argc, char** argv);

}  // namespace supervisor
