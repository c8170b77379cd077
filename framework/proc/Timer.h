#pragma once

#include <atomic>

#include "framework/os/TimerTask.h"

namespace proc {

/// A service's periodic timer. Marked as the log-control refresh timer, each tick asks the engine
/// for the log level that is meant for this service; without a mark a tick does nothing.
class Timer final : public os::TimerTask {
 public:
  /// `interval` in milliseconds. Ticks once it is submitted.
  explicit Timer(unsigned interval) : TimerTask(interval) {}
  ~Timer() override { cancel(); }

  void markLogControlRefresh() { isLogControlRefresh_ = true; }
  bool isLogControlRefresh() const { return isLogControlRefresh_; }

 protected:
  void onTimer() override;

 private:
  std::atomic<bool> isLogControlRefresh_{false};
};

}  // namespace proc
