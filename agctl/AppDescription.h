#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "agctl/Failure.h"

namespace agctl {

/// What an application instance is to be: a file in the form that the supervisor takes, and options
/// that override what it says.
struct AppDescription {
  std::string file;  ///< "-" for standard input; empty for none
  std::string id;
  std::optional<std::uint32_t> slot;
  std::string package;
  std::string version;
  std::string deployType;
  std::optional<std::uint32_t> cores;
  std::optional<std::uint32_t> memory;  ///< megabytes
  std::optional<std::uint32_t> disk;    ///< megabytes
  bool isVdp = false;

  /// The document to send. The failure is one of usage: a file that cannot be read, that is no JSON
  /// object or too long, or a description without slot or package. May block on `input`.
  Outcome<Json> document(std::istream& input) const;
};

}  // namespace agctl
