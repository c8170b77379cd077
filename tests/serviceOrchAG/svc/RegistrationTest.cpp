#include "serviceOrchAG/svc/Registration.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "framework/proc/MethodTable.h"

namespace zan_serviceOrchAG {
namespace {

/// A row of the registration; `callbacks` has a mark for execute, success, failure, format success
/// and format failure, in that order.
struct Row {
  std::string method;
  std::uint32_t classId;
  std::string callbacks;

  bool operator==(const Row&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << row.method << " " << row.classId << " " << row.callbacks;
}

std::vector<Row> actualRows() {
  std::vector<Row> rows;
  for (const Registration& row : registrations()) {
    std::string callbacks = "-----";
    callbacks[0] = row.hasExecute ? 'x' : '-';
    callbacks[1] = row.hasSuccess ? 'x' : '-';
    callbacks[2] = row.hasFailure ? 'x' : '-';
    callbacks[3] = row.hasFormatSuccess ? 'x' : '-';
    callbacks[4] = row.hasFormatFailure ? 'x' : '-';
    rows.push_back({std::string(row.method), row.classId, callbacks});
  }
  return rows;
}

const std::vector<Row> kExpected = {
    {"sysdebug::ApplyLogControl", 501, "x----"},
    {"sysdebug::RefreshLogControl", 502, "xx---"},
    {"agboot::Bootstrap", 575, "-xx--"},
    {"agboot::BootstrapDone", 576, "-xx--"},
    {"dmeapi::ClusterState", 445, "x--xx"},
    {"dmeapi::ClusterStateRequest", 446, "-xx--"},
    {"zan_dme::FsmSdAppInstanceInstallApplicationSendCommand", 601, "x--xx"},
    {"zan_dme::FsmSdAppInstanceStartApplicationSendCommand", 602, "x--xx"},
    {"zan_dme::FsmSdAppInstanceStopApplicationSendCommand", 603, "x--xx"},
    {"zan_dme::FsmSdAppInstanceUninstallApplicationSendCommand", 604, "x--xx"},
    {"zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommand", 605, "x--xx"},
    {"zan_dme::FsmSdSlotChangePlatformLogLevelSendCommand", 606, "x--xx"},
    {"zan_dme::FsmSdSlotFormatDiskStartDiskFormat", 607, "x--xx"},
    {"serverapi::OsControllerUpgradeProgress", 147, "-xx--"},
    {"serverapi::OsControllerVersion", 146, "-xx--"},
    {"serviceorchapi::ClearApplicationLogData", 402, "x--xx"},
    {"serviceorchapi::ClearSystemLogData", 403, "x--xx"},
    {"serviceorchapi::DeRegisterBlade", 405, "x--xx"},
    {"serviceorchapi::GcovRequest", 406, "x--xx"},
    {"serviceorchapi::NotifyAppFailure", 401, "-xx--"},
    {"serviceorchapi::UpdateDiskFormatStatus", 404, "-xx--"},
    {"serviceorchapi::UpdatePlatformInfo", 400, "-xx--"},
    {"serviceorchapi::UpdateProgress", 396, "-xx--"},
    {"serviceorchapi::UpdateSmaHeartbeat", 397, "-xx--"},
    {"serviceorchapi::UpdateTimeZone", 407, "x--xx"},
    {"serviceorchapi::ValidateAppInstances", 399, "-xx--"},
    {"serviceorchapi::ValidateBladeState", 398, "-xx--"},
};

TEST(Registration, Rows_AreTheTwentySevenMethodsInOrder) {
  const std::vector<Row> rows = actualRows();
  ASSERT_EQ(rows.size(), 27U);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i], kExpected[i]) << "row " << i;
  }
}

TEST(Registration, RegisterCallbacks_InstallsEveryMethod) {
  proc::MethodTable& table = proc::MethodTable::instance();
  table.clear();
  registerCallbacks();
  EXPECT_EQ(table.size(), 27U);
  for (const Row& row : kExpected) {
    const proc::MethodHandler* handler = table.find(row.classId);
    ASSERT_NE(handler, nullptr) << row;
    EXPECT_EQ(handler->name(), row.method);
  }
  table.clear();
}

}  // namespace
}  // namespace zan_serviceOrchAG
