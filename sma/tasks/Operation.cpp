#include "sma/tasks/Operation.h"

#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;

}  // namespace

const std::vector<std::string>& operationCommands() {
  static const std::vector<std::string> kCommands{
      "installApp", "uninstallApp", "upgradeApp",         "startApp",
      "stopApp",    "formatDisk",   "uploadPlatformImage"};
  return kCommands;
}

Progress Operation::next() {
  const bool last = step_ == plan_.steps;
  const bool failed = last && !plan_.succeeds;
  Progress progress;
  progress.app = plan_.app;
  progress.command = plan_.command;
  const bool falls = plan_.hitch == Hitch::RunsBackwards && step_ > 0 && !last;
  const unsigned reached = falls ? plan_.steps - step_ : step_;
  progress.percent = 100 * (failed ? step_ - 1 : reached) / plan_.steps;
  progress.status = words().stateRunning;
  progress.ack = plan_.ack;
  if (failed) {
    progress.status = words().stateFailed;
    progress.code = plan_.failCode;
    progress.error = plan_.command + " ended with exit status 1";
  } else if (last) {
    progress.status = words().stateSucceeded;
    progress.code = code::kOk;
  }
  ++step_;
  return progress;
}

std::optional<AppChange> Operation::effect() const {
  if (!isDone() || !plan_.succeeds || plan_.app == kPlatformInstance) {
    return std::nullopt;
  }
  AppChange change{.id = plan_.app, .version = plan_.version, .hotfixes = plan_.hotfixes};
  if (plan_.command == "startApp") {
    change.running = true;
    change.installed = true;
  } else if (plan_.command == "installApp") {
    change = {.id = plan_.app,
              .version = plan_.version,
              .enabled = true,
              .running = false,
              .external = false,
              .hotfixes = "",
              .installed = true};
  } else if (plan_.command == "stopApp") {
    change.running = false;
  } else if (plan_.command == "uninstallApp") {
    change.installed = false;
  }
  return change;
}

}  // namespace sma
