#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sma/messages/Command.h"

namespace sma {

/// What goes wrong on purpose with a command.
enum class FaultKind {
  Ignore,        ///< the command is lost: no work, no reply
  NoReply,       ///< the work is done, the reply is lost
  LateReply,     ///< comes after `delay`
  ShortReply,    ///< has three parts
  DoubleReply,   ///< comes twice
  Refuse,        ///< with `code`
  Fail,          ///< the work fails in the end, with `code`
  Stall,         ///< the work rests half-way for `lasts`
  RunBackwards,  ///< the percentages between start and end fall
  LoseReport,    ///< the last report of progress is lost, its work is done
  Die,           ///< the blade dies and comes back after `lasts`
};

struct FaultName {
  FaultKind kind;
  std::string_view name;
};

/// The names by which scenarios and requests call the kinds.
inline constexpr std::array<FaultName, 11> kFaultNames{{
    {FaultKind::Ignore, "ignore"},
    {FaultKind::NoReply, "noReply"},
    {FaultKind::LateReply, "lateReply"},
    {FaultKind::ShortReply, "shortReply"},
    {FaultKind::DoubleReply, "doubleReply"},
    {FaultKind::Refuse, "refuse"},
    {FaultKind::Fail, "fail"},
    {FaultKind::Stall, "stall"},
    {FaultKind::RunBackwards, "runBackwards"},
    {FaultKind::LoseReport, "loseReport"},
    {FaultKind::Die, "die"},
}};

std::string_view faultName(FaultKind kind);

struct CommandFault {
  using Duration = std::chrono::milliseconds;

  FaultKind kind = FaultKind::NoReply;
  unsigned times = 1;        ///< commands that it meets; 0: all, until it is cleared
  std::string command = {};  ///< the only one that it meets; empty: any
  Duration delay{1000};
  Duration lasts{0};  ///< 0: a stall ends when the faults are cleared
  unsigned code = code::kFailed;
  bool beforeReply = false;  ///< the blade dies before its reply, not amid the work
};

/// The faults that wait for a blade's commands; a command meets one. One thread.
class CommandFaults {
 public:
  explicit CommandFaults(std::vector<CommandFault> faults) : faults_(std::move(faults)) {}

  void add(const CommandFault& fault) { faults_.push_back(fault); }
  void clear() { faults_.clear(); }
  /// The fault that a command meets: the first that waits for it.
  std::optional<CommandFault> take(std::string_view command);

  const std::vector<CommandFault>& waiting() const { return faults_; }

 private:
  std::vector<CommandFault> faults_;
};

}  // namespace sma
