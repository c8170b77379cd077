#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/load/ServerProcess.h"

namespace load {

/// A folder that goes with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// A real supervisor with the real gateway, from the same build. Its end point is fixed, so there
/// is one at a time on a machine.
class Gateway {
 public:
  /// With an empty `engine` the engine is embedded; otherwise it is expected at that end point.
  /// `chassis` is the chassis' description; empty for none. Throws std::runtime_error if it is not
  /// ready in time.
  explicit Gateway(const std::string& engine = "", const std::string& chassis = "");

  static std::string endPoint();
  /// Path of the socket of its admin interface.
  std::string adminSocket() const { return folder_.path() + "/state/admin.sock"; }
  clockid_t cpuClock() const { return process_.cpuClock(); }
  std::size_t residentBytes() const { return process_.residentBytes(); }

 private:
  std::vector<std::string> command(const std::string& engine, const std::string& chassis) const;

  TemporaryFolder folder_;
  ServerProcess process_;
};

/// Registers the blades of slots 1 to `slots`. Throws std::runtime_error if one is not accepted.
void registerBlades(const std::string& endPoint, std::uint32_t slots);

}  // namespace load
