#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "dme/base/WallClock.h"
#include "dme/blades/BladeAdmission.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/Answers.h"
#include "dme/link/ReportMethods.h"
#include "dme/reports/AppInstances.h"
#include "dme/reports/BladeEvents.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/BioStream.h"
#include "framework/core_log/LineBudget.h"
#include "framework/proc/Stimulus.h"

namespace dme {

/// Carries out the methods that a service calls, and answers those that want an answer. An answer
/// that tells of the store's content leaves when that content is durable.
///
/// handle() and counters() are for one thread at a time. Answers are sent on the calling thread or
/// on the store's.
class MethodServer {
 public:
  using PeerId = std::uint64_t;
  using TimePoint = BladeMonitor::TimePoint;
  using Send = Answers::Send;

  struct MethodCount {
    std::string_view name;
    std::uint64_t calls = 0;
  };

  struct Counters {
    std::uint64_t undecodable = 0;     ///< bytes that are no stimulus, or not their method's
    std::uint64_t unknownMethods = 0;  ///< calls of a method that the engine does not have
    std::uint64_t answers = 0;         ///< answers to the engine's own calls
    std::uint64_t strayAnswers = 0;    ///< of these, to no call that waits for one
    std::uint64_t strayBeats = 0;      ///< heartbeats from slots where no blade is expected
    std::uint64_t refused = 0;         ///< registrations for slots that do not exist
    std::uint64_t notDurable = 0;      ///< changes that were not stored when they should have been
    ReportCounters reports;            ///< what blades reported and was not taken as it came
    std::vector<MethodCount> methods;  ///< calls that were decoded, by method
  };

  /// Everything outlives this, and the store is closed before this goes.
  MethodServer(ObjectStore& store, Chassis& chassis, BladeMonitor& monitor, Send send,
               WallClock wallClock = systemTime);

  /// Takes the bytes of one stimulus, borrowed for the call. Bytes of any content are taken; what
  /// does not decode is counted, logged, and answered with a failure where an answer is wanted.
  void handle(PeerId peer, const unsigned char* bytes, std::size_t size, TimePoint now);

  /// When tick() has something to do.
  std::optional<TimePoint> deadline() const { return lines_.deadline(); }
  /// Tells how many lines about refusals were left out.
  void tick(TimePoint now);

  Counters counters() const;

  AppInstances& instances() { return reports_.instances(); }
  /// Tells what comes from now on. Borrowed; called on handle()'s thread.
  void listen(BladeEvents& events);

 private:
  /// False when the arguments do not decode.
  using Function = bool (*)(MethodServer& server, const MethodCall& call);
  struct Method {
    std::uint32_t classId;
    std::string_view name;
    Function function;
  };
  static constexpr std::size_t kMethods = 13;
  static const std::array<Method, kMethods>& methods();
  /// `kFunction` is one of this class or of ReportMethods.
  template <class Me, auto kFunction>
  static constexpr Method entry();

  bool updateHeartbeat(const MethodCall& call);
  bool validateBladeState(const MethodCall& call);
  bool recordOsController(const MethodCall& call);
  bool requestClusterState(const MethodCall& call);
  bool refreshLogControl(const MethodCall& call);
  /// Success with results that are all empty.
  template <class Me>
  bool answerEmpty(const MethodCall& call);

  void takeAnswer(base::IBioStream& stream, TimePoint now);
  void carryOut(const Method& method, std::size_t place, const MethodCall& call);
  void watch(std::uint32_t slot, const Verdict& verdict, TimePoint now);

  ObjectStore& store_;
  Chassis& chassis_;
  BladeMonitor& monitor_;
  BladeAdmission admission_;
  core_log::LineBudget lines_;  // about what peers send: they can send it without end
  Answers answers_;
  ReportMethods reports_;
  BladeEvents* events_ = nullptr;

  proc::StimulusHeader header_;  // of the stimulus at hand; kept for its memory
  Counters counters_;
  std::array<std::uint64_t, kMethods> calls_{};
};

}  // namespace dme
