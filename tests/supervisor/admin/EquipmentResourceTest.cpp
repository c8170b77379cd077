#include "supervisor/admin/EquipmentResource.h"

#include <gtest/gtest.h>

#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

constexpr const char* kChassis = "/api/v1/chassis";
constexpr const char* kSlot = "/api/v1/slots/3";

class EquipmentResource : public AdminFixture {};

TEST_F(EquipmentResource, Change_IsThatOfTheMembersGiven) {
  engine_.equipmentAnswer_ = dme::Equipment{"left", "b1", "B3"};
  const Response slot = ask(router_, "PATCH", kSlot, R"({"serial":"B3","name":""})");
  EXPECT_EQ(slot.status, 200u);
  EXPECT_EQ(slot.body, "{\"slot\":3,\"name\":\"left\",\"model\":\"b1\",\"serial\":\"B3\"}\n");
  const Response chassis = ask(router_, "PATCH", kChassis, R"({"model":"M8"})");
  EXPECT_EQ(chassis.body, "{\"name\":\"left\",\"model\":\"b1\",\"serial\":\"B3\"}\n");
  EXPECT_EQ(engine_.described_,
            (FakeEngine::Described{{3, {"", {}, "B3"}}, {std::nullopt, {{}, "M8", {}}}}));
}

TEST_F(EquipmentResource, DryRun_ShowsWhatItWouldBe) {
  engine_.equipmentAnswer_ = dme::Equipment{"", "", "C1"};
  const Response response =
      ask(router_, "PATCH", std::string(kChassis) + "?dryRun=true", R"({"serial":"C1"})");
  EXPECT_EQ(response.body, "{\"would\":{\"name\":\"\",\"model\":\"\",\"serial\":\"C1\"}}\n");
  EXPECT_TRUE(engine_.described_.empty());
  EXPECT_EQ(engine_.wouldDescribe_.size(), 1u);
}

TEST_F(EquipmentResource, Refused_IsAProblem) {
  engine_.equipmentAnswer_ = tl::unexpected(
      dme::Refusal{dme::Refusal::Reason::kBadValue, "'0' is no serial", "give one", 0, "serial"});
  const Json problem = askInVain(router_, "PATCH", kSlot, R"({"serial":"0"})");
  EXPECT_EQ(problem["type"], "/problems/bad-value");
  EXPECT_EQ(problem["field"], "serial");
}

TEST_F(EquipmentResource, WrongRequest_ReachesNoEngine) {
  const struct {
    const char* path;
    const char* body;
    const char* type;
  } rows[] = {
      {kSlot, "{}", "/problems/bad-value"},
      {kSlot, "", "/problems/bad-value"},
      {kChassis, R"({"serial":1})", "/problems/bad-value"},
      {kChassis, R"({"number":"1"})", "/problems/unknown-field"},
      {"/api/v1/slots/x", R"({"serial":"1"})", "/problems/unknown-slot"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(askInVain(router_, "PATCH", row.path, row.body)["type"], row.type) << row.body;
  }
  EXPECT_TRUE(engine_.described_.empty());
}

}  // namespace
}  // namespace supervisor::admin
