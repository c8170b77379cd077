#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>

#include "dme/chassis/Chassis.h"
#include "dme/jobs/JobNote.h"
#include "dme/jobs/JobTable.h"
#include "dme/running/GatewayCalls.h"
#include "framework/os/Clock.h"
#include "model/sd/SlotMo.h"

namespace dme {

/// Whose turn it is to have its command sent. The slots take turns in the order of their numbers;
/// of a slot's jobs the first that nothing keeps from it is sent.
///
/// Not thread-safe. What keeps a job from its turn is saved in the table, and not committed.
class JobTurns {
 public:
  using TimePoint = os::Clock::TimePoint;

  /// As many commands may be with the gateway at once, each for another slot.
  static constexpr std::size_t kMostSending = 4;
  /// Between two attempts, doubled up to the second.
  static constexpr std::chrono::seconds kFirstPause{1};
  static constexpr std::chrono::seconds kLongestPause{30};

  /// Everything outlives this.
  JobTurns(const Chassis& chassis, const GatewayCalls& gateway, JobTable& table)
      : chassis_(chassis), gateway_(gateway), table_(table) {}

  /// Something has changed by which a job's turn may have come, or it may wait for something else.
  void setDue() { isDue_ = true; }
  /// If so, brings the reasons of the waiting jobs up to date, and calls `send` for each job whose
  /// turn has come: it calls began().
  void take(TimePoint now, const std::function<void(Job&)>& send);

  /// A command for the slot is with the gateway, or is not any longer.
  void began(std::uint32_t slot) { sending_.insert(slot); }
  void ended(std::uint32_t slot);

  /// The job was not delivered: its turn comes again after a pause, which grows with the attempts.
  static void pause(Job& job, TimePoint now);
  /// Ends an accepted job's pause after the shortest one. False when it ends by then anyway.
  static bool shortenPause(Job& job, TimePoint now);

  /// A gateway has connected. It knows no blade until that has registered.
  void gatewayConnected();
  /// The slot's blade has registered. The gateway is about to learn of it, from the answer.
  void bladeRegistered(std::uint32_t slot, TimePoint now);
  /// The gateway has passed a report of the slot's blade on.
  void bladeHeard(std::uint32_t slot, TimePoint now);
  /// If the gateway would not tell that it did not send the job's command, lets its turn not come
  /// before the gateway knows the blade. False when that changes nothing.
  bool keepBack(Job& job) const;

  /// Notes of the job whether the blade must be formatted, if it must now.
  void noteForeign(Job& job) const;

  /// Why an accepted job has to wait.
  JobNote waiting(const JobView& job) const;

 private:
  Job* nextOf(std::uint32_t slot, TimePoint now);
  sd::Admission admissionOf(const JobView& job) const;
  JobObstacle obstacleOf(const JobView& job) const;
  void updateReason(Job& job, JobObstacle obstacle);

  const Chassis& chassis_;
  const GatewayCalls& gateway_;
  JobTable& table_;
  std::map<std::uint32_t, TimePoint> knownFrom_;  // since when the gateway knows the slot's blade
  std::set<std::uint32_t> sending_;               // the slots whose command is with the gateway
  std::uint32_t lastSlot_ = 0;                    // whose turn it was last
  bool isDue_ = true;
};

}  // namespace dme
