#pragma once

#include <chrono>
#include <string>
#include <tl/expected.hpp>

namespace supervisor::admin {

struct ClientResponse {
  unsigned status = 0;
  std::string body;
};

/// Asks the supervisor of a state directory with GET, over a connection of its own. Blocks up to
/// `within`. The error is the cause alone: nobody listens, no answer in time.
tl::expected<ClientResponse, std::string> get(const std::string& stateDir,
                                              const std::string& target,
                                              std::chrono::milliseconds within);

}  // namespace supervisor::admin
