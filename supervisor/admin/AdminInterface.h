#pragma once

#include <memory>
#include <optional>
#include <string>

#include "supervisor/admin/AdminSocket.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/EmbeddedEngine.h"
#include "supervisor/admin/HttpServer.h"
#include "supervisor/admin/Router.h"

namespace supervisor::admin {

/// What people and their programs ask the supervisor: HTTP/1.1 and JSON on the socket "admin.sock"
/// in the state directory, from construction to destruction. The resources stand in Routes.cpp.
class AdminInterface {
 public:
  /// `engine` outlives this; null when it runs in another process. Only for the process that
  /// holds the state directory's lock. Throws std::runtime_error with one line that names the
  /// cause and the remedy.
  AdminInterface(const std::string& stateDir, std::string version, std::string engineEndPoint,
                 dme::Engine* engine);

  /// Blades can connect from now on. Thread-safe.
  void setReady() { context_.isReady = true; }

 private:
  std::optional<EmbeddedEngine> engine_;
  Context context_;
  Router router_;
  AdminSocket socket_;
  HttpServer server_;  // last: its thread uses the rest
};

}  // namespace supervisor::admin
