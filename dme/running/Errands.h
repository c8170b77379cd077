#pragma once

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace dme {

/// What is left for the engine's thread to do, from threads that must not touch its state.
/// Thread-safe.
class Errands {
 public:
  using Errand = std::function<void()>;

  /// `wake` is called after each errand is left; it must not block.
  explicit Errands(std::function<void()> wake) : wake_(std::move(wake)) {}

  void leave(Errand errand) {
    {
      const std::lock_guard lock(mutex_);
      errands_.push_back(std::move(errand));
    }
    wake_();
  }
  /// Runs those that were left until now, in their order.
  void run() {
    std::vector<Errand> errands;
    {
      const std::lock_guard lock(mutex_);
      errands.swap(errands_);
    }
    for (const Errand& errand : errands) {
      errand();
    }
  }

 private:
  const std::function<void()> wake_;
  std::mutex mutex_;
  std::vector<Errand> errands_;  // guarded by mutex_
};

}  // namespace dme
