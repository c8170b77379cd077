#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "dme/apps/AppCatalog.h"
#include "dme/base/Refusal.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/chassis/Equipment.h"
#include "dme/chassis/TimeSetting.h"
#include "dme/jobs/JobChecks.h"
#include "dme/running/GatewayCalls.h"
#include "dme/running/JobClock.h"
#include "dme/running/JobLedger.h"
#include "dme/running/JobListener.h"
#include "dme/running/JobRunner.h"
#include "dme/store/ObjectStore.h"

namespace dme {

/// Takes an operator's orders, and has them carried out.
///
/// Not thread-safe, save board(): its owner holds one lock for it and the store. A `done` is
/// called once, on the store's thread, if the function that took it grants; else never.
class Jobs {
 public:
  using TimePoint = JobClock::TimePoint;

  struct Settings {
    /// Without progress for so long, a report may show that a job was not done.
    std::chrono::milliseconds settleAfter = std::chrono::seconds(30);
    CommandNeeds needs;
  };

  /// Everything outlives this, and the store is closed before this goes. Takes up the jobs that the
  /// store holds. `wake` lets the engine's thread call tick().
  Jobs(ObjectStore& store, Chassis& chassis, AppInstances& instances, BladeMonitor& monitor,
       const Settings& settings, WallClock wallClock, GatewayCalls::Send send,
       std::function<void()> wake);

  Granted<JobView> wouldOrder(const JobOrder& order) const;
  Granted<void> order(const JobOrder& order, Done<JobView> done);
  Granted<void> cancel(std::uint64_t id, Done<JobView> done);

  Granted<void> createApp(std::uint32_t slot, const mo::Mo& description, Done<AppView> done);
  Granted<AppView> wouldDeleteApp(const std::string& id) const;
  Granted<void> deleteApp(const std::string& id, Done<AppView> done);
  std::vector<AppView> apps(std::optional<std::uint32_t> slot) const;
  std::optional<AppView> app(const std::string& id) const;

  Granted<Equipment> equipment(EquipmentPlace place) const { return equipment_.at(place); }
  Granted<Equipment> wouldDescribe(EquipmentPlace place, const EquipmentChange& change) const {
    return equipment_.changed(place, change);
  }
  Granted<void> describe(EquipmentPlace place, const EquipmentChange& change, Done<Equipment> done);

  std::string timeZone() const { return time_.zone(); }
  Granted<void> setTimeZone(const std::string& zone, Done<std::vector<JobView>> done);

  /// What people may see. Thread-safe.
  JobBoard& board() { return ledger_.board(); }
  const JobBoard& board() const { return ledger_.board(); }
  /// Wants to be told what blades and gateway tell.
  BladeEvents& events() { return listener_; }

  /// Does what is due. Called on the engine's thread, after each wake and when deadline() has come.
  void tick(TimePoint now);
  std::optional<TimePoint> deadline() const;
  /// Draws the consequences of what was stored or not until now, and sends nothing. Called before
  /// each of the orders above, since whoever was told of an outcome must find it so; and when
  /// nothing waits for the disk any more, before the store is closed.
  void catchUp();

 private:
  Granted<Job> plan(const JobOrder& order) const;
  JobView accept(Job job);
  /// What follows from the outcome of the transaction that made the jobs, or gave them up.
  void made(const std::vector<std::uint64_t>& ids, bool isStored);
  void cancelled(const std::vector<std::uint64_t>& ids, bool isStored);
  /// Whether the instance's description is being made or deleted. Nothing can be done with it then.
  bool isUnsettled(const std::string& app) const { return unsettledApps_.contains(app); }
  AppView viewOf(const Object& instance) const;
  const Job* jobOf(const Object& instance) const;
  /// Gives up what the slot's blade was not told yet of an earlier zone.
  void cancelTimeZone(std::uint32_t slot, std::vector<std::uint64_t>& cancelled);
  /// Makes a job that tells the slot's blade the zone, unless the blade is going away.
  void orderTimeZone(std::uint32_t slot, std::vector<JobView>& made);

  Chassis& chassis_;
  AppCatalog catalog_;
  EquipmentSetting equipment_;
  TimeSetting time_;
  JobClock clock_;
  JobLedger ledger_;
  JobChecks checks_;
  GatewayCalls gateway_;
  JobRunner runner_;
  JobListener listener_;
  std::set<std::string> unsettledApps_;  // which are being made or deleted, until that is stored
};

}  // namespace dme
