#include "supervisor/admin/TimeZoneResource.h"

#include <string>
#include <vector>

#include "framework/utils/TimeZoneCache.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/JobJson.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/RefusalProblem.h"

namespace supervisor::admin {

Response getTimeZone(const Context& context, const Request& /*request*/) {
  const std::string zone = context.engine->timeZone();
  return jsonResponse({{"timezone", zone}, {"posix", utils::posixRulesOf(zone).str()}});
}

void putTimeZone(const Context& context, const Request& request, const Reply& reply) {
  const Json body = bodyOf(request);
  Fields fields(body);
  const std::string zone = fields.requiredText("timezone");
  fields.end();
  context.engine->setTimeZone(
      zone, [reply, zone](const dme::Granted<std::vector<dme::JobView>>& granted) {
        reply(answerOf(granted, [&zone](const std::vector<dme::JobView>& jobs) {
          return jsonResponse({{"timezone", zone}, {"jobs", toJson(jobs)}}, 202);
        }));
      });
}

}  // namespace supervisor::admin
