#pragma once

#include <chrono>

namespace supervisor {

/// What somebody asks of the process by a signal.
enum class Request { None, Stop, Reload };

/// SIGTERM, SIGINT and SIGHUP as values. Made before any other thread, so that every thread
/// inherits the blocked signals and only wait() sees them.
class Signals {
 public:
  Signals();

  /// Blocks up to `limit`; None when nothing came.
  Request wait(std::chrono::milliseconds limit);
};

}  // namespace supervisor
