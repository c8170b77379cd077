#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "dme/chassis/AppPhase.h"
#include "dme/jobs/JobBoard.h"
#include "dme/jobs/JobView.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/Buffer.h"
#include "framework/os/Clock.h"

namespace dme {

/// What keeps an accepted job from its turn.
enum class JobObstacle : std::uint8_t { kNone, kNoBlade, kForeignBlade, kNoGateway, kNotAnnounced };

/// A job that is not final, as the engine works on it.
struct Job {
  JobView view;
  std::chrono::milliseconds finishWithin{0};  ///< from when it is sent
  std::string version;                        ///< of an upgrade; empty when it is not known
  AppPhase phaseBefore = AppPhase::kAssumed;  ///< of the instance, before the blade was told

  // Of this run of the engine only.
  std::optional<JobView> end;           ///< given up: as it is once that is on the disk
  bool isConfirmed = false;             ///< on the disk, and whoever ordered it knows
  base::Buffer cookie;                  ///< of the attempt whose answer is awaited; empty for none
  std::optional<JobObstacle> obstacle;  ///< while accepted: as the view tells it
  os::Clock::TimePoint dueFrom{};       ///< while accepted: not sent before
  os::Clock::TimePoint deliverBy{};     ///< while accepted
  os::Clock::TimePoint finishBy{};      ///< while sending or running
  bool wasForeign = false;              ///< of a formatting: its blade was seen to need it
  bool wasSeenDone = false;             ///< while unknown: by the latest report
  std::optional<os::Clock::TimePoint> undoneSince;  ///< while unknown: first seen to be not done
  std::optional<os::Clock::TimePoint> timer;        ///< under which it is filed to be looked at
};

/// Whether a report of the blade can still tell how a job of this verb went.
constexpr bool canBeSettled(JobVerb verb) {
  return verb <= JobVerb::kStop || verb == JobVerb::kFormatDisk;
}
/// Whether nothing more is to be expected of the job: what comes nevertheless is heard.
constexpr bool isOver(const JobView& job) {
  return isFinal(job.state) || (job.state == JobState::kUnknown && !canBeSettled(job.verb));
}

/// The jobs in the store, as objects "sys/job-N", and of those that are not final what the engine
/// works with. Of jobs that are over the latest are kept.
///
/// Not thread-safe. Changes are staged in the store; those to jobs are also collected for the
/// board.
class JobTable {
 public:
  static constexpr std::size_t kMostOpen = 4096;
  static constexpr std::size_t kMostOver = 10000;

  /// The store outlives this. Reads the jobs that it holds, which are the first changes; one that
  /// makes no sense is removed.
  explicit JobTable(ObjectStore& store);

  /// Makes the job and gives it its number.
  Job& add(Job job);
  /// Stages the job as it is now, with the next revision, and gives it so. A final job leaves the
  /// living: the reference ends with the call then.
  JobView save(Job& job);
  /// Stages the job, which is given up, as `end`, with the next revision, and gives it so. Among
  /// the living it stays as it was, with its `end`, until bury() or revive().
  JobView saveEnd(Job& job, JobView end);
  /// The job's end is stored: it is so, and `follow` draws the consequences before it leaves the
  /// living. The reference ends.
  void bury(Job& job, const std::function<void(const Job& ended, JobState from)>& follow);
  /// The job's end is not stored: stages it as it was.
  void revive(Job& job);
  /// The job was never there.
  void withdraw(std::uint64_t id);
  bool hasChanges() const { return !changes_.empty(); }
  /// What was staged since the last call.
  JobChanges takeChanges();

  /// Null for one that is final or unknown.
  Job* find(std::uint64_t id);
  const Job* find(std::uint64_t id) const;
  /// The numbers of the jobs that are not final, of a slot or of all, in ascending order.
  std::vector<std::uint64_t> ofSlot(std::uint32_t slot) const;
  std::vector<std::uint64_t> living() const;
  /// A job of the instance that is not over, with a verb up to `last`, or null.
  const Job* openJobOf(std::uint32_t slot, std::string_view app, JobVerb last) const;
  /// The slots that have such jobs, in ascending order.
  std::vector<std::uint32_t> slots() const;
  /// How many are neither final nor over.
  std::size_t open() const { return open_.size(); }

 private:
  /// Files the job under what it is now. A final one is gone from the living then.
  void file(const Job& job);
  void forget(const Job& job);
  void trim();
  JobView stage(const Job& job);

  ObjectStore& store_;
  std::map<std::uint64_t, Job> jobs_;
  std::map<std::uint32_t, std::set<std::uint64_t>> bySlot_;
  std::set<std::uint64_t> open_;
  std::set<std::uint64_t> over_;
  std::uint64_t lastId_ = 0;
  JobChanges changes_;
};

}  // namespace dme
