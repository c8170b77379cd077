#pragma once

#include <atomic>
#include <string>

namespace supervisor::admin {

class EngineView;

/// What the resources know of the process they speak for.
struct Context {
  std::string version;
  const EngineView* engine = nullptr;  ///< borrowed; null when it runs in another process
  std::string engineEndPoint;
  std::atomic<bool> isReady = false;  ///< blades can connect
};

}  // namespace supervisor::admin
