#pragma once

#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dme/Engine.h"
#include "model/AllClasses.h"

// What an operator asks of an engine, in short words for tests.

namespace dme_test {

/// An application instance as people describe it, with all that its commands need.
inline std::unique_ptr<mo::Mo> instance(const std::string& id) {
  auto app = std::make_unique<sm::AppMo>();
  app->set(sm::AppMo::kPackageFile, "fw-1.0.pkg");
  app->set(sm::AppMo::kReqDataHdd, 1);
  app->set(sm::AppMo::kDeployType, static_cast<std::uint8_t>(sm::DeployType::kNative));
  app->set(sm::AppMo::kInstallTimeout, 300);
  app->set(sm::AppMo::kUninstallTimeout, 200);
  app->set(sm::AppMo::kUpgradeTimeout, 100);
  auto resource = std::make_unique<sd::ResourceMo>();
  resource->set(sd::ResourceMo::kReqCpuCores, 1);
  resource->set(sd::ResourceMo::kMaxAllowedRam, 1024);
  resource->set(sd::ResourceMo::kReqDataHdd, 1024);
  auto link = std::make_unique<sd::ExternalLduLinkMo>();
  link->set(sd::ExternalLduLinkMo::kPortName, "mgmt0");
  link->set(sd::ExternalLduLinkMo::kLinkInterfaceType,
            static_cast<std::uint8_t>(sd::LinkInterfaceType::kMgmt));
  link->set(sd::ExternalLduLinkMo::kBladeVnic1, "1:1");
  link->set(sd::ExternalLduLinkMo::kVlan, 1);
  auto ldu = std::make_unique<sd::LduMo>();
  ldu->attach(std::move(link));
  auto described = std::make_unique<sd::AppInstanceMo>();
  described->set(sd::AppInstanceMo::kAppInstanceId, id);
  described->set(sd::AppInstanceMo::kMgmtBootstrapVersion, "1");
  described->attach(std::move(app));
  described->attach(std::move(resource));
  described->attach(std::move(ldu));
  return described;
}

/// What a call of the engine's with a callback comes to.
template <class T, class Call>
dme::Granted<T> outcomeOf(Call call) {
  std::promise<dme::Granted<T>> outcome;
  call([&outcome](dme::Granted<T> granted) { outcome.set_value(std::move(granted)); });
  return outcome.get_future().get();
}

inline dme::Granted<dme::JobView> order(dme::Engine& engine, const dme::JobOrder& order) {
  return outcomeOf<dme::JobView>([&](auto done) { engine.order(order, done); });
}
inline dme::Granted<dme::JobView> cancel(dme::Engine& engine, std::uint64_t id) {
  return outcomeOf<dme::JobView>([&](auto done) { engine.cancelJob(id, done); });
}
inline dme::Granted<dme::AppView> create(dme::Engine& engine, std::uint32_t slot,
                                         std::unique_ptr<mo::Mo> description) {
  return outcomeOf<dme::AppView>(
      [&](auto done) { engine.createApp(slot, std::move(description), done); });
}
inline dme::Granted<dme::AppView> remove(dme::Engine& engine, const std::string& id) {
  return outcomeOf<dme::AppView>([&](auto done) { engine.deleteApp(id, done); });
}
inline dme::Granted<std::vector<dme::JobView>> setTimeZone(dme::Engine& engine,
                                                           const std::string& zone) {
  return outcomeOf<std::vector<dme::JobView>>([&](auto done) { engine.setTimeZone(zone, done); });
}

inline dme::Granted<dme::Equipment> describe(dme::Engine& engine, dme::EquipmentPlace place,
                                             const dme::EquipmentChange& change) {
  return outcomeOf<dme::Equipment>([&](auto done) { engine.describe(place, change, done); });
}

inline dme::JobOrder forApp(dme::JobVerb verb, const std::string& app) {
  dme::JobOrder order;
  order.verb = verb;
  order.app = app;
  return order;
}
inline dme::JobOrder forSlot(dme::JobVerb verb, std::uint32_t slot) {
  dme::JobOrder order;
  order.verb = verb;
  order.slot = slot;
  order.level = "info";
  return order;
}

/// The reason of a refusal, and what it is about: "wrongState 'a1 is absent'".
template <class T>
std::string refusalOf(const dme::Granted<T>& granted) {
  constexpr const char* kReasons[] = {"unknownSlot", "unknownApp",   "unknownJob",
                                      "badValue",    "alreadyThere", "jobInTheWay",
                                      "wrongState",  "tooMany",      "notStored"};
  if (granted) {
    return "granted";
  }
  const dme::Refusal& refusal = granted.error();
  return std::string(kReasons[static_cast<int>(refusal.reason)]) + ": " + refusal.detail;
}

}  // namespace dme_test
