#pragma once

#include "supervisor/admin/EngineView.h"

namespace supervisor::admin {

/// The engine of this process, which outlives this.
class EmbeddedEngine final : public EngineView {
 public:
  explicit EmbeddedEngine(dme::Engine& engine) : engine_(engine) {}

  std::vector<dme::ObjectView> model(const mo::Dn& dn) const override;
  std::vector<dme::SlotView> slots() const override;
  std::optional<dme::SlotView> slot(std::uint32_t number) const override;
  dme::EngineStatus status() const override;
  void order(const dme::JobOrder& order, Done<dme::JobView> done) override;
  dme::Granted<dme::JobView> wouldOrder(const dme::JobOrder& order) const override;
  void cancelJob(std::uint64_t id, Done<dme::JobView> done) override;
  std::vector<dme::JobView> jobs(const dme::JobFilter& filter) const override;
  std::optional<dme::JobView> job(std::uint64_t id) const override;
  WatchId watchJob(std::uint64_t id, std::uint64_t revision,
                   std::function<void(const dme::JobView&)> changed) override;
  void unwatchJob(WatchId id) override;
  void createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance,
                 Done<dme::AppView> done) override;
  void deleteApp(const std::string& id, Done<dme::AppView> done) override;
  dme::Granted<dme::AppView> wouldDeleteApp(const std::string& id) const override;
  std::vector<dme::AppView> apps(std::optional<std::uint32_t> slot) const override;
  std::optional<dme::AppView> app(const std::string& id) const override;
  dme::Granted<dme::Equipment> equipment(dme::EquipmentPlace place) const override;
  void describe(dme::EquipmentPlace place, const dme::EquipmentChange& change,
                Done<dme::Equipment> done) override;
  dme::Granted<dme::Equipment> wouldDescribe(dme::EquipmentPlace place,
                                             const dme::EquipmentChange& change) const override;
  std::string timeZone() const override;
  void setTimeZone(const std::string& zone, Done<std::vector<dme::JobView>> done) override;

 private:
  dme::Engine& engine_;
};

}  // namespace supervisor::admin
