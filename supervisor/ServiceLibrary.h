#pragma once

#include <string>
#include <vector>

#include "framework/proc/ServicePlugin.h"

namespace supervisor {

/// A service library in this process. It is never unloaded: its threads run until the process
/// ends.
class ServiceLibrary {
 public:
  /// Loads the library and finds its entry. A name without a slash is looked for beside the
  /// running program, in ../lib/serviceOrchAG and ../lib next to it, and then where the system
  /// looks. Throws std::runtime_error with one line that names the library, the cause and the
  /// remedy.
  explicit ServiceLibrary(const std::string& name);

  const proc::ServicePlugin& plugin() const { return *plugin_; }
  /// What was loaded.
  const std::string& path() const { return path_; }

 private:
  const proc::ServicePlugin* plugin_ = nullptr;
  std::string path_;
};

}  // namespace supervisor
