#include "agctl/Follow.h"

#include <algorithm>
#include <utility>

#include "agctl/Problem.h"
#include "agctl/Progress.h"

namespace agctl {
namespace {

using std::chrono::milliseconds;
using TimePoint = os::Clock::TimePoint;

/// So many jobs are waited for at the supervisor; it has more connections, for others. More jobs
/// than that are asked for in turns instead.
constexpr std::size_t kMostWaits = 16;
constexpr milliseconds kLongestWait{60'000};
/// What an answer may come later than was agreed.
constexpr milliseconds kGrace{10'000};
constexpr milliseconds kBetweenAsks{1'000};
/// Of a supervisor that is busy.
constexpr milliseconds kLongestBetweenAsks{10'000};
/// After an answer that says nothing new, though it should have been waited for.
constexpr milliseconds kAfterNothingNew{200};

class Follower {
 public:
  Follower(Session& session, std::vector<Job> jobs)
      : session_(session),
        exchanges_(session.server().exchanges()),
        progress_(makeProgress(session.console())),
        isWaiting_(jobs.size() <= kMostWaits) {
    for (Job& job : jobs) {
      entries_.push_back({{std::move(job)}, {}});
      begin(entries_.back());
    }
  }

  std::vector<Followed> run() {
    while (hasOpen() && !isStopped()) {
      askThoseDue();
      for (auto& finished : exchanges_.wait(timeToNext())) {
        take(entries_[finished.key], finished.reply);
      }
      progress_->tick();
    }
    exchanges_.clear();
    progress_->end();
    std::vector<Followed> followed;
    for (Entry& entry : entries_) {
      followed.push_back(std::move(entry.followed));
    }
    return followed;
  }

 private:
  struct Entry {
    Followed followed;
    TimePoint due;                             ///< when it may be asked for again
    std::optional<TimePoint> unanswered = {};  ///< since when the supervisor has not answered
    milliseconds pause = kBetweenAsks;         ///< before it is asked for again
    bool isWaitRefused = false;                ///< it is asked for now and then instead
    bool isAsked = false;
    bool isDone = false;
  };

  static TimePoint now() { return os::Clock::instance().now(); }

  bool hasOpen() const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [](const Entry& entry) { return !entry.isDone; });
  }

  bool isStopped() {
    const bool isInterrupted = session_.isInterrupted();
    if (!isInterrupted && !(session_.deadline() && now() >= *session_.deadline())) {
      return false;
    }
    for (Entry& entry : entries_) {
      if (!entry.isDone && isInterrupted) {
        entry.followed.end = Followed::End::kInterrupted;
      } else if (!entry.isDone && entry.unanswered) {
        entry.followed.end = Followed::End::kLost;
      }
    }
    return true;
  }

  void begin(Entry& entry) {
    entry.due = now();
    progress_->show(entry.followed.job);
    end(entry, Followed::End::kOver, !entry.followed.job.isOpen());
  }

  void askThoseDue() {
    // From where the last round ended, so that each has its turn.
    for (std::size_t i = 0; i < entries_.size() && asked_ < kMostWaits; ++i) {
      const std::size_t key = next_;
      next_ = (next_ + 1) % entries_.size();
      Entry& entry = entries_[key];
      if (!entry.isDone && !entry.isAsked && entry.due <= now()) {
        exchanges_.start(key, question(entry));
        entry.isAsked = true;
        ++asked_;
      }
    }
  }

  Request question(const Entry& entry) const {
    const Job& job = entry.followed.job;
    std::string target = "/jobs/" + std::to_string(job.id);
    milliseconds wait{0};
    if (isWaiting(entry)) {
      wait = std::min(kLongestWait, timeLeft());
      target +=
          "?waitMs=" + std::to_string(wait.count()) + "&revision=" + std::to_string(job.revision);
    }
    Request request = session_.server().request("GET", target);
    request.within = wait + kGrace;
    return request;
  }

  milliseconds timeLeft() const {
    if (!session_.deadline()) {
      return kLongestWait + kGrace;
    }
    return std::max(milliseconds(1), std::chrono::ceil<milliseconds>(*session_.deadline() - now()));
  }

  /// Until something can be asked; a second at most, for those who look on.
  milliseconds timeToNext() const {
    milliseconds time = std::min(kBetweenAsks, timeLeft());
    for (const Entry& entry : entries_) {
      if (!entry.isDone && !entry.isAsked && asked_ < kMostWaits) {
        time = std::min(time, std::chrono::ceil<milliseconds>(entry.due - now()));
      }
    }
    return std::max(milliseconds(0), time);
  }

  void take(Entry& entry, const Reply& reply) {
    entry.isAsked = false;
    --asked_;
    const auto document = session_.server().read(reply, false);
    auto job = document ? Job::read(*document) : tl::unexpected(document.error());
    if (job && job->id == entry.followed.job.id) {
      learn(entry, std::move(*job));
    } else {
      endure(entry, job ? notAsked() : job.error());
    }
  }

  void learn(Entry& entry, Job job) {
    const bool isNew = job.revision > entry.followed.job.revision;
    entry.unanswered.reset();
    entry.followed.failure.reset();
    entry.followed.job = std::move(job);
    entry.due = now() + pauseAfter(entry, isNew);
    progress_->show(entry.followed.job);
    end(entry, Followed::End::kOver, !entry.followed.job.isOpen());
  }

  milliseconds pauseAfter(Entry& entry, bool isNew) const {
    if (entry.isWaitRefused) {
      entry.pause = isNew ? kBetweenAsks : entry.pause;
      return longer(entry.pause);
    }
    return !isWaiting_ ? kBetweenAsks : isNew ? milliseconds(0) : kAfterNothingNew;
  }

  void endure(Entry& entry, const Failure& failure) {
    if (isBusy(failure)) {
      return comeAgain(entry, failure);
    }
    if (failure.exitCode == ExitCode::kUnreachable && !entry.unanswered) {
      progress_->note(failure.cause + "; asking again");
    }
    entry.unanswered = entry.unanswered.value_or(now());
    entry.followed.failure = failure;
    entry.due = now() + kBetweenAsks;
    const bool isGone = !session_.deadline() && now() - *entry.unanswered >= kComesBackWithin;
    end(entry, Followed::End::kLost, isGone || failure.exitCode != ExitCode::kUnreachable);
  }

  /// The supervisor is there and has no room; that may last.
  void comeAgain(Entry& entry, const Failure& failure) {
    if (!wasBusy_) {
      progress_->note(failure.cause + "; asking now and then instead");
    }
    wasBusy_ = true;
    entry.unanswered.reset();
    entry.followed.failure.reset();
    entry.isWaitRefused = true;
    entry.due = now() + longer(entry.pause);
  }

  /// The pause, which is longer the next time.
  static milliseconds longer(milliseconds& pause) {
    return std::exchange(pause, std::min(pause * 2, kLongestBetweenAsks));
  }

  bool isWaiting(const Entry& entry) const { return isWaiting_ && !entry.isWaitRefused; }

  static Failure notAsked() {
    return {ExitCode::kOther,
            "the supervisor answers with another job than the one asked for",
            "install agctl and zedd from one release",
            {}};
  }

  static void end(Entry& entry, Followed::End how, bool isEnd) {
    if (isEnd) {
      entry.isDone = true;
      entry.followed.end = how;
    }
  }

  Session& session_;
  Exchanges& exchanges_;
  const std::unique_ptr<Progress> progress_;
  const bool isWaiting_;
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
  std::size_t asked_ = 0;
  bool wasBusy_ = false;
};

}  // namespace

std::vector<Followed> follow(Session& session, std::vector<Job> jobs) {
  return Follower(session, std::move(jobs)).run();
}

}  // namespace agctl
