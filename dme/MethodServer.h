#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "dme/AppInstances.h"
#include "dme/BladeAdmission.h"
#include "dme/BladeMonitor.h"
#include "dme/Chassis.h"
#include "dme/ObjectStore.h"
#include "dme/Operations.h"
#include "dme/PlatformReports.h"
#include "dme/Report.h"
#include "dme/Result.h"
#include "dme/WallClock.h"
#include "framework/base/BioStream.h"
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
  /// Hands one stimulus over for a peer. Called from any thread; must not block, nor call back.
  using Send = std::function<bool(PeerId peer, const base::OBioStream& bytes, bool urgent)>;

  struct MethodCount {
    std::string_view name;
    std::uint64_t calls = 0;
  };

  struct Counters {
    std::uint64_t undecodable = 0;     ///< bytes that are no stimulus, or not their method's
    std::uint64_t unknownMethods = 0;  ///< calls of a method that the engine does not have
    std::uint64_t answers = 0;         ///< answers to the engine's own calls
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

  Counters counters() const;

 private:
  /// What a method's function gets besides the arguments.
  struct Call {
    PeerId peer;
    const proc::StimulusHeader& header;
    base::IBioStream& stream;  // at the arguments
    TimePoint now;
  };
  /// False when the arguments do not decode.
  using Function = bool (MethodServer::*)(const Call&);
  struct Method {
    std::uint32_t classId;
    std::string_view name;
    Function function;
  };
  static constexpr std::size_t kMethods = 13;
  static const std::array<Method, kMethods>& methods();
  template <class Me>
  static constexpr Method entry(Function function);

  bool updateHeartbeat(const Call& call);
  bool validateBladeState(const Call& call);
  bool recordOsController(const Call& call);
  bool requestClusterState(const Call& call);
  bool refreshLogControl(const Call& call);
  /// Success with results that are all empty.
  template <class Me>
  bool answerEmpty(const Call& call);
  bool updatePlatformInfo(const Call& call);
  bool validateAppInstances(const Call& call);
  bool notifyAppFailure(const Call& call);
  bool updateProgress(const Call& call);
  bool updateDiskFormatStatus(const Call& call);
  bool updateUpgradeProgress(const Call& call);
  /// Hands the arguments to `work`, which stages changes or refuses with a reason, and answers
  /// when the changes are durable.
  template <class Me, class Work>
  bool record(const Call& call, Work work);
  template <class Me>
  void succeedWhenStored(const Call& call);

  void carryOut(const Method& method, std::size_t place, const Call& call);
  void fail(const Call& call, std::uint32_t code, const base::String& reason);
  template <class Me>
  void succeed(const Call& call, const typename Me::OutTuple& results);
  void watch(std::uint32_t slot, const Verdict& verdict, TimePoint now);

  ObjectStore& store_;
  Chassis& chassis_;
  BladeMonitor& monitor_;
  BladeAdmission admission_;
  const Send send_;
  const WallClock wallClock_;
  ReportCounters reports_;
  PlatformReports platforms_;
  AppInstances instances_;
  Operations operations_;

  proc::StimulusHeader header_;  // of the stimulus at hand; kept for its memory
  Counters counters_;
  std::array<std::uint64_t, kMethods> calls_{};
  std::atomic<std::uint64_t> notDurable_{0};  // also counted on the store's thread
};

}  // namespace dme
