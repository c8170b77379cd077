#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "agctl/CommandLine.h"

namespace agctl {

/// The command line as the tables of nouns and verbs say it; parsing with it fills `line`, which
/// has to live as long.
std::unique_ptr<CLI::App> makeGrammar(CommandLine& line);

}  // namespace agctl
