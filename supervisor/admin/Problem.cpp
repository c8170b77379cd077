#include "supervisor/admin/Problem.h"

#include "supervisor/admin/Json.h"

namespace supervisor::admin {

Response toResponse(const Problem& problem) {
  Json json{{"type", "/problems/" + problem.kind},
            {"title", problem.title},
            {"status", problem.status},
            {"detail", problem.detail},
            {"remedy", problem.remedy}};
  if (problem.job != 0) {
    json["job"] = problem.job;
  }
  if (problem.field) {
    json["field"] = *problem.field;
  }
  Response response = jsonResponse(json, problem.status);
  response.contentType = "application/problem+json";
  return response;
}

Problem badValue(const std::string& field, const std::string& detail, const std::string& remedy) {
  return {400, "bad-value", "A value cannot be as it is", detail, remedy, 0, field};
}

Problem internalProblem(const std::exception& error) {
  return {500, "internal", "The request failed within the supervisor", error.what(),
          "look into the log for what happened before"};
}

}  // namespace supervisor::admin
