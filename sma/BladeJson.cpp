#include "sma/BladeJson.h"

namespace sma {

using Json = nlohmann::json;

Json toldJson(const BladeAgent& blade) {
  const CommandDesk& desk = blade.desk();
  Json executed = Json::array();
  for (const auto& [what, count] : desk.executions()) {
    executed.push_back({{"command", what.first}, {"app", what.second}, {"count", count}});
  }
  Json cleared = Json::array();
  for (const auto& [app, count] : desk.clearedLogs()) {
    cleared.push_back({{"app", app}, {"count", count}});
  }
  Json faults = Json::array();
  for (const CommandFault& each : desk.faults()) {
    faults.push_back(
        {{"kind", faultName(each.kind)}, {"command", each.command}, {"times", each.times}});
  }
  return {{"logLevel", desk.logLevel()},     {"timeZone", desk.timeZone()},
          {"received", desk.received()},     {"clearedLogs", std::move(cleared)},
          {"executed", std::move(executed)}, {"faults", std::move(faults)}};
}

Json instancesJson(const BladeAgent& blade) {
  Json instances = Json::array();
  for (const AppInstance& app : blade.platform().apps()) {
    instances.push_back({{"id", app.id},
                         {"version", app.version},
                         {"running", app.running},
                         {"enabled", app.enabled},
                         {"external", app.external},
                         {"hotfixes", app.hotfixes},
                         {"underWay", blade.commandOn(app.id)}});
  }
  return instances;
}

std::string toLine(const Json& document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace sma
