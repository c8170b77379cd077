#pragma once

#include <mutex>
#include <string>

#include "framework/os/TimerTask.h"

namespace utils {

/// Keeps the process's idea of the local time in step with the system: a zone that is set while the
/// process runs takes effect within the hour. Thread-safe.
class TzTimer final : public os::TimerTask {
 public:
  static constexpr unsigned kInterval = 3600000;  // ms

  /// The process's one.
  static TzTimer& getInstance();

  /// Reads the zone and begins to read it again once an hour. Again has no effect.
  void start();
  /// Reads the zone now. True, and one log line of level 5, when it is not the one read last.
  bool refresh();
  /// The zone read last, as its abbreviation and its offset from UTC in seconds: "CET 3600".
  /// Empty before the first.
  std::string zone() const;

 protected:
  void onTimer() override { refresh(); }

 private:
  TzTimer() : TimerTask(kInterval) {}
  ~TzTimer() override { cancel(); }

  mutable std::mutex lock_;
  std::string zone_;  // guarded by lock_
};

}  // namespace utils
