#include "framework/mo/Transactor.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LogCapture.h"

namespace {

using mo::Transactor;
using Trace = std::vector<std::string>;

class TransactorTest : public testing::Test {
 protected:
  Transactor::Hook note(const std::string& text) {
    return [this, text] {
      trace_.push_back(text);
    };
  }
  void change(const std::string& name) {
    transactor_.onCommit(note("commit " + name));
    transactor_.onRollback(note("undo " + name));
  }

  Transactor transactor_{0, 1};
  Trace trace_;
};

TEST_F(TransactorTest, Commit_RunsItsHooksInOrder) {
  transactor_.begin();
  change("a");
  change("b");
  EXPECT_TRUE(trace_.empty());
  transactor_.commit();
  EXPECT_EQ(trace_, (Trace{"commit a", "commit b"}));
  EXPECT_FALSE(transactor_.isOpen());
}

TEST_F(TransactorTest, Rollback_UndoesNewestFirst) {
  transactor_.begin();
  change("a");
  change("b");
  transactor_.rollback();
  EXPECT_EQ(trace_, (Trace{"undo b", "undo a"}));
}

TEST_F(TransactorTest, WithoutATransaction_CommitHooksRunAtOnceAndUndoNever) {
  change("a");
  transactor_.rollback();
  transactor_.commit();
  EXPECT_EQ(trace_, (Trace{"commit a"}));
}

TEST_F(TransactorTest, ScopeThatIsNotCommitted_RollsBack) {
  {
    Transactor::Scope scope(transactor_);
    change("a");
  }
  EXPECT_EQ(trace_, (Trace{"undo a"}));
  EXPECT_FALSE(transactor_.isOpen());
}

TEST_F(TransactorTest, JoinedTransaction_IsCommittedWithTheOuterOne) {
  Transactor::Scope outer(transactor_);
  {
    Transactor::Scope inner(transactor_);
    change("a");
    inner.commit();
  }
  EXPECT_TRUE(trace_.empty());
  outer.commit();
  EXPECT_EQ(trace_, (Trace{"commit a"}));
}

TEST_F(TransactorTest, JoinedTransactionRolledBack_TakesTheOuterOneWithIt) {
  Transactor::Scope outer(transactor_);
  change("a");
  {
    Transactor::Scope inner(transactor_);
    change("b");
  }
  outer.commit();
  EXPECT_EQ(trace_, (Trace{"undo b", "undo a"}));
  EXPECT_FALSE(transactor_.isOpen());
}

TEST_F(TransactorTest, NestingForbidden_Throws) {
  Transactor strict(1, 0);
  strict.begin();
  EXPECT_THROW(strict.begin(), std::logic_error);
  strict.commit();
}

TEST_F(TransactorTest, ThrowingUndo_IsLoggedAndTheOthersStillRun) {
  const test_support::LogCapture log;
  transactor_.begin();
  change("a");
  transactor_.onRollback([] { throw std::runtime_error("stuck"); });
  transactor_.rollback();
  EXPECT_EQ(trace_, (Trace{"undo a"}));
  EXPECT_TRUE(log.contains(8, "transaction could not be rolled back: stuck"));
}

TEST_F(TransactorTest, ThrowingCommitHook_LeavesNoTransactionOpen) {
  transactor_.begin();
  transactor_.onCommit([] { throw std::runtime_error("stuck"); });
  EXPECT_THROW(transactor_.commit(), std::runtime_error);
  EXPECT_FALSE(transactor_.isOpen());
}

TEST_F(TransactorTest, HookThatBegins_HasATransactionOfItsOwn) {
  transactor_.begin();
  transactor_.onCommit([this] {
    Transactor::Scope own(transactor_);
    change("own");
    own.commit();
  });
  transactor_.commit();
  EXPECT_EQ(trace_, (Trace{"commit own"}));
}

TEST_F(TransactorTest, AnotherThread_HasItsOwn) {
  transactor_.begin();
  bool isOpenThere = true;
  std::thread([&] { isOpenThere = transactor_.isOpen(); }).join();
  EXPECT_FALSE(isOpenThere);
  transactor_.commit();
}

}  // namespace
