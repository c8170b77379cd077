#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dme/Engine.h"
#include "dme/apps/AppView.h"
#include "dme/base/Refusal.h"
#include "dme/chassis/Equipment.h"
#include "dme/jobs/JobView.h"
#include "framework/mo/Mo.h"

namespace supervisor::admin {

/// What the interface reads of the engine and wants of it, as dme::Engine says: a seam, so that the
/// resources can be tested without one. Every call is thread-safe and quick; a `done` is called
/// once, on the calling thread or another.
class EngineView {
 public:
  template <class T>
  using Done = std::function<void(dme::Granted<T>)>;
  using WatchId = std::uint64_t;

  virtual ~EngineView() = default;

  virtual std::vector<dme::ObjectView> model(const mo::Dn& dn) const = 0;
  virtual std::vector<dme::SlotView> slots() const = 0;
  virtual std::optional<dme::SlotView> slot(std::uint32_t number) const = 0;
  virtual dme::EngineStatus status() const = 0;

  virtual void order(const dme::JobOrder& order, Done<dme::JobView> done) = 0;
  virtual dme::Granted<dme::JobView> wouldOrder(const dme::JobOrder& order) const = 0;
  virtual void cancelJob(std::uint64_t id, Done<dme::JobView> done) = 0;
  virtual std::vector<dme::JobView> jobs(const dme::JobFilter& filter) const = 0;
  virtual std::optional<dme::JobView> job(std::uint64_t id) const = 0;
  virtual WatchId watchJob(std::uint64_t id, std::uint64_t revision,
                           std::function<void(const dme::JobView&)> changed) = 0;
  virtual void unwatchJob(WatchId id) = 0;

  virtual void createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance,
                         Done<dme::AppView> done) = 0;
  virtual void deleteApp(const std::string& id, Done<dme::AppView> done) = 0;
  virtual dme::Granted<dme::AppView> wouldDeleteApp(const std::string& id) const = 0;
  virtual std::vector<dme::AppView> apps(std::optional<std::uint32_t> slot) const = 0;
  virtual std::optional<dme::AppView> app(const std::string& id) const = 0;

  virtual dme::Granted<dme::Equipment> equipment(dme::EquipmentPlace place) const = 0;
  virtual void describe(dme::EquipmentPlace place, const dme::EquipmentChange& change,
                        Done<dme::Equipment> done) = 0;
  virtual dme::Granted<dme::Equipment> wouldDescribe(dme::EquipmentPlace place,
                                                     const dme::EquipmentChange& change) const = 0;

  virtual std::string timeZone() const = 0;
  virtual void setTimeZone(const std::string& zone, Done<std::vector<dme::JobView>> done) = 0;
};

}  // namespace supervisor::admin
