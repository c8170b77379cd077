#include "dme/jobs/JobBoard.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace dme {

namespace {

bool isShown(const JobView& job, const JobFilter& filter) {
  return (!filter.slot || job.slot == *filter.slot) && (!filter.app || job.app == *filter.app) &&
         (filter.states.empty() ||
          std::find(filter.states.begin(), filter.states.end(), job.state) != filter.states.end());
}

}  // namespace

void JobChanges::append(JobChanges later) {
  std::move(later.changed.begin(), later.changed.end(), std::back_inserter(changed));
  removed.insert(removed.end(), later.removed.begin(), later.removed.end());
}

void JobBoard::settle(JobChanges changes, bool isStored) {
  std::vector<Call> calls;
  {
    const std::lock_guard lock(mutex_);
    waiting_.append(std::move(changes));
    if (!isStored) {
      return;
    }
    JobChanges stored = std::exchange(waiting_, JobChanges());
    for (JobView& view : stored.changed) {
      show(std::move(view), calls);
    }
    // A number is never given twice: what is removed here comes not back.
    for (const std::uint64_t id : stored.removed) {
      jobs_.erase(id);
      watches_.erase(id);
    }
  }
  tell(calls);
}

bool JobBoard::isBehind() const {
  const std::lock_guard lock(mutex_);
  return !waiting_.empty();
}

void JobBoard::show(JobView view, std::vector<Call>& calls) {
  const auto watches = watches_.find(view.id);
  if (watches != watches_.end()) {
    std::erase_if(watches->second, [&](Watch& watch) {
      if (view.revision <= watch.revision) {
        return false;
      }
      due_.push_back(watch.id);
      calls.push_back({watch.id, std::move(watch.changed), view});
      return true;
    });
    if (watches->second.empty()) {
      watches_.erase(watches);
    }
  }
  const std::uint64_t id = view.id;
  jobs_.insert_or_assign(id, std::move(view));
}

void JobBoard::tell(const std::vector<Call>& calls) {
  for (const Call& call : calls) {
    if (begin(call.id)) {
      call.changed(call.view);
      end();
    }
  }
}

bool JobBoard::begin(WatchId id) {
  const std::lock_guard lock(mutex_);
  const auto due = std::find(due_.begin(), due_.end(), id);
  if (due == due_.end()) {
    return false;
  }
  due_.erase(due);
  called_ = id;
  caller_ = std::this_thread::get_id();
  return true;
}

void JobBoard::end() {
  const std::lock_guard lock(mutex_);
  called_ = 0;
  over_.notify_all();
}

std::vector<JobView> JobBoard::list(const JobFilter& filter) const {
  const std::lock_guard lock(mutex_);
  std::vector<JobView> found;
  auto next = filter.before ? jobs_.lower_bound(*filter.before) : jobs_.end();
  while (next != jobs_.begin() && found.size() < filter.most) {
    --next;
    if (isShown(next->second, filter)) {
      found.push_back(next->second);
    }
  }
  return found;
}

std::optional<JobView> JobBoard::find(std::uint64_t id) const {
  const std::lock_guard lock(mutex_);
  const auto found = jobs_.find(id);
  return found == jobs_.end() ? std::nullopt : std::optional(found->second);
}

JobBoard::WatchId JobBoard::watch(std::uint64_t id, std::uint64_t revision, Changed changed) {
  JobView view;
  WatchId watch = 0;
  {
    const std::lock_guard lock(mutex_);
    const auto found = jobs_.find(id);
    if (found == jobs_.end()) {
      return 0;
    }
    watch = ++lastWatch_;
    if (found->second.revision <= revision) {
      watches_[id].push_back({watch, revision, std::move(changed)});
      return watch;
    }
    view = found->second;
  }
  changed(view);
  return watch;
}

void JobBoard::unwatch(WatchId id) {
  std::unique_lock lock(mutex_);
  for (auto next = watches_.begin(); next != watches_.end();) {
    std::erase_if(next->second, [id](const Watch& watch) { return watch.id == id; });
    next = next->second.empty() ? watches_.erase(next) : std::next(next);
  }
  std::erase(due_, id);
  over_.wait(lock, [&] { return called_ != id || caller_ == std::this_thread::get_id(); });
}

}  // namespace dme
