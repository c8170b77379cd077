#include "dme/running/JobRunner.h"

#include <string>
#include <utility>

#include "framework/core_log/Log.h"

namespace dme {

namespace {

std::string targetOf(const JobView& job) {
  const std::string slot = "slot " + std::to_string(job.slot);
  return job.app.empty() ? slot : job.app + " in " + slot;
}

bool isAtEnd(JobState state) {
  return isFinal(state) || state == JobState::kUnknown;
}

void logEnd(const JobView& job) {
  core_log::logPrintf(
      "Jobs", core_log::serviceLevel(), 5, "job %llu: %s of %s %s%s%s%s%s",
      static_cast<unsigned long long>(job.id), nameOf(job.verb).data(), targetOf(job).c_str(),
      job.state == JobState::kUnknown ? "has an unknown end" : nameOf(job.state).data(),
      job.reason == JobReason::kNone ? "" : ", ", nameOf(job.reason).data(),
      job.cause.empty() ? "" : ": ", job.cause.c_str());
}

}  // namespace

JobRunner::JobRunner(ObjectStore& store, Chassis& chassis, AppCatalog& catalog,
                     BladeMonitor& monitor, const JobClock& clock, GatewayCalls& gateway,
                     JobLedger& ledger)
    : clock_(clock),
      gateway_(gateway),
      ledger_(ledger),
      consequences_(store, chassis, catalog, monitor),
      turns_(chassis, gateway, ledger.table()) {}

void JobRunner::restart() {
  for (const std::uint64_t id : table().living()) {
    Job& job = *table().find(id);
    const JobView& view = job.view;
    job.deliverBy = clock_.momentOf(view.deliverBy, view.deliverBy - view.acceptedAt);
    job.finishBy = clock_.momentOf(view.finishBy, view.finishBy - view.sentAt);
    turns_.noteForeign(job);
    if (!apply(job, JobEvent::kRestart,
               {JobReason::kRestarted,
                "the engine ended while the command was with the gateway: the blade may have been "
                "told"})) {
      timers_.file(job, JobClock::now());
    }
  }
  ledger_.commitChanges();
}

void JobRunner::accepted(Job& job) {
  job.deliverBy = clock_.momentOf(job.view.deliverBy, job.view.deliverBy - job.view.acceptedAt);
  turns_.keepBack(job);
  timers_.file(job, JobClock::now());
}

void JobRunner::confirmed(std::uint64_t id) {
  if (Job* const job = table().find(id)) {
    job->isConfirmed = true;
    turns_.setDue();
  }
}

JobView JobRunner::cancel(Job& job) {
  JobView end = job.view;
  end.state = findJobTransition(end.state, JobEvent::kCancelled)->to;
  end.finishedAt = clock_.timeOfDay();
  setNote(end, {JobReason::kCancelled, "an operator gave it up"});
  return table().saveEnd(job, std::move(end));
}

void JobRunner::cancelled(std::uint64_t id, bool isStored) {
  Job* const job = table().find(id);
  if (job == nullptr || !job->end) {
    return;
  }
  turns_.setDue();
  if (!isStored) {
    table().revive(*job);
    timers_.file(*job, JobClock::now());
    return;
  }
  timers_.drop(*job);
  gateway_.forget(*job);
  table().bury(*job, [this](const Job& ended, JobState from) {
    consequences_.follow(ended, from, JobEvent::kCancelled);
    logEnd(ended.view);
  });
}

void JobRunner::withdraw(std::uint64_t id) {
  if (Job* const job = table().find(id)) {
    timers_.drop(*job);
    gateway_.forget(*job);
  }
  table().withdraw(id);
}

// ----- States -------------------------------------------------------------------------------

std::optional<JobView> JobRunner::apply(Job& job, JobEvent event, JobNote note) {
  if (job.end) {
    return std::nullopt;  // given up
  }
  const JobState from = job.view.state;
  const JobTransition* const row = findJobTransition(from, event);
  if (row == nullptr) {
    core_log::logPrintf("Jobs", core_log::serviceLevel(), 8,
                        "job %llu is %s: event %d has no meaning there and is left out",
                        static_cast<unsigned long long>(job.view.id), nameOf(from).data(),
                        static_cast<int>(event));
    return std::nullopt;
  }
  if (row->to == from && row->effect == JobEffect::kNone) {
    return std::nullopt;
  }
  job.view.state = row->to;
  setNote(job.view, std::move(note));
  if (row->effect == JobEffect::kRetry) {
    gateway_.forget(job);
    JobTurns::pause(job, JobClock::now());
  }
  enter(job, from);
  if (isAtEnd(row->to)) {
    consequences_.follow(job, from, event);
    logEnd(job.view);
  }
  if (isFinal(row->to)) {
    timers_.drop(job);
    gateway_.forget(job);
  } else {
    timers_.file(job, JobClock::now());
  }
  return table().save(job);
}

void JobRunner::enter(Job& job, JobState from) {
  JobView& view = job.view;
  const std::uint64_t today = clock_.timeOfDay();
  const auto startFinishing = [&] {
    view.finishBy = today + static_cast<std::uint64_t>(job.finishWithin.count());
    job.finishBy = JobClock::now() + job.finishWithin;
  };
  if (from == JobState::kSending) {
    turns_.ended(view.slot);
  }
  switch (view.state) {
    case JobState::kAccepted:
      view.finishBy = 0;
      break;
    case JobState::kSending:
      ++view.attempts;
      view.sentAt = today;
      turns_.began(view.slot);
      startFinishing();
      break;
    case JobState::kRunning:
      view.acknowledgedAt = view.acknowledgedAt == 0 ? today : view.acknowledgedAt;
      if (from == JobState::kUnknown) {
        startFinishing();  // the blade is at work after all
      }
      break;
    case JobState::kUnknown:
      job.wasSeenDone = false;
      job.undoneSince.reset();
      break;
    case JobState::kSucceeded:
      view.percentage = 100;
      [[fallthrough]];
    case JobState::kFailed:
      view.finishedAt = today;
      turns_.setDue();
      break;
  }
}

// ----- Time ---------------------------------------------------------------------------------

void JobRunner::tick(TimePoint now) {
  while (const std::optional<std::uint64_t> id = timers_.take(now)) {
    if (Job* const job = table().find(*id)) {
      job->timer.reset();
      expire(*job, now);
    }
  }
  ledger_.commitChanges();
  turns_.take(now, [this](Job& job) { send(job); });
  ledger_.commitChanges();
}

void JobRunner::expire(Job& job, TimePoint now) {
  if (job.view.state != JobState::kAccepted) {
    apply(job, JobEvent::kFinishByPast, {JobReason::kFinishByPast, "no end was reported in time"});
  } else if (now >= job.deliverBy) {
    const std::string last = job.view.cause.empty() ? "" : ": " + job.view.cause;
    apply(job, JobEvent::kDeliverByPast,
          {JobReason::kDeliverByPast, "it could not be delivered in time" + last, job.view.code});
  } else {
    turns_.setDue();  // after a pause
    timers_.file(job, now);
  }
}

void JobRunner::bladeRegistered(std::uint32_t slot) {
  const TimePoint now = JobClock::now();
  turns_.bladeRegistered(slot, now);
  for (const std::uint64_t id : table().ofSlot(slot)) {
    Job& job = *table().find(id);
    turns_.noteForeign(job);
    if (JobTurns::shortenPause(job, now) || turns_.keepBack(job)) {
      timers_.file(job, now);
    }
  }
}

// ----- Sending ------------------------------------------------------------------------------

void JobRunner::send(Job& job) {
  turns_.noteForeign(job);
  const auto call = gateway_.make(job);
  const std::uint64_t id = job.view.id;
  const base::Buffer cookie = job.cookie;
  apply(job, JobEvent::kDue);
  ledger_.commit([this, id, cookie, call](bool isStored) {
    if (!isStored || !gateway_.send(*call)) {
      ledger_.errands().leave([this, id, cookie, isStored] { notSent(id, cookie, isStored); });
    }
  });
}

void JobRunner::notSent(std::uint64_t id, const base::Buffer& cookie, bool isStored) {
  Job* const job = table().find(id);
  if (job == nullptr || job->cookie != cookie) {
    return;
  }
  const JobState state = job->view.state;
  if (state != JobState::kSending && state != JobState::kUnknown) {
    return;
  }
  --job->view.attempts;
  apply(*job, JobEvent::kNotDelivered,
        {reasonOfUndelivered(state),
         isStored ? "the link to the gateway takes nothing" : "the disk refuses to write"});
  ledger_.commit();
}

}  // namespace dme
