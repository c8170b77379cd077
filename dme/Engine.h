#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "dme/base/Result.h"
#include "dme/base/WallClock.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/Inbox.h"
#include "dme/link/MethodServer.h"
#include "dme/running/Jobs.h"
#include "dme/store/CommitQueue.h"
#include "dme/store/ObjectStore.h"
#include "framework/proc/EngineLink.h"
#include "model/sd/SlotMo.h"

namespace base {
class SvcConfigParams;
}

namespace dme {

struct EngineConfig {
  std::string stateDir;     ///< made where it is missing; its parent must be there
  std::string chassisFile;  ///< read by an engine without a chassis; empty for none
  std::string endPoint;     ///< inproc://, ipc:// or tcp://
  BladeMonitor::Settings monitor;
  WallClock wallClock = systemTime;
  Jobs::Settings jobs{};

  static EngineConfig from(const base::SvcConfigParams& params);
};

/// What is known of one slot and its blade.
struct SlotView {
  std::uint32_t slot = 0;
  std::string name;
  std::string model;   ///< of the blade that is to be there
  std::string serial;  ///< of the blade that is to be there
  sd::Admission admission = sd::Admission::kNone;
  bool hasToken = false;
  std::string runningVersion;
  std::string runningImage;
  std::uint32_t runningImageSize = 0;  ///< bytes
  std::string cachedVersion;
  std::string cachedImage;
  std::uint32_t cachedImageSize = 0;  ///< bytes
  std::uint32_t registrations = 0;    ///< since the engine started
  bool isWatched = false;
  BladeMonitor::State state = BladeMonitor::State::kUnknown;
  std::optional<std::chrono::milliseconds> sinceLastBeat;
  std::uint32_t lastCount = 0;
  std::uint32_t lastTimer = 0;
  std::uint64_t beats = 0;
  std::uint64_t duplicates = 0;
  std::uint64_t missed = 0;
  std::uint64_t restarts = 0;
};

struct EngineStatus {
  std::uint64_t clusterId = 0;
  std::uint64_t epoch = 0;  ///< starts of the engine on this database
  std::size_t slots = 0;
  std::size_t watched = 0;
  std::size_t alive = 0;
  std::size_t late = 0;
  std::size_t silent = 0;
  bool areActionsHeld = false;
  std::uint64_t alarms = 0;
  std::uint64_t dropped = 0;  ///< stimuli refused on arrival or on the way out
  MethodServer::Counters methods;
  CommitQueue::Counters commits;
};

/// The management engine: what should run on the blades, and how they are.
///
/// Threads of its own: the link's, one that owns the engine's state, one that writes to the disk.
/// Any number of engines can live in a process, each on its own state directory and end point.
///
/// open(), start() and stop() are for one thread; the queries are thread-safe, take microseconds
/// and never wait for the disk.
class Engine {
 public:
  /// Opens the database and, if it is empty, reads the chassis' description. Fails with one line
  /// that names the file, the cause and what to do. Blocks on the disk.
  static Result<std::unique_ptr<Engine>> open(const EngineConfig& config);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Binds the end point and begins to take stimuli. Blades that were valid before have their
  /// grace period from now. Fails with one line when the end point cannot be bound. Call once.
  Result<void> start();
  /// Takes no more stimuli, writes and answers what it has taken, and closes link and database.
  /// Takes as long as the disk needs for what waits, usually milliseconds. Idempotent.
  void stop();

  /// What was bound, with the port that the system chose if "*" was asked for. Empty before
  /// start().
  std::string endPoint() const;

  std::vector<SlotView> slots() const;
  std::optional<SlotView> slot(std::uint32_t number) const;
  EngineStatus status() const;
  /// The object `dn` and those below it as ObjectStore::view() shows them. Of a whole tree this
  /// takes one to four microseconds an object, in which the engine's thread waits.
  std::vector<ObjectView> model(const mo::Dn& dn) const;

  // What an operator wants done. Thread-safe; none of it waits for the disk or for a blade. `done`
  // is called once: here and now with a refusal, or on the store's thread when the change is
  // durable, or when it could not be stored. It must not block.

  void order(const JobOrder& order, Done<JobView> done);
  /// What order() would say, without doing it: the job as it would be, with id 0.
  Granted<JobView> wouldOrder(const JobOrder& order);
  /// Gives a job up that is accepted, or unknown.
  void cancelJob(std::uint64_t id, Done<JobView> done);
  std::vector<JobView> jobs(const JobFilter& filter) const;
  std::optional<JobView> job(std::uint64_t id) const;

  using WatchId = JobBoard::WatchId;
  /// Calls `changed` once, as soon as the job's revision is above `revision`: here and now, or on
  /// the store's thread, where it must not block. 0 for an unknown job: then it is never called.
  WatchId watchJob(std::uint64_t id, std::uint64_t revision,
                   std::function<void(const JobView&)> changed);
  /// Afterwards it is not called any more. Waits for a call that is under way: hold no lock that
  /// the function takes.
  void unwatchJob(WatchId id);

  /// `instance` is an sd::AppInstanceMo without a name, with what belongs to it attached.
  void createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance, Done<AppView> done);
  /// The description of an instance of which nothing is on a blade.
  void deleteApp(const std::string& id, Done<AppView> done);
  Granted<AppView> wouldDeleteApp(const std::string& id);
  /// By identifier.
  std::vector<AppView> apps(std::optional<std::uint32_t> slot) const;
  std::optional<AppView> app(const std::string& id) const;

  /// What is written on the chassis, or on a slot and its blade.
  Granted<Equipment> equipment(EquipmentPlace place) const;
  void describe(EquipmentPlace place, const EquipmentChange& change, Done<Equipment> done);
  Granted<Equipment> wouldDescribe(EquipmentPlace place, const EquipmentChange& change) const;

  /// "UTC" unless set.
  std::string timeZone() const;
  /// Stores the zone, one of the system's, and makes a job for every slot whose blade is
  /// registered, in one transaction.
  void setTimeZone(const std::string& zone, Done<std::vector<JobView>> done);

 private:
  Engine(EngineConfig config, std::unique_ptr<ObjectStore> store,
         const std::optional<base::ChassisDescription>& description);
  Result<void> commitAndWait();
  void expectKnownBlades();
  void settleLast();
  void run();
  void process(const StimulusBatch& batch);
  void handle(const StimulusBatch& batch, const StimulusBatch::Entry& entry,
              os::Clock::TimePoint now);
  void tick(os::Clock::TimePoint now);
  void judge(os::Clock::TimePoint now);
  void catchUp();
  template <class T, class Work>
  void decide(const Done<T>& done, Work work);
  SlotView viewOf(const Object& slot, os::Clock::TimePoint now) const;

  const EngineConfig config_;
  Inbox inbox_;

  /// Held by the engine's thread while it works on a batch, and by the queries.
  mutable std::mutex state_;
  std::unique_ptr<ObjectStore> store_;                 // guarded by state_, save counters()
  Chassis chassis_;                                    // guarded by state_
  BladeMonitor monitor_;                               // guarded by state_
  MethodServer server_;                                // guarded by state_
  Jobs jobs_;                                          // guarded by state_, save board()
  bool isStopping_ = false;                            // guarded by state_
  std::optional<os::Clock::TimePoint> nextJudgement_;  // used by the engine's thread alone
  bool wasHeldUp_ = false;                             // used by the engine's thread alone
  std::optional<os::Clock::TimePoint> nextTick_;       // used by the engine's thread alone

  /// Set under state_ by start(), then constant; the threads that use it come later.
  std::unique_ptr<proc::EngineLink> link_;
  std::thread thread_;
};

}  // namespace dme
