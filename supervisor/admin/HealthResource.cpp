#include "supervisor/admin/HealthResource.h"

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"

namespace supervisor::admin {
namespace {

Json finding(const std::string& text, const char* remedy) {
  return {{"text", text}, {"remedy", remedy}};
}

Json findingsOf(const dme::EngineStatus& status) {
  Json findings = Json::array();
  if (status.areActionsHeld) {
    findings.push_back(finding("most blades fell silent together; automatic actions are held",
                               "look at the chassis' internal network"));
  }
  if (status.silent > 0) {
    findings.push_back(finding(std::to_string(status.silent) + " blades are silent",
                               "see which at /api/v1/slots"));
  }
  return findings;
}

}  // namespace

Response getHealth(const Context& context, const Request& /*request*/) {
  const bool isEmbedded = context.engine != nullptr;
  const Json findings = isEmbedded ? findingsOf(context.engine->status()) : Json::array();
  const char* whenReady = findings.empty() ? "ok" : "degraded";
  return jsonResponse({{"status", context.isReady ? whenReady : "starting"},
                       {"version", context.version},
                       {"engine", isEmbedded ? "embedded" : context.engineEndPoint},
                       {"findings", findings}},
                      context.isReady ? 200 : 503);
}

}  // namespace supervisor::admin
