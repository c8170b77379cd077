#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "supervisor/admin/EngineView.h"

namespace supervisor::admin {

/// An engine that shows what a test has put into it, and remembers what was wanted of it. What
/// stands in its members is for one thread, save jobs and watches.
class FakeEngine final : public EngineView {
 public:
  struct Watch {
    std::uint64_t job;
    std::uint64_t revision;
    std::function<void(const dme::JobView&)> changed;
  };

  std::vector<dme::ObjectView> model(const mo::Dn& dn) const override {
    const auto found = models_.find(dn.text().str());
    return found == models_.end() ? std::vector<dme::ObjectView>() : found->second;
  }
  std::vector<dme::SlotView> slots() const override { return slots_; }
  std::optional<dme::SlotView> slot(std::uint32_t number) const override {
    for (const dme::SlotView& slot : slots_) {
      if (slot.slot == number) {
        return slot;
      }
    }
    return std::nullopt;
  }
  dme::EngineStatus status() const override { return status_; }

  void order(const dme::JobOrder& order, Done<dme::JobView> done) override {
    orders_.push_back(order);
    finish(jobAnswer_, std::move(done));
  }
  dme::Granted<dme::JobView> wouldOrder(const dme::JobOrder& order) const override {
    wouldOrders_.push_back(order);
    return jobAnswer_;
  }
  void cancelJob(std::uint64_t id, Done<dme::JobView> done) override {
    cancelled_.push_back(id);
    finish(jobAnswer_, std::move(done));
  }
  std::vector<dme::JobView> jobs(const dme::JobFilter& filter) const override {
    const std::lock_guard guard(mutex_);
    filter_ = filter;
    std::vector<dme::JobView> jobs;
    for (auto job = jobs_.rbegin(); job != jobs_.rend(); ++job) {
      jobs.push_back(job->second);
    }
    return jobs;
  }
  std::optional<dme::JobView> job(std::uint64_t id) const override {
    const std::lock_guard guard(mutex_);
    const auto found = jobs_.find(id);
    return found == jobs_.end() ? std::nullopt : std::optional(found->second);
  }
  WatchId watchJob(std::uint64_t id, std::uint64_t revision,
                   std::function<void(const dme::JobView&)> changed) override {
    std::optional<dme::JobView> now = job(id);
    if (now && now->revision > revision) {
      changed(*now);
      return ++lastWatch_;
    }
    const std::lock_guard guard(mutex_);
    watches_[++lastWatch_] = {id, revision, std::move(changed)};
    return lastWatch_;
  }
  void unwatchJob(WatchId id) override {
    const std::lock_guard guard(mutex_);
    watches_.erase(id);
  }

  void createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance,
                 Done<dme::AppView> done) override {
    created_.emplace_back(slot, std::move(instance));
    finish(appAnswer_, std::move(done));
  }
  void deleteApp(const std::string& id, Done<dme::AppView> done) override {
    deleted_.push_back(id);
    finish(appAnswer_, std::move(done));
  }
  dme::Granted<dme::AppView> wouldDeleteApp(const std::string& id) const override {
    wouldDelete_.push_back(id);
    return appAnswer_;
  }
  std::vector<dme::AppView> apps(std::optional<std::uint32_t> slot) const override {
    std::vector<dme::AppView> apps;
    std::copy_if(apps_.begin(), apps_.end(), std::back_inserter(apps),
                 [slot](const dme::AppView& app) { return !slot || app.slot == *slot; });
    return apps;
  }
  std::optional<dme::AppView> app(const std::string& id) const override {
    const auto found = std::find_if(apps_.begin(), apps_.end(),
                                    [&id](const dme::AppView& app) { return app.id == id; });
    return found == apps_.end() ? std::nullopt : std::optional(*found);
  }

  dme::Granted<dme::Equipment> equipment(dme::EquipmentPlace place) const override {
    const auto found = equipment_.find(place);
    return found == equipment_.end() ? dme::Equipment{} : found->second;
  }
  void describe(dme::EquipmentPlace place, const dme::EquipmentChange& change,
                Done<dme::Equipment> done) override {
    described_.emplace_back(place, change);
    finish(equipmentAnswer_, std::move(done));
  }
  dme::Granted<dme::Equipment> wouldDescribe(dme::EquipmentPlace place,
                                             const dme::EquipmentChange& change) const override {
    wouldDescribe_.emplace_back(place, change);
    return equipmentAnswer_;
  }

  std::string timeZone() const override { return zone_; }
  void setTimeZone(const std::string& zone, Done<std::vector<dme::JobView>> done) override {
    zones_.push_back(zone);
    finish(zoneAnswer_, std::move(done));
  }

  // For the test:

  /// Puts the job there and tells those who watch it, on the calling thread.
  void change(const dme::JobView& job) {
    std::vector<Watch> due;
    {
      const std::lock_guard guard(mutex_);
      jobs_[job.id] = job;
      for (auto next = watches_.begin(); next != watches_.end();) {
        const bool isDue = next->second.job == job.id && next->second.revision < job.revision;
        if (isDue) {
          due.push_back(std::move(next->second));
        }
        next = isDue ? watches_.erase(next) : std::next(next);
      }
    }
    for (const Watch& watch : due) {
      watch.changed(job);
    }
  }
  std::size_t watches() const {
    const std::lock_guard guard(mutex_);
    return watches_.size();
  }

  std::map<std::string, std::vector<dme::ObjectView>> models_;
  std::vector<dme::SlotView> slots_;
  dme::EngineStatus status_;
  std::vector<dme::AppView> apps_;
  std::string zone_ = "UTC";
  std::map<dme::EquipmentPlace, dme::Equipment> equipment_;

  dme::Granted<dme::JobView> jobAnswer_;
  dme::Granted<dme::AppView> appAnswer_;
  dme::Granted<std::vector<dme::JobView>> zoneAnswer_;
  dme::Granted<dme::Equipment> equipmentAnswer_;
  /// What is wanted is finished when the test calls these.
  bool isLate_ = false;
  std::vector<std::function<void()>> late_;

  std::vector<dme::JobOrder> orders_;
  mutable std::vector<dme::JobOrder> wouldOrders_;
  std::vector<std::uint64_t> cancelled_;
  mutable dme::JobFilter filter_;
  std::vector<std::pair<std::uint32_t, std::unique_ptr<mo::Mo>>> created_;
  std::vector<std::string> deleted_;
  mutable std::vector<std::string> wouldDelete_;
  std::vector<std::string> zones_;
  using Described = std::vector<std::pair<dme::EquipmentPlace, dme::EquipmentChange>>;
  Described described_;
  mutable Described wouldDescribe_;

 private:
  template <class T>
  void finish(const dme::Granted<T>& answer, Done<T> done) {
    if (isLate_) {
      late_.push_back([answer, done = std::move(done)] { done(answer); });
    } else {
      done(answer);
    }
  }

  mutable std::mutex mutex_;
  std::map<std::uint64_t, dme::JobView> jobs_;  // guarded by mutex_
  std::map<WatchId, Watch> watches_;            // guarded by mutex_
  WatchId lastWatch_ = 0;
};

}  // namespace supervisor::admin
