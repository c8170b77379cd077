#include "supervisor/admin/JobJson.h"

#include <string_view>

namespace supervisor::admin {
namespace {

void addText(Json& json, const char* name, std::string_view text) {
  if (!text.empty()) {
    json[name] = text;
  }
}

void addTime(Json& json, const char* name, std::uint64_t time) {
  if (time != 0) {
    json[name] = time;
  }
}

}  // namespace

Json toJson(const dme::JobView& job) {
  Json json{{"id", job.id}, {"verb", nameOf(job.verb)}};
  addText(json, "target", job.target);
  json["slot"] = job.slot;
  addText(json, "app", job.app);
  addText(json, "argument", job.argument);
  json["state"] = nameOf(job.state);
  addText(json, "reason", nameOf(job.reason));
  addText(json, "cause", job.cause);
  json["code"] = job.code;
  json["percentage"] = job.percentage;
  json["attempts"] = job.attempts;
  addTime(json, "acceptedAt", job.acceptedAt);
  addTime(json, "sentAt", job.sentAt);
  addTime(json, "acknowledgedAt", job.acknowledgedAt);
  addTime(json, "finishedAt", job.finishedAt);
  addTime(json, "deliverBy", job.deliverBy);
  addTime(json, "finishBy", job.finishBy);
  json["revision"] = job.revision;
  return json;
}

Json toJson(const std::vector<dme::JobView>& jobs) {
  Json list = Json::array();
  for (const dme::JobView& job : jobs) {
    list.push_back(toJson(job));
  }
  return list;
}

std::string pathOf(const dme::JobView& job) {
  return "/api/v1/jobs/" + std::to_string(job.id);
}

}  // namespace supervisor::admin
