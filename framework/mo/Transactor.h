#pragma once

#include <functional>

namespace mo {

/// Transactions on the objects of a service, one per thread at a time.
///
/// Whoever changes something while a transaction is open says what is to happen when it is
/// committed, and how to undo the change when it is rolled back. Nothing is locked: what one thread
/// changes, others see at once.
class Transactor {
 public:
  using Hook = std::function<void()>;

  /// `id` tells transactors apart in the log. `nesting` 1 lets a transaction that begins inside
  /// another join it; with 0 that is an error.
  Transactor(int id, int nesting);
  ~Transactor() = default;
  Transactor(const Transactor&) = delete;
  Transactor& operator=(const Transactor&) = delete;

  int id() const { return id_; }

  /// Opens a transaction on the calling thread, or joins the open one. Throws std::logic_error
  /// when one is open and nesting is not allowed.
  void begin();
  /// Ends the transaction, or this share of it, and runs the commit hooks in order once the
  /// outermost has ended. Without an open transaction it has no effect. What a hook throws leaves
  /// this call; the hooks behind it are dropped.
  void commit();
  /// Ends the transaction and runs the rollback hooks, newest first. A joined transaction that is
  /// rolled back takes the outer one with it: the outer commit then rolls back too. What a hook
  /// throws is logged at level 8, and the others still run.
  void rollback();
  /// True when the calling thread has an open transaction.
  bool isOpen() const;

  /// Runs `hook` when the calling thread's transaction is committed; at once when none is open.
  void onCommit(Hook hook);
  /// Runs `hook` when the calling thread's transaction is rolled back; never when none is open.
  void onRollback(Hook hook);

  /// A transaction for a scope: rolled back at its end unless it was committed.
  class Scope;

 private:
  const int id_;
  const bool isNestingAllowed_;
};

class [[nodiscard]] Transactor::Scope {
 public:
  explicit Scope(Transactor& transactor) : transactor_(&transactor) { transactor.begin(); }
  ~Scope() {
    if (transactor_ != nullptr) {
      transactor_->rollback();
    }
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  void commit() {
    Transactor* const transactor = transactor_;
    transactor_ = nullptr;
    if (transactor != nullptr) {
      transactor->commit();
    }
  }

 private:
  Transactor* transactor_;
};

}  // namespace mo
