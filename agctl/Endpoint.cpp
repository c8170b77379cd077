#include "agctl/Endpoint.h"

#include <cstdlib>

#include "framework/base/SvcConfigParams.h"

namespace agctl {

tl::expected<std::string, std::string> socketPath(const std::string& socket,
                                                  const std::string& configFile) {
  if (!socket.empty()) {
    return socket;
  }
  if (!configFile.empty()) {
    auto& config = base::SvcConfigParams::getInstance();
    if (const auto loaded = config.load(configFile); !loaded) {
      return tl::unexpected(loaded.error());
    }
    return config.getStateDir().str() + "/admin.sock";
  }
  const char* fromEnvironment = std::getenv("AGCTL_SOCKET");  // NOLINT(concurrency-mt-unsafe)
  if (fromEnvironment != nullptr && *fromEnvironment != '\0') {
    return fromEnvironment;
  }
  return "/var/lib/zedd/admin.sock";
}

}  // namespace agctl
