#pragma once

#include <string>
#include <tl/expected.hpp>

namespace agctl {

/// The path of the supervisor's socket: `socket` if it is given; else the one in the state
/// directory that the configuration file names, if that is given; else $AGCTL_SOCKET, else the one
/// in /var/lib/zedd. The error is one line. Blocks on the disk.
tl::expected<std::string, std::string> socketPath(const std::string& socket,
                                                  const std::string& configFile);

}  // namespace agctl
