#include "dme/jobs/JobTable.h"

#include <algorithm>
#include <string>
#include <utility>

#include "dme/jobs/JobRecord.h"
#include "framework/core_log/Log.h"

namespace dme {

namespace {

const mo::Dn kAbove("sys");

mo::Dn nameOfJob(std::uint64_t id) {
  return kAbove.child("job-" + std::to_string(id));
}

}  // namespace

JobTable::JobTable(ObjectStore& store) : store_(store) {
  for (const Object* object : store_.below(kAbove)) {
    if (!object->is<sd::JobMo>()) {
      continue;
    }
    std::optional<Job> job = jobOf(*object);
    if (!job || nameOfJob(job->view.id) != object->dn()) {
      core_log::logPrintf("JobTable", core_log::serviceLevel(), 8,
                          "%s makes no sense and is removed", object->dn().c_str());
      store_.remove(mo::Dn(object->dn()));
      continue;
    }
    job->isConfirmed = true;
    lastId_ = std::max(lastId_, job->view.id);
    changes_.changed.push_back(job->view);
    const std::uint64_t id = job->view.id;
    file(jobs_.emplace(id, std::move(*job)).first->second);
  }
}

Job& JobTable::add(Job job) {
  job.view.id = ++lastId_;
  Job& added = jobs_.emplace(lastId_, std::move(job)).first->second;
  save(added);
  return added;
}

JobView JobTable::save(Job& job) {
  ++job.view.revision;
  JobView view = stage(job);
  file(job);
  trim();
  return view;
}

JobView JobTable::saveEnd(Job& job, JobView end) {
  end.revision = ++job.view.revision;
  Job ended = job;
  ended.view = end;
  job.end = std::move(end);
  return stage(ended);
}

void JobTable::bury(Job& job, const std::function<void(const Job&, JobState)>& follow) {
  const JobState from = job.view.state;
  job.view = *std::exchange(job.end, std::nullopt);
  follow(job, from);
  file(job);
  trim();
}

void JobTable::revive(Job& job) {
  job.end.reset();
  save(job);
}

JobView JobTable::stage(const Job& job) {
  store_.assign(store_.create<sd::JobMo>(nameOfJob(job.view.id)), recordOf(job), mo::kAllGroups);
  changes_.changed.push_back(job.view);
  return job.view;
}

void JobTable::file(const Job& job) {
  const std::uint64_t id = job.view.id;
  const bool isInTheEnd = isOver(job.view);
  (isInTheEnd ? open_ : over_).erase(id);
  (isInTheEnd ? over_ : open_).insert(id);
  if (isFinal(job.view.state)) {
    forget(job);
  } else {
    bySlot_[job.view.slot].insert(id);
  }
}

void JobTable::forget(const Job& job) {
  const std::uint64_t id = job.view.id;
  const auto slot = bySlot_.find(job.view.slot);
  if (slot != bySlot_.end()) {
    slot->second.erase(id);
    if (slot->second.empty()) {
      bySlot_.erase(slot);
    }
  }
  jobs_.erase(id);
}

void JobTable::trim() {
  while (over_.size() > kMostOver) {
    withdraw(*over_.begin());
  }
}

void JobTable::withdraw(std::uint64_t id) {
  if (const auto found = jobs_.find(id); found != jobs_.end()) {
    forget(found->second);
  }
  open_.erase(id);
  over_.erase(id);
  store_.remove(nameOfJob(id));
  changes_.removed.push_back(id);
}

JobChanges JobTable::takeChanges() {
  return std::exchange(changes_, JobChanges());
}

Job* JobTable::find(std::uint64_t id) {
  const auto found = jobs_.find(id);
  return found == jobs_.end() ? nullptr : &found->second;
}

const Job* JobTable::find(std::uint64_t id) const {
  const auto found = jobs_.find(id);
  return found == jobs_.end() ? nullptr : &found->second;
}

std::vector<std::uint64_t> JobTable::ofSlot(std::uint32_t slot) const {
  const auto found = bySlot_.find(slot);
  if (found == bySlot_.end()) {
    return {};
  }
  return {found->second.begin(), found->second.end()};
}

const Job* JobTable::openJobOf(std::uint32_t slot, std::string_view app, JobVerb last) const {
  const auto found = bySlot_.find(slot);
  if (found == bySlot_.end()) {
    return nullptr;
  }
  for (const std::uint64_t id : found->second) {
    const Job& job = jobs_.at(id);
    if (job.view.app == app && job.view.verb <= last && !isOver(job.view)) {
      return &job;
    }
  }
  return nullptr;
}

std::vector<std::uint32_t> JobTable::slots() const {
  std::vector<std::uint32_t> numbers;
  numbers.reserve(bySlot_.size());
  for (const auto& [slot, ids] : bySlot_) {
    numbers.push_back(slot);
  }
  return numbers;
}

std::vector<std::uint64_t> JobTable::living() const {
  std::vector<std::uint64_t> ids;
  ids.reserve(jobs_.size());
  for (const auto& [id, job] : jobs_) {
    ids.push_back(id);
  }
  return ids;
}

}  // namespace dme
