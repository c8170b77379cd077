#pragma once

#include <cstdint>

namespace sysdebug {

class ApplyLogControlMe;
class RefreshLogControlMe;

/// The engine's hand on the service's log level. The levels are 0 to 8; another one changes nothing
/// and, where the engine set it, fails the method. Built with the method objects, in
/// model/sysdebug.
class LogControlEpBI {
 public:
  /// Execute callback: sets the level.
  static void processApply(ApplyLogControlMe& method, const std::uint8_t& level);
  /// Execute callback: answers the level in force.
  static void processRefresh(RefreshLogControlMe& method);
  /// Success callback: sets the level that the engine answered.
  static void processRefreshResponse(RefreshLogControlMe& method, const std::uint8_t& level);
};

}  // namespace sysdebug
