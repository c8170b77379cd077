#include "framework/proc/Timer.h"

#include "framework/proc/EngineCall.h"

namespace proc {

void Timer::onTimer() {
  if (isLogControlRefresh_) {
    callEngine(kRefreshLogControlClass, Stimulus::kIntentNone, true);
  }
}

}  // namespace proc
