#include "dme/jobs/JobSettlement.h"

#include <gtest/gtest.h>

#include "dme/store/ObjectStore.h"
#include "model/sm/AppInstanceMo.h"
#include "tests/dme/support/TempDirectory.h"

// What a blade's report of an instance says of a job on it.

namespace dme {
namespace {

struct SettlementCase {
  const char* name;
  JobVerb verb;
  bool isReported;
  std::uint8_t state;
  const char* version;
  std::optional<bool> expected;
};
void PrintTo(const SettlementCase& each, std::ostream* out) {
  *out << each.name;
}

class Settlement : public testing::TestWithParam<SettlementCase> {
 protected:
  /// The instance as reported, or null.
  const Object* reported(const SettlementCase& each) {
    if (!each.isReported) {
      return nullptr;
    }
    Object& object = store_->create<sm::AppInstanceMo>(mo::Dn("sys/reported-a1"));
    store_->set(object, sm::AppInstanceMo::kState, each.state);
    store_->set(object, sm::AppInstanceMo::kInstalledVersion, base::String(each.version));
    return &object;
  }

  dme_test::TempDirectory directory_;
  std::unique_ptr<ObjectStore> store_ = std::move(*ObjectStore::open(directory_.path()));
};

TEST_P(Settlement, ReportOfTheInstance_Tells) {
  const SettlementCase& each = GetParam();
  Job job;
  job.view.verb = each.verb;
  job.version = "2.0";
  EXPECT_EQ(isSeenDone(job, reported(each)), each.expected);
}

constexpr bool kReported = true;
constexpr bool kMissing = false;
INSTANTIATE_TEST_SUITE_P(
    Verbs, Settlement,
    testing::Values(
        SettlementCase{"InstallReported", JobVerb::kInstall, kReported, sm::kAppUnknown, "", true},
        SettlementCase{"InstallMissing", JobVerb::kInstall, kMissing, 0, "", false},
        SettlementCase{"UninstallReported", JobVerb::kUninstall, kReported, sm::kAppInactive, "1.0",
                       false},
        SettlementCase{"UninstallMissing", JobVerb::kUninstall, kMissing, 0, "", true},
        SettlementCase{"UpgradeToTheVersion", JobVerb::kUpgrade, kReported, sm::kAppActive, "2.0",
                       true},
        SettlementCase{"UpgradeStillOld", JobVerb::kUpgrade, kReported, sm::kAppActive, "1.0",
                       false},
        SettlementCase{"UpgradeWithoutVersion", JobVerb::kUpgrade, kReported, sm::kAppActive, "",
                       std::nullopt},
        SettlementCase{"UpgradeMissing", JobVerb::kUpgrade, kMissing, 0, "", false},
        SettlementCase{"StartActive", JobVerb::kStart, kReported, sm::kAppActive, "", true},
        SettlementCase{"StartInactive", JobVerb::kStart, kReported, sm::kAppInactive, "", false},
        SettlementCase{"StartUnclear", JobVerb::kStart, kReported, sm::kAppUnknown, "",
                       std::nullopt},
        SettlementCase{"StartMissing", JobVerb::kStart, kMissing, 0, "", false},
        SettlementCase{"StopInactive", JobVerb::kStop, kReported, sm::kAppInactive, "", true},
        SettlementCase{"StopActive", JobVerb::kStop, kReported, sm::kAppActive, "", false},
        SettlementCase{"StopUnclear", JobVerb::kStop, kReported, sm::kAppUnknown, "", std::nullopt},
        SettlementCase{"FormatDisk", JobVerb::kFormatDisk, kReported, sm::kAppActive, "",
                       std::nullopt},
        SettlementCase{"LogLevel", JobVerb::kLogLevel, kReported, sm::kAppActive, "",
                       std::nullopt}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(SettlementOf, UpgradeToAnUnknownVersion_IsSeenOnlyWhenTheInstanceIsMissing) {
  const dme_test::TempDirectory directory;
  const auto store = std::move(*ObjectStore::open(directory.path()));
  Object& object = store->create<sm::AppInstanceMo>(mo::Dn("sys/reported-a1"));
  store->set(object, sm::AppInstanceMo::kInstalledVersion, "2.0");
  Job job;
  job.view.verb = JobVerb::kUpgrade;
  EXPECT_EQ(isSeenDone(job, &object), std::nullopt);
  EXPECT_EQ(isSeenDone(job, nullptr), false);
}

}  // namespace
}  // namespace dme
