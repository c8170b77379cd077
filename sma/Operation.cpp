#include "sma/Operation.h"

#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;

constexpr unsigned kCodeOk = 100;
constexpr unsigned kCodeFailed = 503;

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
  progress.percent = 100 * (failed ? step_ - 1 : step_) / plan_.steps;
  progress.status = words().stateRunning;
  progress.ack = plan_.ack;
  if (failed) {
    progress.status = words().stateFailed;
    progress.code = kCodeFailed;
    progress.error = plan_.command + " ended with exit status 1";
  } else if (last) {
    progress.status = words().stateSucceeded;
    progress.code = kCodeOk;
  }
  ++step_;
  return progress;
}

std::optional<AppChange> Operation::effect() const {
  if (!isDone() || !plan_.succeeds || plan_.app == kPlatformInstance) {
    return std::nullopt;
  }
  AppChange change{.id = plan_.app, .version = plan_.version, .hotfixes = plan_.hotfixes};
  if (plan_.command == "startApp" || plan_.command == "installApp") {
    change.running = true;
    change.installed = true;
  } else if (plan_.command == "stopApp") {
    change.running = false;
  } else if (plan_.command == "uninstallApp") {
    change.installed = false;
  }
  return change;
}

}  // namespace sma
