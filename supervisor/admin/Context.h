#pragma once

#include <atomic>
#include <cstddef>
#include <string>

namespace supervisor::admin {

class EngineView;

/// What the resources know of the process they speak for.
struct Context {
  std::string version;
  EngineView* engine = nullptr;  ///< borrowed; null when it runs in another process
  std::string engineEndPoint;
  std::atomic<bool> isReady = false;  ///< blades can connect
  /// Clients that wait for a job to change; used on the interface's thread.
  mutable std::size_t waits = 0;
};

}  // namespace supervisor::admin
