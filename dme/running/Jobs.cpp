#include "dme/running/Jobs.h"

#include <algorithm>
#include <utility>

#include "dme/base/Text.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

using Reason = Refusal::Reason;

constexpr JobVerb kLastOfApp = JobVerb::kClearAppLogs;

}  // namespace

Jobs::Jobs(ObjectStore& store, Chassis& chassis, AppInstances& instances, BladeMonitor& monitor,
           const Settings& settings, WallClock wallClock, GatewayCalls::Send send,
           std::function<void()> wake)
    : chassis_(chassis),
      catalog_(store, chassis, instances),
      equipment_(store, chassis),
      time_(store),
      clock_(std::move(wallClock)),
      ledger_(store, std::move(wake)),
      checks_(store, chassis, catalog_, time_, ledger_.table(), settings.needs),
      gateway_(store, chassis, time_, std::move(send)),
      runner_(store, chassis, catalog_, monitor, clock_, gateway_, ledger_),
      listener_(instances, catalog_, gateway_, ledger_, runner_, settings.settleAfter) {
  instances.askForJobs([this](std::uint32_t slot, std::string_view id) {
    return ledger_.table().openJobOf(slot, id, kLastOfApp) != nullptr;
  });
  runner_.restart();
}

void Jobs::tick(TimePoint now) {
  ledger_.errands().run();
  ledger_.tick(now);
  runner_.tick(now);
}

void Jobs::catchUp() {
  ledger_.errands().run();
}

std::optional<Jobs::TimePoint> Jobs::deadline() const {
  const std::optional<TimePoint> store = ledger_.deadline();
  const std::optional<TimePoint> job = runner_.deadline();
  return store && job ? std::min(*store, *job) : store ? store : job;
}

Granted<Job> Jobs::plan(const JobOrder& order) const {
  if (isForApp(order.verb) && isUnsettled(order.app)) {
    return tl::unexpected(unknownApp(order.app));
  }
  return checks_.plan(order, clock_.timeOfDay());
}

Granted<JobView> Jobs::wouldOrder(const JobOrder& order) const {
  return plan(order).map([](Job&& job) { return std::move(job.view); });
}

Granted<void> Jobs::order(const JobOrder& order, Done<JobView> done) {
  Granted<Job> planned = plan(order);
  if (!planned) {
    return tl::unexpected(std::move(planned.error()));
  }
  const JobView view = accept(std::move(*planned));
  ledger_.commitAndTell<JobView>(view, std::move(done),
                                 [this, id = view.id](bool isStored) { made({id}, isStored); });
  return {};
}

JobView Jobs::accept(Job job) {
  setNote(job.view, runner_.waiting(job.view));
  Job& added = ledger_.table().add(std::move(job));
  runner_.accepted(added);
  return added.view;
}

void Jobs::made(const std::vector<std::uint64_t>& ids, bool isStored) {
  for (const std::uint64_t id : ids) {
    if (isStored) {
      runner_.confirmed(id);
    } else {
      runner_.withdraw(id);  // whoever wanted it was told that there is none
    }
  }
  ledger_.commitChanges();
}

void Jobs::cancelled(const std::vector<std::uint64_t>& ids, bool isStored) {
  for (const std::uint64_t id : ids) {
    runner_.cancelled(id, isStored);
  }
  ledger_.commit();
}

Granted<void> Jobs::cancel(std::uint64_t id, Done<JobView> done) {
  Job* const job = ledger_.table().find(id);
  const std::optional<JobView> shown = board().find(id);
  if (!shown) {
    return tl::unexpected(Refusal{Reason::kUnknownJob, "there is no job " + std::to_string(id),
                                  "see which there are; those that ended long ago are not kept"});
  }
  if (job == nullptr && !isFinal(shown->state)) {
    return tl::unexpected(Refusal{Reason::kNotStored,
                                  "the end of job " + std::to_string(id) + " is not stored yet",
                                  "see again how far it is when the disk writes"});
  }
  if (job != nullptr && job->end) {
    return tl::unexpected(Refusal{Reason::kWrongState,
                                  "job " + std::to_string(id) + " is being given up",
                                  "wait until that is stored"});
  }
  const JobView& view = job != nullptr ? job->view : *shown;
  if (view.state != JobState::kAccepted && view.state != JobState::kUnknown) {
    return tl::unexpected(Refusal{
        Reason::kWrongState, "job " + std::to_string(id) + " is " + std::string(nameOf(view.state)),
        isFinal(view.state) ? "it is over"
                            : "the blade may have been told: wait until it is over"});
  }
  ledger_.commitAndTell<JobView>(runner_.cancel(*job), std::move(done),
                                 [this, id](bool isStored) { cancelled({id}, isStored); });
  return {};
}

Granted<void> Jobs::createApp(std::uint32_t slot, const mo::Mo& description, Done<AppView> done) {
  const std::string id = description.get(sd::AppInstanceMo::kAppInstanceId).str();
  if (isUnsettled(id) && catalog_.find(id) == nullptr) {
    return tl::unexpected(Refusal{Reason::kAlreadyThere,
                                  "application instance " + id + " is being deleted",
                                  "try again when that is stored"});
  }
  const Granted<Object*> created = catalog_.create(slot, description);
  if (!created) {
    return tl::unexpected(created.error());
  }
  const AppView view = viewOf(**created);
  unsettledApps_.insert(id);
  ledger_.commitAndTell<AppView>(view, std::move(done), [this, id](bool isStored) {
    unsettledApps_.erase(id);
    if (!isStored) {
      catalog_.remove(*catalog_.find(id));
      ledger_.commit();
    }
  });
  return {};
}

Granted<AppView> Jobs::wouldDeleteApp(const std::string& id) const {
  if (isUnsettled(id)) {
    return tl::unexpected(unknownApp(id));
  }
  const Granted<Object*> instance = catalog_.mayRemove(id);
  if (!instance) {
    return tl::unexpected(instance.error());
  }
  if (const Job* const job = jobOf(**instance)) {
    return tl::unexpected(jobInTheWay(job->view));
  }
  return viewOf(**instance);
}

Granted<void> Jobs::deleteApp(const std::string& id, Done<AppView> done) {
  Granted<AppView> view = wouldDeleteApp(id);
  if (!view) {
    return tl::unexpected(std::move(view.error()));
  }
  unsettledApps_.insert(id);
  ledger_.commitAndTell<AppView>(
      std::move(*view), std::move(done),
      [this, id, removed = catalog_.remove(*catalog_.find(id))](bool isStored) {
        unsettledApps_.erase(id);
        if (!isStored) {
          catalog_.restore(removed);
          ledger_.commit();
        }
      });
  return {};
}

std::vector<AppView> Jobs::apps(std::optional<std::uint32_t> slot) const {
  std::vector<AppView> views;
  for (const Object* const instance : catalog_.all(slot)) {
    views.push_back(viewOf(*instance));
  }
  return views;
}

std::optional<AppView> Jobs::app(const std::string& id) const {
  const Object* const instance = catalog_.find(id);
  return instance != nullptr ? std::optional(viewOf(*instance)) : std::nullopt;
}

AppView Jobs::viewOf(const Object& instance) const {
  AppView view = catalog_.view(instance);
  const Job* const job = jobOf(instance);
  // A job that is not on the disk yet cannot be asked for, and one whose end is has none.
  const std::optional<JobView> shown =
      job != nullptr ? board().find(job->view.id) : std::optional<JobView>();
  view.job = shown && !isOver(*shown) ? shown->id : 0;
  return view;
}

const Job* Jobs::jobOf(const Object& instance) const {
  return ledger_.table().openJobOf(catalog_.slotOf(instance),
                                   instance.get(sd::AppInstanceMo::kAppInstanceId).view(),
                                   kLastOfApp);
}

Granted<void> Jobs::describe(EquipmentPlace place, const EquipmentChange& change,
                             Done<Equipment> done) {
  const Granted<Equipment> wanted = equipment_.changed(place, change);
  if (!wanted) {
    return tl::unexpected(wanted.error());
  }
  equipment_.set(place, change);
  ledger_.commitAndTell<Equipment>(*wanted, std::move(done), [this, place, change](bool isStored) {
    if (equipment_.settle(place, change, isStored)) {
      ledger_.commit();
    }
  });
  return {};
}

Granted<void> Jobs::setTimeZone(const std::string& zone, Done<std::vector<JobView>> done) {
  if (!isPlainText(zone) || !TimeSetting::isZone(zone)) {
    return tl::unexpected(Refusal{Reason::kBadValue, oneLine(zone) + " is no time zone",
                                  "name one of the system's, as in Europe/Berlin", 0, "timezone"});
  }
  time_.setZone(zone);
  std::vector<std::uint64_t> replaced;
  std::vector<JobView> views;
  for (const Object* const slot : chassis_.slots()) {
    if (slot->get(sd::SlotMo::kAdmission) == static_cast<std::uint8_t>(sd::Admission::kValid)) {
      cancelTimeZone(slot->get(sd::SlotMo::kNumber), replaced);
      orderTimeZone(slot->get(sd::SlotMo::kNumber), views);
    }
  }
  std::vector<std::uint64_t> ids;
  ids.reserve(views.size());
  for (const JobView& view : views) {
    ids.push_back(view.id);
  }
  ledger_.commitAndTell<std::vector<JobView>>(std::move(views), std::move(done),
                                              [this, ids, replaced](bool isStored) {
                                                time_.settle(isStored);
                                                cancelled(replaced, isStored);
                                                made(ids, isStored);
                                              });
  return {};
}

void Jobs::cancelTimeZone(std::uint32_t slot, std::vector<std::uint64_t>& cancelled) {
  for (const std::uint64_t id : ledger_.table().ofSlot(slot)) {
    Job& job = *ledger_.table().find(id);
    if (job.view.verb == JobVerb::kTimeZone && job.view.state == JobState::kAccepted && !job.end) {
      runner_.cancel(job);
      cancelled.push_back(id);
    }
  }
}

void Jobs::orderTimeZone(std::uint32_t slot, std::vector<JobView>& made) {
  JobOrder order;
  order.verb = JobVerb::kTimeZone;
  order.slot = slot;
  Granted<Job> planned = checks_.plan(order, clock_.timeOfDay(), JobChecks::Queue::kBehindItsLike);
  if (planned) {
    made.push_back(accept(std::move(*planned)));
  }
}

}  // namespace dme
