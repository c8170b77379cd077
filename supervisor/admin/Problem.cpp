#include "supervisor/admin/Problem.h"

#include "supervisor/admin/Json.h"

namespace supervisor::admin {

Response toResponse(const Problem& problem) {
  Response response = jsonResponse({{"type", "/problems/" + problem.kind},
                                    {"title", problem.title},
                                    {"status", problem.status},
                                    {"detail", problem.detail},
                                    {"remedy", problem.remedy}},
                                   problem.status);
  response.contentType = "application/problem+json";
  return response;
}

}  // namespace supervisor::admin
