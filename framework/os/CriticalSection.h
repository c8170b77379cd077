#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace os {

/// A re-entrant lock that serves its waiters in the order in which they came and that may be
/// destroyed by the thread that holds it.
///
/// It is a monitor: a plain mutex, held for a few instructions only, guards who owns the section,
/// how often, and who waits. What is long is the ownership, never the mutex, and so there is no
/// locked mutex left to destroy.
class CriticalSection {
 public:
  class Guard;

  CriticalSection() = default;

  /// Fine when free or held by the calling thread at any depth. While another thread holds the
  /// section or waits for it, that thread would go on with freed memory: the process is aborted.
  ~CriticalSection();

  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  /// Takes the section; blocks without limit while another thread holds it. The holder may take it
  /// again and releases it as often as it took it.
  void lock();

  /// Gives the section back; at depth zero it passes to the longest waiter directly, so that the
  /// thread that just released it cannot overtake. By a thread that does not hold it: no effect but
  /// a log line of level 8. Once another thread owns the section, the releasing thread does not
  /// touch it any more, so that the new owner may destroy it at once.
  void unlock();

  [[nodiscard]] bool isHeldByCaller() const;

  /// Threads that wait for the section at this moment.
  [[nodiscard]] unsigned waiterCount() const;

 private:
  /// A waiting thread, on that thread's own stack.
  struct Waiter {
    std::thread::id thread;
    std::condition_variable granted;
    Waiter* next = nullptr;
    bool isOwner = false;
  };

  void enqueue(Waiter& waiter);
  void passOn();

  mutable std::mutex mutex_;
  // Guarded by mutex_.
  std::thread::id owner_;
  unsigned depth_ = 0;
  Waiter* first_ = nullptr;
  Waiter* last_ = nullptr;
  unsigned waiters_ = 0;
};

/// Holds a section for a scope.
class [[nodiscard]] CriticalSection::Guard {
 public:
  explicit Guard(CriticalSection& section) : section_(&section) { section.lock(); }
  ~Guard() {
    if (section_ != nullptr) {
      section_->unlock();
    }
  }

  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  /// Leaves the section held: for an owner that is going to destroy it.
  void release() { section_ = nullptr; }

 private:
  CriticalSection* section_;
};

}  // namespace os
