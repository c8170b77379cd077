#include "supervisor/Supervisor.h"

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <thread>

#include "dme/Engine.h"
#include "dme/store/DatabaseFile.h"
#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"
#include "framework/msglyr/Bounds.h"
#include "framework/msglyr/Counters.h"
#include "framework/noxxml/Limits.h"
#include "supervisor/ExitCode.h"
#include "supervisor/admin/AdminInterface.h"

namespace supervisor {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kStartUpPoll{5};
constexpr milliseconds kSignalPoll{3'600'000};
/// Ending takes no longer than this, whatever hangs: what was acknowledged is on disk already.
constexpr milliseconds kEndWithin{1700};

base::SvcConfigParams& config() {
  return base::SvcConfigParams::getInstance();
}

/// Opens the configured file; what is wrong with it, or nothing.
std::optional<std::string> openLogFile() {
  const std::string file = config().getLogFile().str();
  const std::error_code error = file.empty() ? std::error_code() : core_log::setFile(file);
  if (!error) {
    return std::nullopt;
  }
  return "log file " + file + " cannot be opened: " + error.message();
}

void setUpLog() {
  core_log::setLevel(config().getLogLevel());
  if (const auto cause = openLogFile()) {
    throw std::runtime_error(*cause + "; set log.file to a writable path");
  }
}

void setUpBounds() {
  msglyr::Bounds bounds;
  bounds.maxMessageBytes = config().getMessageMaxBytes();
  bounds.maxParts = config().getMessageMaxParts();
  bounds.receiveHwm = config().getMessageReceiveHwm();
  bounds.maxHandshakes = config().getMessageMaxHandshakes();
  bounds.handshakeTimeout = config().getMessageHandshake();
  bounds.heartbeatInterval = config().getMessageHeartbeat();
  bounds.heartbeatTimeout = 3 * config().getMessageHeartbeat();
  msglyr::setBounds(bounds);
  noxxml::Limits limits;
  limits.maxBytes = config().getXmlMaxBytes();
  limits.maxDepth = config().getXmlMaxDepth();
  limits.maxElements = config().getXmlMaxElements();
  noxxml::setLimits(limits);
}

bool isEmbedded(const std::string& endPoint) {
  return endPoint.starts_with("inproc://");
}

void waitUntilListening() {
  while (msglyr::counters().bound == 0) {
    std::this_thread::sleep_for(kStartUpPoll);
  }
}

}  // namespace

Supervisor::Supervisor(CommandLine line) : line_(std::move(line)) {}

Supervisor::~Supervisor() = default;

void Supervisor::run() {
  setUpLog();
  setUpBounds();
  hostEngine();
  openAdminInterface();
  service_.emplace(config().getServiceLibrary().str());
  startService();
  serveSignals();
  end();
}

void Supervisor::hostEngine() {
  const std::string endPoint = config().getDmeEndpoint().str();
  const std::string stateDir = config().getStateDir().str();
  if (!isEmbedded(endPoint)) {
    lockStateDirectory(stateDir);
    core_log::logPrintf("hostEngine", core_log::serviceLevel(), 5,
                        "management engine is expected at %s", endPoint.c_str());
    return;
  }
  auto engine = dme::Engine::open(dme::EngineConfig::from(config()));
  if (!engine) {
    throw std::runtime_error(engine.error().text);
  }
  engine_ = std::move(*engine);
  if (const auto started = engine_->start(); !started) {
    throw std::runtime_error(started.error().text);
  }
}

void Supervisor::openAdminInterface() {
  admin_ = std::make_unique<admin::AdminInterface>(config().getStateDir().str(), ZAN_VERSION,
                                                   config().getDmeEndpoint().str(), engine_.get());
}

void Supervisor::lockStateDirectory(const std::string& directory) {
  if (const auto prepared = dme::prepareStateDirectory(directory); !prepared) {
    throw std::runtime_error(prepared.error().text);
  }
  auto lock = dme::StateLock::acquire(directory);
  if (!lock) {
    throw std::runtime_error(lock.error().text);
  }
  lock_ = std::move(*lock);
}

void Supervisor::startService() {
  // On a thread of its own, so that a signal ends the process while the engine is still awaited.
  starting_ = std::async(std::launch::async, [this] {
    const proc::ServicePlugin& plugin = service_->plugin();
    plugin.init(0, nullptr);
    plugin.initSvc();
    plugin.main();
    waitUntilListening();
  });
}

void Supervisor::serveSignals() {
  while (true) {
    if (starting_.valid() && starting_.wait_for(milliseconds(0)) == std::future_status::ready) {
      starting_.get();  // throws what start-up threw
      announceReady();
    }
    const bool started = !starting_.valid();
    switch (signals_.wait(started ? kSignalPoll : kStartUpPoll)) {
      case Request::Stop:
        return;
      case Request::Reload:
        reopenLogFile();
        reloadLogLevel();
        break;
      case Request::None:
        break;
    }
  }
}

void Supervisor::announceReady() {
  // Here and not by the start-up, which may still be under way while everything ends.
  admin_->setReady();
  std::cout << "zedd: ready" << std::endl;
}

void Supervisor::reopenLogFile() {
  if (const auto cause = openLogFile()) {
    core_log::logPrintf("reopenLogFile", core_log::serviceLevel(), 8,
                        "%s; lines go to the file that was open before", cause->c_str());
  }
}

void Supervisor::reloadLogLevel() {
  const auto level = base::SvcConfigParams::rereadLogLevel(line_.config, line_.overrides);
  if (!level) {
    core_log::logPrintf("reloadLogLevel", core_log::serviceLevel(), 8,
                        "log level stays as it is: %s", level.error().c_str());
    return;
  }
  core_log::setLevel(*level);
  core_log::logPrintf("reloadLogLevel", core_log::serviceLevel(), 8, "log level is %d", *level);
}

void Supervisor::end() {
  std::thread([] {
    std::this_thread::sleep_for(kEndWithin);
    _exit(kExitOk);
  }).detach();
  admin_.reset();
  const proc::ServicePlugin& plugin = service_->plugin();
  plugin.preShutdown();
  plugin.shutdown();
  if (engine_) {
    engine_->stop();
  }
  plugin.postShutdown();
  core_log::logPrintf("end", core_log::serviceLevel(), 5, "zedd ended");
  // The service's workers wait for requests until the process ends, so nothing is destroyed.
  _exit(kExitOk);
}

}  // namespace supervisor
