#pragma once

#include <thread>

#include "serviceOrchAG/server/WorkerTask.h"
#include "tests/support/ScriptedChannel.h"

namespace test_support {

/// One worker of the request server on a thread of its own, until the end of the scope.
class RunningWorker {
 public:
  /// Serves over a channel of `channels`, which governs channels already and outlives the worker.
  RunningWorker(ScriptedChannel& channels, int number, bool left)
      : channels_(channels), task_(number, left), thread_([this] { task_.run(); }) {}
  ~RunningWorker() {
    channels_.endWorkers();
    thread_.join();
  }
  RunningWorker(const RunningWorker&) = delete;
  RunningWorker& operator=(const RunningWorker&) = delete;

 private:
  ScriptedChannel& channels_;
  zan_serviceOrchAG::WorkerTask task_;
  std::thread thread_;
};

}  // namespace test_support
