#include "supervisor/admin/EmbeddedEngine.h"

#include <utility>

namespace supervisor::admin {

std::vector<dme::ObjectView> EmbeddedEngine::model(const mo::Dn& dn) const {
  return engine_.model(dn);
}
std::vector<dme::SlotView> EmbeddedEngine::slots() const {
  return engine_.slots();
}
std::optional<dme::SlotView> EmbeddedEngine::slot(std::uint32_t number) const {
  return engine_.slot(number);
}
dme::EngineStatus EmbeddedEngine::status() const {
  return engine_.status();
}
void EmbeddedEngine::order(const dme::JobOrder& order, Done<dme::JobView> done) {
  engine_.order(order, std::move(done));
}
dme::Granted<dme::JobView> EmbeddedEngine::wouldOrder(const dme::JobOrder& order) const {
  return engine_.wouldOrder(order);
}
void EmbeddedEngine::cancelJob(std::uint64_t id, Done<dme::JobView> done) {
  engine_.cancelJob(id, std::move(done));
}
std::vector<dme::JobView> EmbeddedEngine::jobs(const dme::JobFilter& filter) const {
  return engine_.jobs(filter);
}
std::optional<dme::JobView> EmbeddedEngine::job(std::uint64_t id) const {
  return engine_.job(id);
}
EngineView::WatchId EmbeddedEngine::watchJob(std::uint64_t id, std::uint64_t revision,
                                             std::function<void(const dme::JobView&)> changed) {
  return engine_.watchJob(id, revision, std::move(changed));
}
void EmbeddedEngine::unwatchJob(WatchId id) {
  engine_.unwatchJob(id);
}
void EmbeddedEngine::createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance,
                               Done<dme::AppView> done) {
  engine_.createApp(slot, std::move(instance), std::move(done));
}
void EmbeddedEngine::deleteApp(const std::string& id, Done<dme::AppView> done) {
  engine_.deleteApp(id, std::move(done));
}
dme::Granted<dme::AppView> EmbeddedEngine::wouldDeleteApp(const std::string& id) const {
  return engine_.wouldDeleteApp(id);
}
std::vector<dme::AppView> EmbeddedEngine::apps(std::optional<std::uint32_t> slot) const {
  return engine_.apps(slot);
}
std::optional<dme::AppView> EmbeddedEngine::app(const std::string& id) const {
  return engine_.app(id);
}
dme::Granted<dme::Equipment> EmbeddedEngine::equipment(dme::EquipmentPlace place) const {
  return engine_.equipment(place);
}
void EmbeddedEngine::describe(dme::EquipmentPlace place, const dme::EquipmentChange& change,
                              Done<dme::Equipment> done) {
  engine_.describe(place, change, std::move(done));
}
dme::Granted<dme::Equipment> EmbeddedEngine::wouldDescribe(
    dme::EquipmentPlace place, const dme::EquipmentChange& change) const {
  return engine_.wouldDescribe(place, change);
}
std::string EmbeddedEngine::timeZone() const {
  return engine_.timeZone();
}
void EmbeddedEngine::setTimeZone(const std::string& zone, Done<std::vector<dme::JobView>> done) {
  engine_.setTimeZone(zone, std::move(done));
}

}  // namespace supervisor::admin
