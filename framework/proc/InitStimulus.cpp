#include "framework/proc/InitStimulus.h"

#include "framework/core_log/Log.h"
#include "framework/os/ReactiveQueue.h"
#include "framework/os/Task.h"
#include "framework/proc/Svc.h"

namespace proc {

namespace {

class InitItem final : public os::Task {
 public:
  void run() override {
    core_log::logPrintf("run", core_log::serviceLevel(), 1, "queue and pool are at work");
    InitStimulus::processed().set();
  }
};

}  // namespace

void InitStimulus::issue() {
  os::ReactiveQueue* const queue =
      Svc::instance != nullptr ? Svc::instance->reactiveQueue() : nullptr;
  if (queue != nullptr) {
    queue->submit(new InitItem);
  } else {
    InitItem().run();
  }
}

os::WaitableEvent& InitStimulus::processed() {
  static os::WaitableEvent& event = *new os::WaitableEvent;
  return event;
}

}  // namespace proc
