#include "supervisor/admin/SlotResource.h"

#include <gtest/gtest.h>

#include "supervisor/admin/Json.h"
#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

constexpr const char* kFresh =
    "{\"slot\":4,\"name\":\"\",\"model\":\"\",\"serial\":\"\",\"state\":\"unknown\",\"isWatched\":"
    "false,\"admission\":\"none\","
    "\"hasToken\":false,\"registrations\":0,"
    "\"running\":{\"version\":\"\",\"image\":\"\",\"bytes\":0},"
    "\"cached\":{\"version\":\"\",\"image\":\"\",\"bytes\":0},"
    "\"beats\":{\"received\":0,\"duplicates\":0,\"missed\":0,\"restarts\":0,\"lastCount\":0,"
    "\"lastTimer\":0,\"sinceLastMs\":null}";

class SlotResource : public AdminFixture {
 protected:
  SlotResource() {
    engine_.slots_.resize(1);
    engine_.slots_[0].slot = 4;
  }
  Response ask(const std::string& number) {
    return getSlot(context_, {"GET", "/api/v1/slots/" + number, {number}, {}, "", ""});
  }
  Json details() { return Json::parse(ask("4").body); }
};

TEST_F(SlotResource, FreshSlot_ShowsWhatIsNotThere) {
  EXPECT_EQ(ask("4").body, kFresh + std::string(",\"monitor\":null,\"instances\":[],"
                                                "\"operations\":[]}\n"));
}

TEST_F(SlotResource, AllSlots_AreListedWithoutDetails) {
  EXPECT_EQ(getSlots(context_, {}).body, "{\"slots\":[" + std::string(kFresh) + "}]}\n");
  engine_.slots_.clear();
  EXPECT_EQ(getSlots(context_, {}).body, "{\"slots\":[]}\n");
}

TEST_F(SlotResource, BladeThere_ShowsItsStateAndCounts) {
  dme::SlotView& slot = engine_.slots_[0];
  slot.name = "left \xff";
  slot.model = "b1";
  slot.serial = "B4";
  slot.state = dme::BladeMonitor::State::kAlive;
  slot.isWatched = true;
  slot.admission = sd::Admission::kForeign;
  slot.hasToken = true;
  slot.registrations = 2;
  slot.runningVersion = "1.2";
  slot.runningImage = "r.img";
  slot.runningImageSize = 4294967295;
  slot.cachedVersion = "1.3";
  slot.cachedImage = "c.img";
  slot.cachedImageSize = 3;
  slot.beats = 18446744073709551615U;
  slot.duplicates = 5;
  slot.missed = 6;
  slot.restarts = 7;
  slot.lastCount = 8;
  slot.lastTimer = 9;
  slot.sinceLastBeat = std::chrono::milliseconds(1500);
  EXPECT_EQ(getSlots(context_, {}).body,
            "{\"slots\":[{\"slot\":4,\"name\":\"left \xEF\xBF\xBD\",\"model\":\"b1\","
            "\"serial\":\"B4\",\"state\":\"alive\","
            "\"isWatched\":true,\"admission\":\"foreign\",\"hasToken\":true,\"registrations\":2,"
            "\"running\":{\"version\":\"1.2\",\"image\":\"r.img\",\"bytes\":4294967295},"
            "\"cached\":{\"version\":\"1.3\",\"image\":\"c.img\",\"bytes\":3},"
            "\"beats\":{\"received\":18446744073709551615,\"duplicates\":5,\"missed\":6,"
            "\"restarts\":7,\"lastCount\":8,\"lastTimer\":9,\"sinceLastMs\":1500}}]}\n");
}

TEST_F(SlotResource, UnknownOrNoNumber_IsAProblem) {
  const Router router(routes(), context_);
  for (const char* number : {"5", "x", "4x", "-4", "+4", "%204", "4294967300", "0x4"}) {
    EXPECT_EQ(admin::ask(router, "GET", std::string("/api/v1/slots/") + number).status, 404u)
        << number;
  }
  EXPECT_EQ(admin::ask(router, "GET", "/api/v1/slots/5").body,
            "{\"type\":\"/problems/unknown-slot\",\"title\":\"There is no slot of this number\","
            "\"status\":404,\"detail\":\"no slot has the number '5'\","
            "\"remedy\":\"see the slots at /api/v1/slots\"}\n");
}

TEST_F(SlotResource, Monitor_ComesWithItsDisks) {
  engine_.models_["sys/chassis-1/slot-4"] = {
      {"sys/chassis-1/slot-4", "slot", {{"number", std::uint32_t{4}}}},
      {"sys/chassis-1/slot-4/monitor", "monitor", {{"loadAverage", 0.5F}}},
      {"sys/chassis-1/slot-4/monitor/disk-%2F", "disk", {{"total", std::uint64_t{1} << 60U}}},
      {"sys/chassis-1/slot-4/monitor/disk-%2Fdata", "disk", {{"total", std::uint64_t{2}}}},
  };
  EXPECT_EQ(details()["monitor"].dump(),
            "{\"dn\":\"sys/chassis-1/slot-4/monitor\",\"loadAverage\":0.5,\"disks\":["
            "{\"dn\":\"sys/chassis-1/slot-4/monitor/disk-%2F\",\"total\":1152921504606846976},"
            "{\"dn\":\"sys/chassis-1/slot-4/monitor/disk-%2Fdata\",\"total\":2}]}");
}

TEST_F(SlotResource, Instances_ComeWithFaultsAndOperations) {
  engine_.models_["sys/chassis-1/slot-4"] = {
      {"sys/chassis-1/slot-4", "slot", {}},
      {"sys/chassis-1/slot-4/app-a", "app", {{"state", base::String("started")}}},
      {"sys/chassis-1/slot-4/app-a/fault-missing", "fault", {{"count", std::uint32_t{2}}}},
      {"sys/chassis-1/slot-4/app-a/operation-install", "op", {{"percent", std::uint32_t{7}}}},
      {"sys/chassis-1/slot-4/app-ab", "app", {}},
      {"sys/chassis-1/slot-4/operation-format", "op", {{"percent", std::uint32_t{8}}}},
      {"sys/chassis-1/slot-4/reported-a", "reportedAppInstance", {{"state", std::uint8_t{255}}}},
      {"sys/chassis-1/slot-4/reported-a/fault-unexpected", "fault", {}},
  };
  const Json json = details();
  EXPECT_EQ(json["instances"].dump(),
            "[{\"dn\":\"sys/chassis-1/slot-4/app-a\",\"state\":\"started\",\"source\":\"believed\","
            "\"faults\":[{\"dn\":\"sys/chassis-1/slot-4/app-a/fault-missing\",\"count\":2}],"
            "\"operations\":[{\"dn\":\"sys/chassis-1/slot-4/app-a/operation-install\","
            "\"percent\":7}]},"
            "{\"dn\":\"sys/chassis-1/slot-4/app-ab\",\"source\":\"believed\",\"faults\":[],"
            "\"operations\":[]},"
            "{\"dn\":\"sys/chassis-1/slot-4/reported-a\",\"state\":255,\"stateName\":\"unknown\","
            "\"source\":\"reported\",\"faults\":["
            "{\"dn\":\"sys/chassis-1/slot-4/reported-a/fault-unexpected\"}],\"operations\":[]}]");
  EXPECT_EQ(json["operations"].dump(),
            "[{\"dn\":\"sys/chassis-1/slot-4/operation-format\",\"percent\":8}]");
  EXPECT_TRUE(json["monitor"].is_null());
}

}  // namespace
}  // namespace supervisor::admin
