#include "framework/agboot/AgBootstrap.h"

#include "framework/core_log/Log.h"
#include "framework/proc/EngineCall.h"

namespace agboot {

AgBootstrap& AgBootstrap::get() {
  static AgBootstrap& bootstrap = *new AgBootstrap;
  return bootstrap;
}

void AgBootstrap::submitBootstrapRequest() {
  {
    const std::lock_guard guard(lock_);
    if (state_ == State::kDone) {
      return;
    }
    state_ = State::kRequested;
  }
  proc::callEngine(proc::kBootstrapClass, proc::Stimulus::kIntentBootstrap, true);
}

void AgBootstrap::bootstrapCb(bool up) {
  AgBootstrap& bootstrap = get();
  bool isDue = false;
  {
    const std::lock_guard guard(bootstrap.lock_);
    if (!up && bootstrap.state_ == State::kDone) {
      bootstrap.state_ = State::kRequested;
    }
    isDue = up && bootstrap.state_ == State::kRequested;
  }
  if (isDue) {
    bootstrap.submitBootstrapRequest();
  }
}

void AgBootstrap::processBootstrapResponse(proc::Stimulus& /*method*/) {
  {
    const std::lock_guard guard(lock_);
    if (state_ == State::kDone) {
      return;
    }
    state_ = State::kDone;
  }
  core_log::logPrintf("processBootstrapResponse", core_log::serviceLevel(), 5, "bootstrap done");
  proc::callEngine(proc::kBootstrapDoneClass, proc::Stimulus::kIntentNone, false);
}

bool AgBootstrap::isDone() const {
  const std::lock_guard guard(lock_);
  return state_ == State::kDone;
}

void AgBootstrap::reset() {
  const std::lock_guard guard(lock_);
  state_ = State::kIdle;
}

}  // namespace agboot
