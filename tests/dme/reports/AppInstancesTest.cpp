#include "dme/reports/AppInstances.h"

#include <gtest/gtest.h>

#include "model/sd/FaultMo.h"
#include "tests/dme/reports/ReportFixture.h"
#include "tests/support/LogCapture.h"

namespace dme {
namespace {

using namespace std::string_literals;

using dme_test::Lines;
using sm::AppInstanceMo;

constexpr const char* kSlotThree = "sys/chassis-1/slot-3";
constexpr const char* kSlotSeven = "sys/chassis-1/slot-7";

class AppInstancesTest : public dme_test::ReportFixture {
 protected:
  Result<void> record(std::initializer_list<method::Config> reported, std::uint64_t now = kNow,
                      std::uint32_t slot = 3) {
    return instances_->record(slot, setOf(reported), now);
  }
  /// The faults of slot 3 or `slot`, without the values that all have.
  Lines faults(const std::string& slot = kSlotThree) const {
    Lines lines;
    for (const ObjectView& view : store_->view(mo::Dn(slot))) {
      if (view.className == "fault") {
        const Object* fault = store_->find(mo::Dn(view.dn));
        lines.push_back(view.dn.substr(slot.size() + 1) + ": " +
                        fault->get(sd::FaultMo::kDetail).str());
      }
    }
    return lines;
  }
  std::string line(const std::string& dn) const {
    const auto views = store_->view(mo::Dn(dn));
    return views.empty() ? "none" : dme_test::lineOf(views[0], dn.size());
  }
};

TEST_F(AppInstancesTest, BeliefsOfTheDescription_StandBelowTheirSlot) {
  const Lines expected{
      "app-a1: appInstance appInstanceId='a1' expectedVersion='1.0' expectedState=7",
      "app-a2: appInstance appInstanceId='a2'"};
  EXPECT_EQ(linesBelow(kSlotThree), expected);
  EXPECT_TRUE(linesBelow(kSlotSeven).empty());
}

TEST_F(AppInstancesTest, ReportAsExpected_HasNoFaults) {
  ASSERT_TRUE(record({instance("a1", 7, "1.0"), instance("a2", 3, "9")}));
  EXPECT_EQ(line(std::string(kSlotThree) + "/reported-a1"),
            ": reportedAppInstance appInstanceId='a1' state=7 installedVersion='1.0' "
            "observedAt=1700000000000");
  EXPECT_TRUE(faults().empty());
  EXPECT_EQ(counters_, ReportCounters());
}

TEST_F(AppInstancesTest, EachDifference_IsAFaultBelowItsInstance) {
  ASSERT_TRUE(record({instance("a1", 3, "0.9"), instance("b1")}));
  const Lines expected{"app-a1/fault-otherState: expected started, is stopped",
                       "app-a1/fault-otherVersion: expected version 1.0, is 0.9",
                       "app-a2/fault-missing: expected, not reported",
                       "reported-b1/fault-unexpected: reported, not expected"};
  EXPECT_EQ(faults(), expected);
  EXPECT_EQ(line(std::string(kSlotThree) + "/app-a2/fault-missing"),
            ": fault kind='missing' detail='expected, not reported' since=1700000000000 "
            "observedAt=1700000000000 count=1");
}

TEST_F(AppInstancesTest, NumberOfFaults_IsLoggedWhenItChanges) {
  const test_support::LogCapture log;
  for (std::uint64_t i = 0; i < 3; ++i) {
    ASSERT_TRUE(record({instance("a1", 3, "0.9"), instance("b1")}, kNow + i));
  }
  ASSERT_TRUE(record({instance("a1"), instance("a2")}));
  ASSERT_TRUE(record({instance("a1"), instance("a2")}));
  EXPECT_EQ(log.count(5, "application instances of slot 3: 4 faults"), 1u);
  EXPECT_EQ(log.count(5, "application instances of slot 3: 0 faults"), 1u);
}

TEST_F(AppInstancesTest, StateWordThatTheGatewayDidNotKnow_IsAnotherState) {
  ASSERT_TRUE(record({instance("a1", 255), instance("a2", 255)}));
  EXPECT_EQ(faults(), Lines{"app-a1/fault-otherState: expected started, is in an unknown state"});
}

TEST_F(AppInstancesTest, StateAndVersionNotReported_AreNoDifference) {
  AppInstanceMo bare;
  bare.set(AppInstanceMo::kAppInstanceId, "a1");
  ASSERT_TRUE(record({bare.toConfig(), instance("a2")}));
  EXPECT_TRUE(faults().empty());
}

TEST_F(AppInstancesTest, FaultThatStays_CountsReportsAndKeepsItsBeginning) {
  for (std::uint64_t i = 0; i < 5; ++i) {
    ASSERT_TRUE(record({instance("a1", 7, i < 3 ? "0.8" : "0.9"), instance("a2")}, kNow + i));
  }
  EXPECT_EQ(line(std::string(kSlotThree) + "/app-a1/fault-otherVersion"),
            ": fault kind='otherVersion' detail='expected version 1.0, is 0.9' "
            "since=1700000000000 observedAt=1700000000004 count=5");
}

TEST_F(AppInstancesTest, FaultsWhoseDifferenceIsGone_Vanish) {
  ASSERT_TRUE(record({instance("a1", 3, "0.9"), instance("b1")}));
  ASSERT_TRUE(record({instance("a1", 3, "1.0"), instance("a2"), instance("b1")}));
  EXPECT_EQ(faults(), (Lines{"app-a1/fault-otherState: expected started, is stopped",
                             "reported-b1/fault-unexpected: reported, not expected"}));
  ASSERT_TRUE(record({instance("a1"), instance("a2")}));
  EXPECT_TRUE(faults().empty());
  EXPECT_EQ(namesBelow(kSlotThree),
            (std::vector<std::string>{"app-a1", "app-a2", "reported-a1", "reported-a2"}));
}

TEST_F(AppInstancesTest, FaultThatComesBack_BeginsAnew) {
  ASSERT_TRUE(record({instance("a1")}));
  ASSERT_TRUE(record({instance("a1"), instance("a2")}, kNow + 1));
  ASSERT_TRUE(record({instance("a1")}, kNow + 2));
  EXPECT_EQ(line(std::string(kSlotThree) + "/app-a2/fault-missing"),
            ": fault kind='missing' detail='expected, not reported' since=1700000000002 "
            "observedAt=1700000000002 count=1");
}

TEST_F(AppInstancesTest, EmptyReport_MissesWhatIsBelieved) {
  ASSERT_TRUE(record({instance("a1"), instance("b1")}));
  ASSERT_TRUE(record({}));
  EXPECT_EQ(faults(), (Lines{"app-a1/fault-missing: expected, not reported",
                             "app-a2/fault-missing: expected, not reported"}));
  EXPECT_EQ(errorOf(instances_->noteFailure("b1", kNow)), "there is no application instance 'b1'");
}

TEST_F(AppInstancesTest, AllOfIt_ComesBackAfterARestart) {
  ASSERT_TRUE(record({instance("a1", 3, "0.9"), instance("b1")}));
  ASSERT_TRUE(instances_->noteFailure("b1", kNow + 1));
  ASSERT_TRUE(instances_->noteFailure("a1", kNow + 2));
  const Lines before = linesBelow(kSlotThree);
  open();
  EXPECT_EQ(linesBelow(kSlotThree), before);
  ASSERT_TRUE(record({instance("a1"), instance("a2")}, kNow + 3));
  EXPECT_TRUE(faults().empty());
  EXPECT_EQ(errorOf(instances_->noteFailure("b1", kNow)), "there is no application instance 'b1'");
}

TEST_F(AppInstancesTest, SameReportAgain_CostsNoTransactionWithinAMinute) {
  ASSERT_TRUE(record({instance("a1", 3), instance("b1")}));
  ASSERT_TRUE(commit());
  const std::uint64_t before = store_->counters().transactions;
  for (std::uint64_t second = 1; second < 60; ++second) {
    ASSERT_TRUE(record({instance("a1", 3), instance("b1")}, kNow + second * 1000));
    ASSERT_TRUE(commit());
  }
  EXPECT_EQ(store_->counters().transactions, before);
  ASSERT_TRUE(record({instance("a1", 3), instance("b1")}, kNow + 60000));
  ASSERT_TRUE(commit());
  EXPECT_EQ(store_->counters().transactions, before + 1);
  open();
  EXPECT_EQ(line(std::string(kSlotThree) + "/app-a2/fault-missing"),
            ": fault kind='missing' detail='expected, not reported' since=1700000000000 "
            "observedAt=1700000060000 count=61");
}

TEST_F(AppInstancesTest, Failures_AreCountedOnTheBelievedInstance) {
  ASSERT_TRUE(record({instance("a1"), instance("a2")}));
  ASSERT_TRUE(instances_->noteFailure("a2", kNow + 1));
  ASSERT_TRUE(instances_->noteFailure("a2", kNow + 2));
  EXPECT_EQ(line(std::string(kSlotThree) + "/app-a2"),
            ": appInstance appInstanceId='a2' isFailed=true failures=2 failedAt=1700000000002");
  EXPECT_EQ(line(std::string(kSlotThree) + "/reported-a2"),
            ": reportedAppInstance appInstanceId='a2' state=7 installedVersion='1.0' "
            "observedAt=1700000000000");
}

TEST_F(AppInstancesTest, FailureOfAReportedInstance_StaysThroughReports) {
  ASSERT_TRUE(record({instance("b1")}, kNow, 7));
  ASSERT_TRUE(instances_->noteFailure("b1", kNow + 1));
  ASSERT_TRUE(record({instance("b1", 3)}, kNow + 2, 7));
  EXPECT_EQ(line(std::string(kSlotSeven) + "/reported-b1"),
            ": reportedAppInstance appInstanceId='b1' state=3 installedVersion='1.0' "
            "observedAt=1700000000002 isFailed=true failures=1 failedAt=1700000000001");
}

TEST_F(AppInstancesTest, FailureOfAnUnknownInstance_IsRefused) {
  EXPECT_EQ(errorOf(instances_->noteFailure("zz", kNow)), "there is no application instance 'zz'");
  EXPECT_EQ(errorOf(instances_->noteFailure("", kNow)), "there is no application instance ''");
  EXPECT_EQ(errorOf(instances_->noteFailure("a/\n%", kNow)),
            "there is no application instance 'a%2F%0A%25'");
  EXPECT_EQ(errorOf(instances_->noteFailure(std::string(1048576, 'x'), kNow)),
            "there is no application instance '" + std::string(64, 'x') + "'");
}

TEST_F(AppInstancesTest, OneIdentifierInTwoSlots_IsTheBelievedOneElseRefused) {
  ASSERT_TRUE(record({instance("b1"), instance("a1")}, kNow, 3));
  ASSERT_TRUE(record({instance("b1"), instance("a1")}, kNow, 7));
  // Where it is believed it is as expected, elsewhere it is not.
  EXPECT_EQ(faults(kSlotSeven), (Lines{"reported-a1/fault-unexpected: reported, not expected",
                                       "reported-b1/fault-unexpected: reported, not expected"}));
  const auto believed = instances_->find("a1");
  ASSERT_TRUE(believed);
  EXPECT_STREQ((*believed)->dn().c_str(), "sys/chassis-1/slot-3/app-a1");
  EXPECT_EQ(errorOf(instances_->noteFailure("b1", kNow)),
            "application instance 'b1' is in 2 slots");
  ASSERT_TRUE(record({}, kNow, 3));
  const auto other = instances_->find("b1");
  ASSERT_TRUE(other);
  EXPECT_STREQ((*other)->dn().c_str(), "sys/chassis-1/slot-7/reported-b1");
}

TEST_F(AppInstancesTest, HostileIdentifiers_StayOneStepOfAName) {
  const std::string hostile = "../slot-3/app-a1\0\n\xff%"s;
  const std::string longest(255, '/');
  ASSERT_TRUE(
      record({instance(hostile), instance("a/b"), instance("a%2Fb"), instance(longest)}, kNow, 7));
  EXPECT_EQ(counters_, ReportCounters());
  std::vector<std::string> names;
  for (const std::string& name : namesBelow(kSlotSeven)) {
    if (!name.ends_with("/fault-unexpected")) {
      EXPECT_EQ(name.find('/'), std::string::npos) << name;
      names.push_back(name);
    }
  }
  EXPECT_EQ(names.size(), 4u);
  EXPECT_NE(store_->find(mo::Dn(std::string(kSlotSeven) + "/reported-a%2Fb")), nullptr);
  EXPECT_NE(store_->find(mo::Dn(std::string(kSlotSeven) + "/reported-a%252Fb")), nullptr);
  EXPECT_TRUE(linesBelow(std::string(kSlotThree) + "/app-a1").empty());
  const Lines before = linesBelow(kSlotSeven);
  open();
  EXPECT_EQ(linesBelow(kSlotSeven), before);
  for (const std::string& identifier : {hostile, std::string("a/b"), longest}) {
    EXPECT_TRUE(instances_->noteFailure(identifier, kNow));
  }
  ASSERT_TRUE(record({}, kNow, 7));
  EXPECT_TRUE(linesBelow(kSlotSeven).empty());
  open();
  EXPECT_TRUE(linesBelow(kSlotSeven).empty());
}

TEST_F(AppInstancesTest, IdentifiersThatNameNothing_AreLeftOutAndCounted) {
  AppInstanceMo nameless;
  AppInstanceMo number;
  number.set(AppInstanceMo::kAppInstanceId.id, std::uint32_t{7});
  ASSERT_TRUE(
      record({nameless.toConfig(), number.toConfig(), instance(""), instance(std::string(256, 'x')),
              instance("b1", 7, "1"), instance("b1", 7, "2")},
             kNow, 7));
  EXPECT_EQ(counters_.unfitInstances, 5u);
  ASSERT_EQ(namesBelow(kSlotSeven),
            (std::vector<std::string>{"reported-b1", "reported-b1/fault-unexpected"}));
  EXPECT_EQ(store_->find(mo::Dn(std::string(kSlotSeven) + "/reported-b1"))
                ->get(AppInstanceMo::kInstalledVersion),
            "1");
}

TEST_F(AppInstancesTest, ObjectsOfOtherClasses_AreLeftOutAndCounted) {
  ASSERT_TRUE(record({disk("a"), method::Config(), monitor().toConfig()}, kNow, 7));
  EXPECT_TRUE(linesBelow(kSlotSeven).empty());
  EXPECT_EQ(counters_.unfitInstances, 0u);
  EXPECT_EQ(counters_.unfitObjects, 3u);
}

TEST_F(AppInstancesTest, ThousandInstances_AreCutAtTheBound) {
  method::ConfigSet reported;
  for (int i = 0; i < 1000; ++i) {
    reported.append(instance("b" + std::to_string(i)));
  }
  ASSERT_TRUE(instances_->record(7, reported, kNow));
  EXPECT_EQ(namesBelow(kSlotSeven).size(), 512u);  // each with its fault
  EXPECT_EQ(counters_.surplusInstances, 744u);
}

TEST_F(AppInstancesTest, UnknownSlot_IsRefusedWithoutEffect) {
  EXPECT_EQ(errorOf(record({instance("b1")}, kNow, 8)), "there is no slot 8");
  EXPECT_EQ(errorOf(instances_->noteFailure("b1", kNow)), "there is no application instance 'b1'");
}

}  // namespace
}  // namespace dme
