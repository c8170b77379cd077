#pragma once

#include <future>
#include <memory>
#include <optional>
#include <string>

#include "dme/store/StateLock.h"
#include "supervisor/CommandLine.h"
#include "supervisor/ServiceLibrary.h"
#include "supervisor/Signals.h"

namespace dme {
class Engine;
}

namespace supervisor::admin {
class AdminInterface;
}

namespace supervisor {

/// One run of the supervisor: hosts the engine, loads the service, drives its life cycle and ends
/// on a signal.
class Supervisor {
 public:
  /// `line` is what the process was started with; the configuration is loaded.
  explicit Supervisor(CommandLine line);
  ~Supervisor();

  /// Runs until SIGTERM or SIGINT. Throws std::runtime_error with one line that names the cause
  /// and the remedy when it cannot start. Does not return: once the engine is stopped the process
  /// is ended at once, because the service's workers never end.
  [[noreturn]] void run();

 private:
  void hostEngine();
  void openAdminInterface();
  void lockStateDirectory(const std::string& directory);
  void startService();
  void serveSignals();
  void announceReady();
  /// Whoever rotates the log has moved the file away before.
  void reopenLogFile();
  void reloadLogLevel();
  [[noreturn]] void end();

  const CommandLine line_;
  Signals signals_;                     // before every thread
  std::optional<dme::StateLock> lock_;  // held here only when the engine runs elsewhere
  std::unique_ptr<dme::Engine> engine_;
  std::unique_ptr<admin::AdminInterface> admin_;
  std::optional<ServiceLibrary> service_;
  std::future<void> starting_;
};

}  // namespace supervisor
