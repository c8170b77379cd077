#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "sma/messages/Command.h"
#include "sma/messages/ReportDocuments.h"
#include "sma/platform/Platform.h"

namespace sma {

/// The instance by which a report means the platform itself.
inline constexpr std::string_view kPlatformInstance = "-1";

/// The words that progress reports name commands by.
const std::vector<std::string>& operationCommands();

/// What the reports of a command do that they should not.
enum class Hitch {
  None,
  Stalls,           ///< they rest half-way
  RunsBackwards,    ///< their percentages between start and end fall
  LosesLastReport,  ///< the last one is not sent
};

/// A command that a blade carries out, and how it goes.
struct OperationPlan {
  using Duration = std::chrono::milliseconds;

  std::string app;  ///< instance that it concerns, or kPlatformInstance
  std::string command = "upgradeApp";
  unsigned steps = 4;  ///< of equal size; there is one report more than steps, that of the start
  Duration every{1000};
  bool ack = true;  ///< the reports ask for a reply
  bool succeeds = true;
  unsigned failCode = code::kFailed;  ///< told when it does not
  Hitch hitch = Hitch::None;
  Duration stall{0};                    ///< how long it rests; 0: until it is resumed
  std::optional<std::string> version;   ///< of the instance after an install or upgrade
  std::optional<std::string> hotfixes;  ///< likewise
  std::optional<std::string> token;     ///< that the blade holds after a format of its disk
};

/// A command on its way: its percentage rises from 0 with each report until it succeeds with 100 or
/// fails with its last step.
class Operation {
 public:
  explicit Operation(OperationPlan plan) : plan_(std::move(plan)) {}

  const OperationPlan& plan() const { return plan_; }
  bool isDone() const { return step_ > plan_.steps; }
  /// True between the reports that a stall lies between.
  bool isHalfWay() const { return step_ == plan_.steps / 2 + 1; }
  /// The next report; not when it is done.
  Progress next();
  /// What becomes of the instance with the success of the command; nothing when that is the
  /// platform, or when it failed.
  std::optional<AppChange> effect() const;

 private:
  OperationPlan plan_;
  unsigned step_ = 0;
};

}  // namespace sma
