#include "sma/tasks/Reporter.h"

#include <algorithm>

#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

RequestKind kindOf(bool ack) {
  return ack ? RequestKind::Progress : RequestKind::QuietProgress;
}

// Only the format of a blade's disk is heard of a blade that is not registered.
bool isEarly(std::string_view command) {
  return command == zan_serviceOrchAG::words().formatDiskSubject;
}

}  // namespace

Reporter::Reporter(const Settings& settings, BladePlatform& platform, TimePoint origin)
    : settings_(settings), platform_(platform), origin_(origin), draws_(settings.seed) {}

void Reporter::start(TimePoint now) {
  if (!nextReport_ && settings_.every.count() > 0) {
    nextReport_ = now + settings_.first;
  }
}

Reporter::TimePoint Reporter::due(bool registered) const {
  if (std::any_of(asked_.begin(), asked_.end(),
                  [registered](const Request& each) { return registered || each.isEarly; })) {
    return TimePoint::min();
  }
  TimePoint due = TimePoint::max();
  for (const Running& each : running_) {
    if (registered || isEarly(each.operation.plan().command)) {
      due = std::min(due, each.due);
    }
  }
  if (!registered) {
    return due;
  }
  if (nextReport_ && !reportUnderWay_) {
    due = std::min(due, *nextReport_);
  }
  for (const Outage& each : outages_) {
    due = std::min(due, each.end);
  }
  return due;
}

std::optional<Reporter::Request> Reporter::next(TimePoint now, bool registered) {
  if (registered) {
    endOutages(now);
  }
  if (auto request = nextAsked(now, registered)) {
    return request;
  }
  if (auto request = nextStep(now, registered)) {
    return request;
  }
  return registered ? nextRegular(now) : std::nullopt;
}

void Reporter::report(EventIndex event) {
  asked_.push_back({RequestKind::Report, {}, event});
}

void Reporter::failApp(const std::string& app, Duration lasts, TimePoint now, EventIndex event) {
  platform_.change({.id = app, .running = false});
  asked_.push_back({RequestKind::Failure, appFailureDocument(app), event});
  if (lasts.count() > 0) {
    outages_.push_back({app, now + lasts});
  }
}

void Reporter::run(const OperationPlan& plan, TimePoint now, EventIndex event) {
  running_.push_back({Operation(plan), now, event});
}

void Reporter::say(const Progress& progress) {
  asked_.push_back(
      {kindOf(progress.ack), progressDocument(progress), std::nullopt, isEarly(progress.command)});
}

std::optional<Reporter::Request> Reporter::nextAsked(TimePoint now, bool registered) {
  const auto found = std::find_if(asked_.begin(), asked_.end(), [registered](const Request& each) {
    return registered || each.isEarly;
  });
  if (found == asked_.end()) {
    return std::nullopt;
  }
  Request request = std::move(*found);
  asked_.erase(found);
  return request.kind == RequestKind::Report ? makeReport(now, request.event) : request;
}

std::optional<Reporter::Request> Reporter::nextStep(TimePoint now, bool registered) {
  while (true) {
    const auto found = std::find_if(running_.begin(), running_.end(), [=](const Running& running) {
      return running.due <= now && (registered || isEarly(running.operation.plan().command));
    });
    if (found == running_.end()) {
      return std::nullopt;
    }
    if (auto request = makeStep(found, now)) {
      return request;
    }
  }
}

// Nothing when the report is lost.
std::optional<Reporter::Request> Reporter::makeStep(std::vector<Running>::iterator running,
                                                    TimePoint now) {
  Operation& operation = running->operation;
  const OperationPlan& plan = operation.plan();
  std::optional<Request> request =
      Request{kindOf(plan.ack), progressDocument(operation.next()), running->event};
  if (operation.isDone() && plan.hitch == Hitch::LosesLastReport) {
    request.reset();
  }
  const bool stalls = plan.hitch == Hitch::Stalls && operation.isHalfWay();
  running->due = now + (stalls ? plan.stall : plan.every);
  if (stalls && plan.stall.count() == 0) {
    running->due = TimePoint::max();
  }
  if (const auto effect = operation.effect()) {
    platform_.change(*effect);
  }
  if (operation.isDone()) {
    const Operation ended = std::move(operation);
    running_.erase(running);
    if (onEnd_) {
      onEnd_(ended, now);
    }
  }
  return request;
}

std::optional<Reporter::Request> Reporter::nextRegular(TimePoint now) {
  if (!nextReport_ || reportUnderWay_ || now < *nextReport_) {
    return std::nullopt;
  }
  // From report to report, so that the rate does not drift; those that a pause swallowed are not
  // made up for.
  *nextReport_ += settings_.every;
  if (*nextReport_ < now) {
    nextReport_ = now + settings_.every;
  }
  reportUnderWay_ = true;
  happenByChance(now);
  return makeReport(now, std::nullopt);
}

// What a blade does about a failed instance: it starts it again.
void Reporter::endOutages(TimePoint now) {
  for (const Outage& each : outages_) {
    if (each.end <= now) {
      OperationPlan restart;
      restart.app = each.app;
      restart.command = "startApp";
      run(restart, now, std::nullopt);
    }
  }
  std::erase_if(outages_, [now](const Outage& each) { return each.end <= now; });
}

void Reporter::happenByChance(TimePoint now) {
  const bool fails = draws_.share() < settings_.failChance;
  const bool works = draws_.share() < settings_.workChance;
  if (!fails && !works) {
    return;
  }
  const std::vector<AppInstance> apps = platform_.apps();
  if (apps.empty()) {
    return;
  }
  const AppInstance& app = apps[draws_.oneOf(apps.size())];
  if (!app.running || !commandOn(app.id).empty()) {
    return;
  }
  if (fails) {
    failApp(app.id, settings_.every * (2 + draws_.oneOf(3)), now, std::nullopt);
    return;
  }
  OperationPlan fix;
  fix.app = app.id;
  fix.ack = draws_.share() < 0.5;
  fix.succeeds = draws_.share() < 0.9;
  fix.hotfixes = "HF-" + std::to_string(100 + draws_.oneOf(900));
  run(fix, now, std::nullopt);
}

void Reporter::resume(TimePoint now) {
  for (Running& each : running_) {
    each.due = each.due == TimePoint::max() ? now : each.due;
  }
}

void Reporter::forget() {
  asked_.clear();
  running_.clear();
  nextReport_.reset();
  reportUnderWay_ = false;
}

std::string Reporter::commandOn(std::string_view app) const {
  const auto found = std::find_if(running_.begin(), running_.end(), [app](const Running& each) {
    return each.operation.plan().app == app;
  });
  return found == running_.end() ? "" : found->operation.plan().command;
}

Reporter::Request Reporter::makeReport(TimePoint now, EventIndex event) const {
  const auto time = std::chrono::duration_cast<BladePlatform::Duration>(now - origin_);
  return {RequestKind::Report, platformDocument(platform_, time), event};
}

}  // namespace sma
