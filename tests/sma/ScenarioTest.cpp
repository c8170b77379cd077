#include "sma/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sma {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(Scenario, Scripts_AreAppliedToTheirSlotsOnly) {
  const Scenario scenario = Scenario::parse(R"({
    // one blade comes from another chassis
    "blades": [{"slots": "3", "token": "foreign"},
               {"slots": "3-4", "faults": [{"fault": "silence", "at": 1.5, "for": 2}]}]
  })",
                                            "s.json");
  BladeAgent::Settings third;
  third.slot = 3;
  scenario.apply(third);
  EXPECT_EQ(third.token, "foreign");
  ASSERT_EQ(third.faults.size(), 1U);
  EXPECT_EQ(third.faults[0].at, std::chrono::milliseconds(1500));
  BladeAgent::Settings fifth;
  fifth.slot = 5;
  scenario.apply(fifth);
  EXPECT_EQ(fifth.token, "");
  EXPECT_THAT(fifth.faults, IsEmpty());
}

TEST(Scenario, Expectations_FailWithSlotCountAndSpan) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "state": "registered", "has_token": true,
          "counts": {"beats": {"min": 2}, "unsent": 0}, "statuses": {"511": {"min": 1, "max": 4}}},
          {"slots": "9"}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(
      scenario.failures({&blade}),
      ElementsAre("slot 3: is unregistered, expected registered",
                  "slot 3: holds no token, expected one", "slot 3: beats is 0, expected at least 2",
                  "slot 3: replies 511 are 0, expected 1 to 4",
                  "slot 9: is expected something of, but not simulated"));
}

TEST(Scenario, FulfilledExpectations_AreSilent) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "state": "unregistered", "counts": {"beats": {"max": 0}}}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(scenario.failures({&blade}), IsEmpty());
}

class ScenarioRefused : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(ScenarioRefused, BadText_NamesFilePlaceAndCause) {
  const auto [text, piece] = GetParam();
  try {
    Scenario::parse(text, "s.json");
    FAIL() << "took " << text;
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("s.json: "));
    EXPECT_THAT(error.what(), HasSubstr(piece));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ScenarioRefused,
    testing::Values(std::pair("{", "parse error"), std::pair("[]", "an object is needed here"),
                    std::pair(R"({"blade": []})", "unknown key 'blade'; known are blades, expect"),
                    std::pair(R"({"blades": [{}]})", "blades[0]: a text 'slots' is needed"),
                    std::pair(R"({"blades": [{"slots": "0"}]})", "blades[0]: slots: '0'"),
                    std::pair(R"({"blades": [{"slots": "1", "faults": [{"fault": "sulk"}]}]})",
                              "blades[0].faults[0]: unknown fault 'sulk'"),
                    std::pair(R"({"blades": [{"slots": "1", "faults": [{"fault": "silence",
                              "at": -1}]}]})",
                              "'at' is no number of seconds"),
                    std::pair(R"({"expect": [{"slots": "1", "state": "asleep"}]})",
                              "unknown state 'asleep'"),
                    std::pair(R"({"expect": [{"slots": "1", "counts": {"smiles": 1}}]})",
                              "unknown count 'smiles'"),
                    std::pair(R"({"expect": [{"slots": "1", "statuses": {"ok": 1}}]})",
                              "'ok' is no status code")));

TEST(Scenario, MissingFile_SaysSo) {
  EXPECT_THROW(Scenario::load("no-such-file.json"), std::runtime_error);
}

}  // namespace
}  // namespace sma
