#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "agctl/Failure.h"

namespace agctl {

/// What can stand in the place of the last word of a command line that is being typed.
struct Completion {
  bool wantsFiles = false;         ///< names of files, which the shell knows
  std::vector<std::string> words;  ///< whole words, each begins with what was typed
};

/// How the supervisor is asked for a document, by its path below the interface's root.
using Ask = std::function<Outcome<Json>(const std::string& target)>;
/// How it is found: with what was typed for --socket and --config, else empty.
using Connect = std::function<Ask(const std::string& socket, const std::string& config)>;

/// Completes `typed`, the words after the program's name up to the one that is being typed, which
/// may be empty. The supervisor is asked only where its slots, instances, jobs or hooks can stand;
/// what it cannot tell is not offered. Whatever it says, words hold nothing but letters, digits and
/// . _ : - of ASCII. Blocks as long as asking does.
Completion complete(CLI::App& grammar, const std::vector<std::string>& typed,
                    const Connect& connect);

}  // namespace agctl
