#pragma once

#include "dme/base/WallClock.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/Answers.h"
#include "dme/reports/AppInstances.h"
#include "dme/reports/BladeEvents.h"
#include "dme/reports/Operations.h"
#include "dme/reports/PlatformReports.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "framework/core_log/LineBudget.h"

namespace dme {

/// Carries out the methods by which blades report: each keeps what it brings, and is answered when
/// that is durable, or with the reason why it is refused.
///
/// For one thread at a time. The methods return false, without an answer, when the arguments do
/// not decode.
class ReportMethods {
 public:
  /// Everything outlives this. `lines` bounds what is logged of refusals.
  ReportMethods(ObjectStore& store, Chassis& chassis, Answers& answers, core_log::LineBudget& lines,
                WallClock wallClock);

  bool updatePlatformInfo(const MethodCall& call);
  bool validateAppInstances(const MethodCall& call);
  bool notifyAppFailure(const MethodCall& call);
  bool updateProgress(const MethodCall& call);
  bool updateDiskFormatStatus(const MethodCall& call);
  bool updateUpgradeProgress(const MethodCall& call);

  const ReportCounters& counters() const { return counters_; }
  AppInstances& instances() { return instances_; }
  /// Tells what comes from now on. Borrowed; called within the methods.
  void listen(BladeEvents& events);

 private:
  /// Hands the arguments to `work`, which stages changes or refuses with a reason, and answers
  /// when the changes are durable.
  template <class Me, class Work>
  bool record(const MethodCall& call, Work work);

  Answers& answers_;
  core_log::LineBudget& lines_;
  const WallClock wallClock_;
  ReportCounters counters_;
  PlatformReports platforms_;
  AppInstances instances_;
  Operations operations_;
  BladeEvents* events_ = nullptr;
};

}  // namespace dme
