#include "dme/store/ChangeSet.h"

#include <gtest/gtest.h>

#include <vector>

namespace dme {
namespace {

/// The set's changes in the order in which they are made, one a line.
std::vector<std::string> linesOf(const ChangeSet& changes) {
  std::vector<std::string> lines;
  for (const auto& [dn, change] : changes.objects()) {
    if (change.isRemoved) {
      lines.push_back("-" + dn);
    }
    if (!change.className.empty()) {
      lines.push_back("+" + dn + " " + change.className);
    }
    for (const auto& [property, value] : change.values) {
      const auto* number = std::get_if<std::int64_t>(&value);
      lines.push_back(dn + " " + property + (number ? "=" + std::to_string(*number) : " cleared"));
    }
  }
  return lines;
}

using Lines = std::vector<std::string>;

TEST(ChangeSet, PropertySetAgain_HasTheLastValue) {
  ChangeSet changes;
  changes.set("a", "p", std::int64_t{1});
  changes.set("a", "q", std::int64_t{1});
  changes.set("a", "p", std::int64_t{2});
  changes.set("a", "q", Cell());
  EXPECT_EQ(linesOf(changes), (Lines{"a p=2", "a q cleared"}));
}

TEST(ChangeSet, ObjectThatCameAndWent_LeavesNothing) {
  ChangeSet changes;
  changes.create("a", "slot");
  changes.set("a", "p", std::int64_t{1});
  changes.create("a/b", "slot");
  changes.remove("a");
  EXPECT_TRUE(changes.empty());
}

TEST(ChangeSet, StoredObjectRemoved_LosesWhatWasToBecomeOfItAndBelowIt) {
  ChangeSet changes;
  changes.set("a", "p", std::int64_t{1});
  changes.create("a/b", "slot");
  changes.remove("a/c");
  changes.set("a-b", "p", std::int64_t{2});
  changes.remove("a");
  EXPECT_EQ(linesOf(changes), (Lines{"-a", "a-b p=2"}));
}

TEST(ChangeSet, RemovedMadeAnewAndRemoved_IsRemoved) {
  ChangeSet changes;
  changes.remove("a");
  changes.create("a", "slot");
  changes.set("a", "p", std::int64_t{1});
  EXPECT_EQ(linesOf(changes), (Lines{"-a", "+a slot", "a p=1"}));
  changes.remove("a");
  EXPECT_EQ(linesOf(changes), (Lines{"-a"}));
}

TEST(ChangeSet, LaterChanges_WinOverEarlierOnes) {
  ChangeSet earlier;
  earlier.set("a", "p", std::int64_t{1});
  earlier.set("a", "q", std::int64_t{1});
  ChangeSet later;
  later.set("a", "p", std::int64_t{2});
  later.set("b", "p", std::int64_t{3});
  earlier.append(std::move(later));
  EXPECT_EQ(linesOf(earlier), (Lines{"a p=2", "a q=1", "b p=3"}));
}

TEST(ChangeSet, LaterRemovalOfWhatIsNotYetStored_LeavesNothing) {
  ChangeSet earlier;
  earlier.create("a", "slot");
  earlier.create("a/b", "slot");
  ChangeSet later;
  later.remove("a");
  earlier.append(std::move(later));
  EXPECT_TRUE(earlier.empty());
}

TEST(ChangeSet, LaterReplacement_RemovesWhatIsStoredFirst) {
  ChangeSet earlier;
  earlier.set("a", "p", std::int64_t{1});
  earlier.set("a/b", "p", std::int64_t{1});
  ChangeSet later;
  later.remove("a");
  later.create("a", "slot");
  later.set("a", "q", std::int64_t{2});
  earlier.append(std::move(later));
  EXPECT_EQ(linesOf(earlier), (Lines{"-a", "+a slot", "a q=2"}));
}

TEST(ChangeSet, ReplacementOfWhatIsNotYetStored_IsJustTheNewObject) {
  ChangeSet earlier;
  earlier.create("a", "slot");
  earlier.set("a", "p", std::int64_t{1});
  ChangeSet later;
  later.remove("a");
  later.create("a", "slot");
  earlier.append(std::move(later));
  EXPECT_EQ(linesOf(earlier), (Lines{"+a slot"}));
}

}  // namespace
}  // namespace dme
