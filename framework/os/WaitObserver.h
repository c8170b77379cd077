#pragma once

#include <memory>

namespace os {

/// Is told when its thread is about to wait for another one, so that somebody else can do
/// meanwhile what only that thread does.
class WaitObserver {
 public:
  WaitObserver() = default;
  virtual ~WaitObserver() = default;
  WaitObserver(const WaitObserver&) = delete;
  WaitObserver& operator=(const WaitObserver&) = delete;

  /// On the thread that is about to wait, which may hold locks. Short; must not wait on a
  /// WaitableEvent itself.
  virtual void onWait() noexcept = 0;

  /// Makes it the calling thread's observer in the place of the former one, for as long as somebody
  /// else owns it.
  static void observeThisThread(std::weak_ptr<WaitObserver> observer);

  /// Tells the calling thread's observer, if there is one. To be called by what blocks.
  static void announceWait() noexcept;
};

}  // namespace os
