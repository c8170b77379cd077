#include "sma/Reporter.h"

#include <algorithm>

namespace sma {

Reporter::Reporter(const Settings& settings, BladePlatform& platform, TimePoint origin)
    : settings_(settings), platform_(platform), origin_(origin), draws_(settings.seed) {}

void Reporter::start(TimePoint now) {
  if (!nextReport_ && settings_.every.count() > 0) {
    nextReport_ = now + settings_.first;
  }
}

Reporter::TimePoint Reporter::due() const {
  if (!asked_.empty()) {
    return TimePoint::min();
  }
  TimePoint due = TimePoint::max();
  if (nextReport_ && !reportUnderWay_) {
    due = *nextReport_;
  }
  for (const Running& each : running_) {
    due = std::min(due, each.due);
  }
  for (const Outage& each : outages_) {
    due = std::min(due, each.end);
  }
  return due;
}

std::optional<Reporter::Request> Reporter::next(TimePoint now) {
  endOutages(now);
  if (auto request = nextAsked(now)) {
    return request;
  }
  if (auto request = nextStep(now)) {
    return request;
  }
  return nextRegular(now);
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

std::optional<Reporter::Request> Reporter::nextAsked(TimePoint now) {
  if (asked_.empty()) {
    return std::nullopt;
  }
  Request request = std::move(asked_.front());
  asked_.pop_front();
  return request.kind == RequestKind::Report ? makeReport(now, request.event) : request;
}

std::optional<Reporter::Request> Reporter::nextStep(TimePoint now) {
  const auto each = std::find_if(running_.begin(), running_.end(),
                                 [now](const Running& running) { return running.due <= now; });
  if (each == running_.end()) {
    return std::nullopt;
  }
  Operation& operation = each->operation;
  const auto kind = operation.plan().ack ? RequestKind::Progress : RequestKind::QuietProgress;
  Request request{kind, progressDocument(operation.next()), each->event};
  each->due = now + operation.plan().every;
  if (const auto effect = operation.effect()) {
    platform_.change(*effect);
  }
  if (operation.isDone()) {
    running_.erase(each);
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
  if (!app.running || isBusy(app.id)) {
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

bool Reporter::isBusy(const std::string& app) const {
  return std::any_of(running_.begin(), running_.end(),
                     [&app](const Running& each) { return each.operation.plan().app == app; });
}

Reporter::Request Reporter::makeReport(TimePoint now, EventIndex event) const {
  const auto time = std::chrono::duration_cast<BladePlatform::Duration>(now - origin_);
  return {RequestKind::Report, platformDocument(platform_, time), event};
}

}  // namespace sma
