#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "model/AllClasses.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/Configured.h"

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::Configured;

// The document that starts an application, to the byte: every deploy type, with and without an
// internal management interface, on every platform.

struct Target {
  const char* name;  // of the golden file
  Config (*make)();
  const char* slot;
  const char* deployType;  // as it stands in the golden file
};

constexpr Target kTargets[] = {
    {"start", startTarget, "3", "lxc"},
    {"startVdp", startVdpTarget, "3", "lxc"},
    {"startCrowded", [] { return crowdedStartTarget(false); }, "12", "vm"},
    {"startCrowdedVdp", [] { return crowdedStartTarget(true); }, "12", "vm"},
};

struct DeployType {
  std::uint8_t value;
  const char* text;
};

constexpr DeployType kDeployTypes[] = {{1, "native"}, {2, "lxc"}, {3, "vm"}};

constexpr const char* kPlatforms[] = {"standard", "qvm1", "qvm2", "qvm3"};

/// Replaces the one place where `what` stands.
void replaceOne(std::string& text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  ASSERT_NE(at, std::string::npos) << what;
  text.replace(at, what.size(), by);
  ASSERT_EQ(text.find(what, at + by.size()), std::string::npos) << what;
}

using Row = std::tuple<Target, DeployType, const char*>;

class StartDocumentOf : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(Matrix, StartDocumentOf,
                         testing::Combine(testing::ValuesIn(kTargets),
                                          testing::ValuesIn(kDeployTypes),
                                          testing::ValuesIn(kPlatforms)),
                         [](const auto& each) {
                           return std::string(std::get<0>(each.param).name) + '_' +
                                  std::get<1>(each.param).text + '_' + std::get<2>(each.param);
                         });

TEST_P(StartDocumentOf, TargetDeployTypeAndPlatform_IsTheGoldenOne) {
  const auto& [target, deployType, platform] = GetParam();
  std::string expected = goldenOn(platform, target.name);
  if (std::string(deployType.text) != target.deployType) {
    replaceOne(expected, std::string("<installType>") + target.deployType + '<',
               std::string("<installType>") + deployType.text + '<');
    replaceOne(expected, std::string("<interfaceList type=\"") + target.deployType + '"',
               std::string("<interfaceList type=\"") + deployType.text + '"');
  }
  Config config = target.make();
  changeChildren(config, kApp, [value = deployType.value](Config& app) {
    app.set(sm::AppMo::kDeployType.id, Value(value));
  });
  const Configured configured({std::string("supervisor.platform=") + platform});
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(executorNamed("start"), config);
  EXPECT_FALSE(outcome.hasFailed) << outcome.failure.text.c_str();
  EXPECT_EQ(blades.sent(), (std::vector<SentCommand>{{target.slot, expected, "startApp"}}));
}

}  // namespace
}  // namespace zan_serviceOrchAG
