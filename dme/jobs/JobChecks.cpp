#include "dme/jobs/JobChecks.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "dme/apps/InstanceSnapshot.h"
#include "dme/base/Text.h"
#include "dme/jobs/StageNeeds.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"
#include "model/sm/AppMo.h"

namespace dme {

namespace {

using Reason = Refusal::Reason;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr milliseconds kDeliverWithin = minutes(5);
constexpr milliseconds kLongest = std::chrono::hours(7 * 24);
constexpr seconds kPackageTimeout{300};  // where the instance tells none
constexpr seconds kBeyondTimeout{60};    // what a blade may need to notice that it is late

Refusal badValue(std::string field, std::string detail, std::string remedy) {
  return {Reason::kBadValue, std::move(detail), std::move(remedy), 0, std::move(field)};
}

/// What to do about an instance that is in the wrong phase for a verb; empty where it is right.
struct Phases {
  JobVerb verb;
  std::array<std::string_view, kAppPhaseNames.size()>
      remedies;  // assumed absent unsure stopped started
};
constexpr std::string_view kRight;
constexpr std::array kPhases{
    Phases{JobVerb::kInstall,
           {kRight, kRight, kRight, "upgrade it, or uninstall it first",
            "upgrade it, or stop and uninstall it first"}},
    Phases{JobVerb::kUninstall,
           {kRight, "there is nothing to uninstall: delete its description if it is not wanted",
            kRight, kRight, "stop it first"}},
    Phases{JobVerb::kUpgrade,
           {kRight, "install it with the new package instead", kRight, kRight, kRight}},
    Phases{JobVerb::kStart,
           {kRight, "install it first", kRight, kRight, "stop it first to start it anew"}},
    Phases{JobVerb::kStop,
           {kRight, "install and start it first", kRight, "there is nothing to stop", kRight}},
    Phases{JobVerb::kClearAppLogs, {kRight, "install it first", kRight, kRight, kRight}},
};

Granted<void> checkPhase(JobVerb verb, std::string_view id, AppPhase phase) {
  const auto* const row = std::find_if(kPhases.begin(), kPhases.end(),
                                       [verb](const Phases& each) { return each.verb == verb; });
  const std::string_view remedy =
      row == kPhases.end() ? kRight : row->remedies[static_cast<std::size_t>(phase)];
  if (remedy.empty()) {
    return {};
  }
  return tl::unexpected(
      Refusal{Reason::kWrongState,
              "application instance " + std::string(id) + " is " + std::string(nameOf(phase)),
              std::string(remedy)});
}

/// Whether two jobs of one slot exclude each other.
bool exclude(const JobView& one, const JobView& other) {
  const auto isForWholeSlot = [](JobVerb verb) {
    return verb == JobVerb::kFormatDisk || verb == JobVerb::kDeregister;
  };
  const auto isOfLifeCycle = [](JobVerb verb) {
    return verb <= JobVerb::kStop;
  };
  if (isForWholeSlot(one.verb) || isForWholeSlot(other.verb)) {
    return true;
  }
  return one.target == other.target &&
         (one.verb == other.verb || (isOfLifeCycle(one.verb) && isOfLifeCycle(other.verb)));
}

Granted<void> checkTime(const char* field, const std::optional<milliseconds>& time) {
  if (time && (*time < milliseconds(1) || *time > kLongest)) {
    return tl::unexpected(badValue(
        field, std::string(field) + " is " + std::to_string(time->count()) + " milliseconds",
        "give 1 to " + std::to_string(kLongest.count())));
  }
  return {};
}

Granted<void> checkPackage(const JobOrder& order) {
  if (!isPlainText(order.packageFile) || standsForNothing(order.packageFile)) {
    return tl::unexpected(badValue("packageFile", "packageFile is " + oneLine(order.packageFile),
                                   "name the file, in up to 255 bytes without control characters"));
  }
  if (!isPlainText(order.version)) {
    return tl::unexpected(badValue("version", "version is " + oneLine(order.version),
                                   "give up to 255 bytes without control characters"));
  }
  return {};
}

milliseconds finishWithin(JobVerb verb, const Object* package) {
  const auto timeout = [&](const mo::Property<std::uint64_t>& property) -> milliseconds {
    const std::uint64_t given = package != nullptr ? package->get(property) : 0;
    return (given != 0 ? seconds(given) : kPackageTimeout) + kBeyondTimeout;
  };
  switch (verb) {
    case JobVerb::kInstall:
      return timeout(sm::AppMo::kInstallTimeout);
    case JobVerb::kUninstall:
      return timeout(sm::AppMo::kUninstallTimeout);
    case JobVerb::kUpgrade:
      return timeout(sm::AppMo::kUpgradeTimeout);
    case JobVerb::kStart:
    case JobVerb::kStop:
      return seconds(120);
    case JobVerb::kFormatDisk:
      return minutes(15);
    default:
      return seconds(30);
  }
}

}  // namespace

Refusal jobInTheWay(const JobView& job) {
  const std::string id = std::to_string(job.id);
  std::string remedy = "wait until it is over";
  if (job.state == JobState::kAccepted) {
    remedy += ", or cancel it";
  } else if (job.state == JobState::kUnknown) {
    remedy = "wait for the blade's next report, or cancel job " + id;
  }
  return {Reason::kJobInTheWay,
          "job " + id + " (" + std::string(nameOf(job.verb)) + " of " +
              (job.app.empty() ? "slot " + std::to_string(job.slot) : job.app) + ") is " +
              std::string(nameOf(job.state)),
          std::move(remedy), job.id};
}

Granted<Job> JobChecks::plan(const JobOrder& order, std::uint64_t now, Queue queue) const {
  Job job;
  job.view.verb = order.verb;
  Granted<void> fit = checkTime("deliverWithinMs", order.deliverWithin)
                          .and_then([&] { return checkTime("finishWithinMs", order.finishWithin); })
                          .and_then([&] { return aim(order, job); });
  if (!fit) {
    return tl::unexpected(std::move(fit.error()));
  }
  if (const Job* const other = inTheWay(job.view, queue)) {
    return tl::unexpected(jobInTheWay(other->view));
  }
  if (jobs_.open() >= JobTable::kMostOpen) {
    return tl::unexpected(Refusal{Reason::kTooMany,
                                  std::to_string(JobTable::kMostOpen) + " jobs are not over yet",
                                  "wait until some are, or cancel some that have not been sent"});
  }
  job.view.acceptedAt = now;
  job.view.deliverBy =
      now + static_cast<std::uint64_t>(order.deliverWithin.value_or(kDeliverWithin).count());
  job.finishWithin = order.finishWithin.value_or(job.finishWithin);
  return job;
}

Granted<void> JobChecks::aim(const JobOrder& order, Job& job) const {
  return isForApp(order.verb) ? aimAtApp(order, job) : aimAtSlot(order, job);
}

Granted<void> JobChecks::aimAtApp(const JobOrder& order, Job& job) const {
  const Object* const instance = catalog_.find(order.app);
  if (instance == nullptr) {
    return tl::unexpected(unknownApp(order.app));
  }
  if (!isIdentifier(order.app)) {
    return tl::unexpected(badValue("id", oneLine(order.app) + " cannot be told to a blade",
                                   "describe the instance under an identifier of 1 to 128 letters, "
                                   "digits and the signs . _ : -"));
  }
  job.view.app = order.app;
  job.view.target = instance->dn().text().str();
  job.view.slot = catalog_.slotOf(*instance);
  job.phaseBefore = AppCatalog::phaseOf(*instance);
  job.finishWithin = finishWithin(order.verb, catalog_.packageOf(*instance));
  if (Granted<void> fit = checkPhase(order.verb, order.app, job.phaseBefore); !fit) {
    return fit;
  }
  if (order.verb == JobVerb::kUpgrade) {
    if (Granted<void> fit = checkPackage(order); !fit) {
      return fit;
    }
    job.view.argument = order.packageFile;
    job.version = order.version;
  }
  return checkNeeds(*instance, order.verb);
}

Granted<void> JobChecks::checkNeeds(const Object& instance, JobVerb verb) const {
  const std::optional<std::string> missing =
      missingValue(instanceSnapshot(store_, chassis_, instance), verb, needs_);
  if (!missing) {
    return {};
  }
  const bool isOfChassis = missing->ends_with(".serial");
  const std::string id = instance.get(sd::AppInstanceMo::kAppInstanceId).str();
  return tl::unexpected(badValue(
      *missing,
      std::string(nameOf(verb)) + " needs " + *missing + ", which " +
          (isOfChassis ? "the chassis' description" : "application instance " + id) + " lacks",
      isOfChassis ? "add it to the chassis file and start with an empty state directory"
                  : "delete the instance and describe it with that value"));
}

Granted<void> JobChecks::aimAtSlot(const JobOrder& order, Job& job) const {
  const Object* const slot = chassis_.slot(order.slot);
  if (slot == nullptr) {
    return tl::unexpected(unknownSlot(order.slot));
  }
  job.view.target = slot->dn().text().str();
  job.view.slot = order.slot;
  job.finishWithin = finishWithin(order.verb, nullptr);
  if (order.verb == JobVerb::kLogLevel) {
    if (std::find(kLogLevels.begin(), kLogLevels.end(), order.level) == kLogLevels.end()) {
      return tl::unexpected(badValue("level", oneLine(order.level) + " is no level",
                                     "give debug, info, warning, error or critical"));
    }
    job.view.argument = order.level;
  } else if (order.verb == JobVerb::kTimeZone) {
    job.view.argument = time_.zone();
  }
  return {};
}

const Job* JobChecks::inTheWay(const JobView& planned, Queue queue) const {
  for (const std::uint64_t id : jobs_.ofSlot(planned.slot)) {
    const Job* const other = jobs_.find(id);
    const bool isItsLike = other->view.verb == planned.verb && queue == Queue::kBehindItsLike;
    if (!isOver(other->view) && !isItsLike && exclude(planned, other->view)) {
      return other;
    }
  }
  return nullptr;
}

}  // namespace dme
