#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sma/base/Element.h"
#include "sma/base/Random.h"
#include "sma/messages/BladeCounts.h"
#include "sma/platform/Platform.h"
#include "sma/tasks/Operation.h"

namespace sma {

/// What a registered blade tells of itself besides that it lives, and when: its platform every so
/// often, the failures of its instances, the progress of its commands. It sends nothing itself. One
/// thread.
class Reporter {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  struct Settings {
    Duration every{0};  ///< between platform reports; 0: none but those asked for
    Duration first{0};  ///< the first one after start()
    /// Probabilities that, with a regular report, an instance fails or is given a hot fix.
    double failChance = 0;
    double workChance = 0;
    std::uint64_t seed = 1;
  };

  /// By which the caller recognises what a request comes from.
  using EventIndex = std::optional<std::size_t>;

  struct Request {
    RequestKind kind;
    Element document;
    EventIndex event;
    bool isEarly = false;  ///< may be sent by a blade that is not registered
  };

  /// Told of each operation that has made its last report.
  using OnEnd = std::function<void(const Operation& operation, TimePoint now)>;

  /// `platform` is borrowed, and changed by what happens to its instances. `origin` is the time at
  /// which the run starts.
  Reporter(const Settings& settings, BladePlatform& platform, TimePoint origin);
  void onEnd(OnEnd callback) { onEnd_ = std::move(callback); }

  /// The blade has been registered. Does nothing after the first time.
  void start(TimePoint now);
  /// When next() wants to be called.
  TimePoint due(bool registered = true) const;
  /// A request that is to be sent at `now`, if there is one. A blade that is not registered reports
  /// nothing but the format of its disk.
  std::optional<Request> next(TimePoint now, bool registered = true);
  /// The platform report under way was answered or given up; there is one at a time.
  void onReportEnd() { reportUnderWay_ = false; }

  void report(EventIndex event);
  /// The instance stops. After `lasts`, unless that is 0, it is started again.
  void failApp(const std::string& app, Duration lasts, TimePoint now, EventIndex event);
  void run(const OperationPlan& plan, TimePoint now, EventIndex event);
  /// Reports of a command what is no step of an operation.
  void say(const Progress& progress);
  /// Lets operations go on that rest half-way for good.
  void resume(TimePoint now);
  /// Forgets what is under way, as a blade does that dies. start() comes anew.
  void forget();
  /// The command under way on the instance, or the platform; empty when there is none.
  std::string commandOn(std::string_view app) const;
  bool isIdle() const { return running_.empty(); }

 private:
  struct Running {
    Operation operation;
    TimePoint due;
    EventIndex event;
  };
  struct Outage {
    std::string app;
    TimePoint end;
  };

  std::optional<Request> nextAsked(TimePoint now, bool registered);
  std::optional<Request> nextStep(TimePoint now, bool registered);
  std::optional<Request> makeStep(std::vector<Running>::iterator running, TimePoint now);
  std::optional<Request> nextRegular(TimePoint now);
  void endOutages(TimePoint now);
  void happenByChance(TimePoint now);
  Request makeReport(TimePoint now, EventIndex event) const;

  const Settings settings_;
  BladePlatform& platform_;
  const TimePoint origin_;
  Draws draws_;
  OnEnd onEnd_;
  std::optional<TimePoint> nextReport_;
  bool reportUnderWay_ = false;
  std::deque<Request> asked_;  // reports without a document yet
  std::vector<Running> running_;
  std::vector<Outage> outages_;
};

}  // namespace sma
