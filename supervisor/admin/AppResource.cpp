#include "supervisor/admin/AppResource.h"

#include <utility>

#include "framework/mo/Dn.h"
#include "supervisor/admin/AppDescription.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Query.h"
#include "supervisor/admin/RefusalProblem.h"
#include "supervisor/admin/SlotTree.h"

namespace supervisor::admin {
namespace {

Json toJson(const dme::AppView& app) {
  return {{"id", app.id},
          {"dn", app.dn},
          {"slot", app.slot},
          {"phase", dme::nameOf(app.phase)},
          {"version", app.version},
          {"packageFile", app.packageFile},
          {"isFailed", app.isFailed},
          {"job", app.job}};
}

Problem unknownApp(const std::string& id) {
  return toProblem({dme::Refusal::Reason::kUnknownApp,
                    "no application instance has the identifier '" + id + "'",
                    "see the instances at /api/v1/apps"});
}

/// What the blade reports of the instance stands beside it.
std::string reportedNameOf(const dme::AppView& app) {
  return mo::Dn(app.dn).parent().child("reported-" + mo::escapeStep(app.id)).text().str();
}

}  // namespace

Response getApps(const Context& context, const Request& request) {
  Json apps = Json::array();
  for (const dme::AppView& app : context.engine->apps(slotField(request))) {
    apps.push_back(toJson(app));
  }
  return jsonResponse({{"apps", std::move(apps)}});
}

Response getApp(const Context& context, const Request& request) {
  const std::string& id = request.parameters.front();
  const auto app = context.engine->app(id);
  if (!app) {
    throw ProblemError(unknownApp(id));
  }
  const auto objects = context.engine->model(mo::Dn(app->dn));
  const std::string reported = reportedNameOf(*app);
  Json json = toJson(*app);
  json["believed"] = describeInstance(app->dn, objects);
  json["reported"] = describeInstance(reported, context.engine->model(mo::Dn(reported)));
  json["parts"] = describeApp(app->slot, app->dn, objects);
  return jsonResponse(json);
}

void postApp(const Context& context, const Request& request, const Reply& reply) {
  AppDescription description = readApp(bodyOf(request));
  context.engine->createApp(description.slot, std::move(description.instance),
                            [reply](const dme::Granted<dme::AppView>& granted) {
                              reply(answerOf(granted, [](const dme::AppView& app) {
                                Response response = jsonResponse(toJson(app), 201);
                                response.location = "/api/v1/apps/" + app.id;
                                return response;
                              }));
                            });
}

void deleteApp(const Context& context, const Request& request, const Reply& reply) {
  const std::string& id = request.parameters.front();
  if (flagField(request, "dryRun")) {
    reply(answerOf(context.engine->wouldDeleteApp(id), [](const dme::AppView& app) {
      return jsonResponse({{"wouldDelete", toJson(app)}});
    }));
    return;
  }
  context.engine->deleteApp(id, [reply](const dme::Granted<dme::AppView>& granted) {
    reply(answerOf(granted, [](const dme::AppView&) { return noContent(); }));
  });
}

}  // namespace supervisor::admin
