#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "agctl/Session.h"

namespace agctl {

/// What is to be written on the chassis, or on a slot and its blade.
struct Writing {
  std::optional<std::string> name;
  std::optional<std::string> model;
  std::optional<std::string> serial;
};

/// Options for all of it. `whose` has the model and the serial number: "the chassis".
std::shared_ptr<Writing> addWriting(CLI::App& app, const std::string& whose);

/// Changes what is written at the path and shows it, or shows what it would be.
ExitCode write(Session& session, const std::string& target, const Writing& writing);

}  // namespace agctl
