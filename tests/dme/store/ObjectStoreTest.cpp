#include "dme/store/ObjectStore.h"

#include <gtest/gtest.h>

#include <future>
#include <limits>

#include "model/sd/ChassisMo.h"
#include "model/sd/SlotMo.h"
#include "model/sd/SystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

bool commitAndWait(ObjectStore& store) {
  std::promise<bool> stored;
  store.commit([&](const Result<void>& outcome) { stored.set_value(outcome.has_value()); });
  return stored.get_future().get();
}

std::unique_ptr<ObjectStore> openStore(const std::string& directory) {
  Result<std::unique_ptr<ObjectStore>> store = ObjectStore::open(directory);
  EXPECT_TRUE(store) << store.error().text;
  return store ? std::move(*store) : nullptr;
}

const mo::Dn kSlot("sys/chassis-1/slot-3");

TEST(ObjectStore, DurableProperties_ComeBackAndVolatileOnesDoNot) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    Object& slot = store->create<sd::SlotMo>(kSlot);
    store->set(slot, sd::SlotMo::kNumber, 3U);
    store->set(slot, sd::SlotMo::kToken, base::String("t"));
    store->set(slot, sd::SlotMo::kAdmission, std::uint8_t{255});
    store->set(slot, sd::SlotMo::kRunningImageSize, std::numeric_limits<std::uint32_t>::max());
    store->set(slot, sd::SlotMo::kRegistrations, 7U);
    ASSERT_TRUE(commitAndWait(*store));
  }
  const auto store = openStore(directory.path());
  const Object* slot = store->find(kSlot);
  ASSERT_NE(slot, nullptr);
  EXPECT_TRUE(slot->is<sd::SlotMo>());
  EXPECT_EQ(slot->get(sd::SlotMo::kNumber), 3u);
  EXPECT_EQ(slot->get(sd::SlotMo::kToken), "t");
  EXPECT_EQ(slot->get(sd::SlotMo::kAdmission), 255);
  EXPECT_EQ(slot->get(sd::SlotMo::kRunningImageSize), 4294967295u);
  EXPECT_EQ(slot->get(sd::SlotMo::kRegistrations), 0u);
  EXPECT_EQ(slot->get(sd::SlotMo::kLabel), "");
}

TEST(ObjectStore, LargestNumbersAndBools_ComeBack) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    Object& system = store->create<sd::SystemMo>(mo::Dn("sys"));
    store->set(system, sd::SystemMo::kClusterId, std::numeric_limits<std::uint64_t>::max());
    Object& chassis = store->create<sd::ChassisMo>(mo::Dn("sys/chassis-1"));
    store->set(chassis, sd::ChassisMo::kIsDescribed, true);
    ASSERT_TRUE(commitAndWait(*store));
  }
  const auto store = openStore(directory.path());
  EXPECT_EQ(store->find(mo::Dn("sys"))->get(sd::SystemMo::kClusterId), 18446744073709551615ULL);
  EXPECT_TRUE(store->find(mo::Dn("sys/chassis-1"))->get(sd::ChassisMo::kIsDescribed));
}

TEST(ObjectStore, ChangeToTheSameValue_CostsNoTransaction) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  Object& slot = store->create<sd::SlotMo>(kSlot);
  store->set(slot, sd::SlotMo::kToken, base::String("t"));
  ASSERT_TRUE(commitAndWait(*store));
  store->set(slot, sd::SlotMo::kToken, base::String("t"));
  store->set(slot, sd::SlotMo::kRegistrations, 1U);
  ASSERT_TRUE(commitAndWait(*store));
  EXPECT_EQ(store->counters().transactions, 1u);
}

TEST(ObjectStore, ClosedWithoutCommit_HasStoredTheChanges) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    store->create<sd::SlotMo>(kSlot);
  }
  EXPECT_NE(openStore(directory.path())->find(kSlot), nullptr);
}

TEST(ObjectStore, Closed_LeavesNoLogToReplay) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  store->create<sd::SlotMo>(kSlot);
  ASSERT_TRUE(commitAndWait(*store));
  store->close();
  EXPECT_EQ(std::filesystem::file_size(directory.file("engine.db-wal")), 0u);
  store->create<sd::SystemMo>(mo::Dn("sys"));
  EXPECT_FALSE(commitAndWait(*store));
}

TEST(ObjectStore, Below_GivesTheSubtreeWithoutItsRootOrNeighbours) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  for (const char* dn : {"sys", "sys/chassis-1", "sys/chassis-1/slot-1", "sys/chassis-1/slot-10",
                         "sys/chassis-10", "sys/chassis-1-spare"}) {
    store->create<sd::SlotMo>(mo::Dn(dn));
  }
  std::vector<std::string> names;
  for (const Object* object : store->below(mo::Dn("sys/chassis-1"))) {
    names.push_back(object->dn().c_str());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"sys/chassis-1/slot-1", "sys/chassis-1/slot-10"}));
}

TEST(ObjectStore, RemovedObject_IsGoneWithAllBelowItAndStaysGone) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    for (const char* dn : {"sys", "sys/a", "sys/a/b", "sys/a/b/c", "sys/ab"}) {
      store->create<sd::SlotMo>(mo::Dn(dn));
    }
    ASSERT_TRUE(commitAndWait(*store));
    store->remove(store->find(mo::Dn("sys/a"))->dn());
    store->remove(mo::Dn("sys/nothing"));
    EXPECT_EQ(store->find(mo::Dn("sys/a")), nullptr);
    EXPECT_EQ(store->find(mo::Dn("sys/a/b/c")), nullptr);
    EXPECT_EQ(store->size(), 2u);
    ASSERT_TRUE(commitAndWait(*store));
    EXPECT_EQ(store->counters().transactions, 2u);
  }
  const auto store = openStore(directory.path());
  EXPECT_EQ(store->size(), 2u);
  EXPECT_NE(store->find(mo::Dn("sys/ab")), nullptr);
}

TEST(ObjectStore, RemovedAndMadeAnewBeforeTheCommit_HasOnlyTheNewValues) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    store->set(store->create<sd::SlotMo>(kSlot), sd::SlotMo::kToken, base::String("t"));
    ASSERT_TRUE(commitAndWait(*store));
    store->remove(kSlot);
    store->set(store->create<sd::SlotMo>(kSlot), sd::SlotMo::kLabel, base::String("n"));
    ASSERT_TRUE(commitAndWait(*store));
  }
  const auto store = openStore(directory.path());
  EXPECT_EQ(store->find(kSlot)->get(sd::SlotMo::kToken), "");
  EXPECT_EQ(store->find(kSlot)->get(sd::SlotMo::kLabel), "n");
}

TEST(ObjectStore, RemovedAndRestored_IsAsItWasWithAllBelowIt) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    for (const char* dn : {"sys", "sys/a", "sys/a/b", "sys/ab"}) {
      store->set(store->create<sd::SlotMo>(mo::Dn(dn)), sd::SlotMo::kLabel, base::String(dn));
    }
    ASSERT_TRUE(commitAndWait(*store));
    EXPECT_TRUE(store->copy(mo::Dn("sys/nothing")).empty());
    const std::vector<Object> copies = store->copy(mo::Dn("sys/a"));
    EXPECT_EQ(copies.size(), 2u);
    store->remove(mo::Dn("sys/a"));
    ASSERT_TRUE(commitAndWait(*store));
    store->restore(copies);
    ASSERT_TRUE(commitAndWait(*store));
  }
  const auto store = openStore(directory.path());
  EXPECT_EQ(store->size(), 4u);
  for (const char* dn : {"sys/a", "sys/a/b"}) {
    EXPECT_EQ(store->find(mo::Dn(dn))->get(sd::SlotMo::kLabel), dn);
  }
}

TEST(ObjectStore, ClearedProperty_HasNoValueAfterwards) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    Object& slot = store->create<sd::SlotMo>(kSlot);
    store->set(slot, sd::SlotMo::kToken, base::String("t"));
    ASSERT_TRUE(commitAndWait(*store));
    store->clear(slot, sd::SlotMo::kToken);
    EXPECT_EQ(slot.get(sd::SlotMo::kToken), "");
    ASSERT_TRUE(commitAndWait(*store));
    store->clear(slot, sd::SlotMo::kToken);
    ASSERT_TRUE(commitAndWait(*store));
    EXPECT_EQ(store->counters().transactions, 2u);
  }
  EXPECT_EQ(openStore(directory.path())->find(kSlot)->get(sd::SlotMo::kToken), "");
}

TEST(ObjectStore, AssignedValues_ReplaceThoseOfTheGroupsAndNoOthers) {
  const dme_test::TempDirectory directory;
  sm::MonitorMo report;
  report.set(sm::MonitorMo::kOsVersion, "1.2");
  report.set(sm::MonitorMo::kCpuMinus1, 0.5F);
  {
    const auto store = openStore(directory.path());
    Object& monitor = store->create<sm::MonitorMo>(kSlot.child("monitor"));
    store->set(monitor, sm::MonitorMo::kSysUptime, "3 days");
    store->set(monitor, sm::MonitorMo::kObservedAt, 7U);
    EXPECT_TRUE(store->assign(monitor, report, mo::kReportGroups));
    EXPECT_FALSE(store->assign(monitor, report, mo::kReportGroups));
    ASSERT_TRUE(commitAndWait(*store));
    EXPECT_FALSE(store->assign(monitor, report, mo::kReportGroups));
    ASSERT_TRUE(commitAndWait(*store));
    EXPECT_EQ(store->counters().transactions, 1u);
  }
  const auto store = openStore(directory.path());
  const Object* monitor = store->find(kSlot.child("monitor"));
  EXPECT_EQ(monitor->get(sm::MonitorMo::kOsVersion), "1.2");
  EXPECT_EQ(monitor->get(sm::MonitorMo::kCpuMinus1), 0.5F);
  EXPECT_FALSE(monitor->has(sm::MonitorMo::kSysUptime));
  EXPECT_EQ(monitor->get(sm::MonitorMo::kObservedAt), 7u);
}

TEST(ObjectStore, ValueThatIsNotANumber_DoesNotBlockTheDatabase) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    Object& monitor = store->create<sm::MonitorMo>(kSlot);
    store->set(monitor, sm::MonitorMo::kCpuMinus1, std::numeric_limits<float>::quiet_NaN());
    store->set(monitor, sm::MonitorMo::kCpuMinus5, std::numeric_limits<float>::infinity());
    ASSERT_TRUE(commitAndWait(*store));
  }
  const auto store = openStore(directory.path());
  EXPECT_FALSE(store->find(kSlot)->has(sm::MonitorMo::kCpuMinus1));
  EXPECT_EQ(store->find(kSlot)->get(sm::MonitorMo::kCpuMinus5),
            std::numeric_limits<float>::infinity());
}

/// What a process that is killed now would leave as the monitor's observation.
std::uint64_t storedObservation(const std::string& directory) {
  const dme_test::TempDirectory copy;
  for (const char* file : {"/engine.db", "/engine.db-wal"}) {
    std::filesystem::copy_file(directory + file, copy.path() + file);
  }
  return openStore(copy.path())->find(kSlot)->get(sm::MonitorMo::kObservedAt);
}

TEST(ObjectStore, Observation_IsStoredWithAChangeAndElseOnceAMinute) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  Object& monitor = store->create<sm::MonitorMo>(kSlot);
  const auto observe = [&](std::uint64_t now, bool hasChanged) {
    const bool isStored = store->observe(monitor, sm::MonitorMo::kObservedAt, now, hasChanged);
    EXPECT_EQ(monitor.get(sm::MonitorMo::kObservedAt), now);
    EXPECT_TRUE(commitAndWait(*store));
    EXPECT_EQ(storedObservation(directory.path()) == now, isStored) << now;
    return isStored;
  };
  EXPECT_TRUE(observe(1000, false));  // the first one
  EXPECT_FALSE(observe(2000, false));
  EXPECT_TRUE(observe(2000, true));  // though it shows already
  EXPECT_FALSE(observe(61999, false));
  EXPECT_TRUE(observe(62000, false));
  EXPECT_FALSE(observe(63000, false));
  EXPECT_TRUE(observe(5000, false));  // the clock was set back
}

TEST(ObjectStore, ObservationAfterAReopening_IsStored) {
  const dme_test::TempDirectory directory;
  {
    const auto store = openStore(directory.path());
    Object& monitor = store->create<sm::MonitorMo>(kSlot);
    EXPECT_TRUE(store->observe(monitor, sm::MonitorMo::kObservedAt, 1000, true));
  }
  const auto store = openStore(directory.path());
  Object* monitor = store->find(kSlot);
  EXPECT_EQ(monitor->get(sm::MonitorMo::kObservedAt), 1000u);
  EXPECT_TRUE(store->observe(*monitor, sm::MonitorMo::kObservedAt, 2000, false));
}

/// Opens a store whose database was changed behind its back.
std::string errorAfter(const dme_test::TempDirectory& directory, const std::string& sql) {
  {
    const auto store = openStore(directory.path());
    Object& slot = store->create<sd::SlotMo>(kSlot);
    store->set(slot, sd::SlotMo::kAdmission, std::uint8_t{1});
    store->set(slot, sd::SlotMo::kToken, base::String("t"));
  }
  {
    Result<Database> database = Database::open(directory.path());
    EXPECT_TRUE(database);
    const Result<void> done = database->connection().execute(sql);
    EXPECT_TRUE(done) << done.error().text;
  }
  const Result<std::unique_ptr<ObjectStore>> store = ObjectStore::open(directory.path());
  return store ? "opened" : store.error().text;
}

TEST(ObjectStore, ContentThatDoesNotFit_IsRefusedNamingIt) {
  const struct {
    const char* sql;
    const char* finding;
  } kCases[] = {
      {"UPDATE property SET value = 256 WHERE name = 'admission'",
       "unfit value of admission at sys/chassis-1/slot-3"},
      {"UPDATE property SET value = -1 WHERE name = 'admission'",
       "unfit value of admission at sys/chassis-1/slot-3"},
      {"UPDATE property SET value = '1' WHERE name = 'admission'",
       "unfit value of admission at sys/chassis-1/slot-3"},
      {"UPDATE property SET value = 5 WHERE name = 'token'",
       "unfit value of token at sys/chassis-1/slot-3"},
      {"UPDATE property SET name = 'colour' WHERE name = 'token'",
       "unfit value of colour at sys/chassis-1/slot-3"},
      {"UPDATE object SET class = 'fan'", "unknown class fan"},
  };
  for (const auto& each : kCases) {
    const dme_test::TempDirectory directory;
    const std::string error = errorAfter(directory, each.sql);
    const std::string expected = directory.file("engine.db") + " cannot be loaded (";
    EXPECT_TRUE(error.starts_with(expected)) << error;
    EXPECT_NE(error.find(each.finding), std::string::npos) << error;
  }
}

std::vector<std::string> namesOf(const std::vector<ObjectView>& views) {
  std::vector<std::string> names;
  for (const ObjectView& view : views) {
    names.push_back(view.dn);
  }
  return names;
}

TEST(ObjectStore, View_IsOfTheObjectAndThoseBelow) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  for (const char* dn : {"sys", "sys/slot-1", "sys/slot-1-a", "sys/slot-1/x", "sys/slot-10"}) {
    store->create<sd::SlotMo>(mo::Dn(dn));
  }
  using Names = std::vector<std::string>;
  EXPECT_EQ(namesOf(store->view(mo::Dn("sys/slot-1"))), (Names{"sys/slot-1", "sys/slot-1/x"}));
  EXPECT_EQ(namesOf(store->view(mo::Dn())),
            (Names{"sys", "sys/slot-1", "sys/slot-1-a", "sys/slot-1/x", "sys/slot-10"}));
  EXPECT_EQ(namesOf(store->view(mo::Dn("sys"))).size(), 5u);
  for (const char* unknown : {"sy", "sys/", "sys/slot-2", "sys/slot-1/", "/"}) {
    EXPECT_TRUE(store->view(mo::Dn(unknown)).empty()) << unknown;
  }
}

TEST(ObjectStore, View_HasTheSetPropertiesAndNoToken) {
  const dme_test::TempDirectory directory;
  const auto store = openStore(directory.path());
  Object& slot = store->create<sd::SlotMo>(kSlot);
  EXPECT_EQ(store->view(kSlot),
            (std::vector{ObjectView{"sys/chassis-1/slot-3", "slot", {{"hasToken", false}}}}));
  store->set(slot, sd::SlotMo::kNumber, 3U);
  store->set(slot, sd::SlotMo::kToken, base::String("t"));
  EXPECT_EQ(
      store->view(kSlot),
      (std::vector{ObjectView{
          "sys/chassis-1/slot-3", "slot", {{"number", method::Value(3U)}, {"hasToken", true}}}}));
}

}  // namespace
}  // namespace dme
