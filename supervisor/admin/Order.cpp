#include "supervisor/admin/Order.h"

#include <chrono>
#include <cstdint>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/JobJson.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Query.h"
#include "supervisor/admin/RefusalProblem.h"

namespace supervisor::admin {
namespace {

using std::chrono::milliseconds;

constexpr std::uint64_t kMostMs = std::uint64_t{7} * 24 * 3600 * 1000;  // a week

std::optional<milliseconds> timeIn(Fields& fields, std::string_view name) {
  const auto number = fields.number(name, 1, kMostMs);
  return number ? std::optional(milliseconds(*number)) : std::nullopt;
}

Response accepted(const dme::JobView& job) {
  Response response = jsonResponse(toJson(job), 202);
  response.location = pathOf(job);
  return response;
}

Response would(const dme::JobView& job) {
  return jsonResponse({{"would", toJson(job)}});
}

}  // namespace

void place(const Context& context, const Request& request, dme::JobOrder order, const Reply& reply,
           ReadOwnValues readOwnValues) {
  const Json body = bodyOf(request);
  Fields fields(body);
  readOwnValues(fields, order);
  order.deliverWithin = timeIn(fields, "deliverWithinMs");
  order.finishWithin = timeIn(fields, "finishWithinMs");
  fields.end();
  if (flagField(request, "dryRun")) {
    reply(answerOf(context.engine->wouldOrder(order), would));
    return;
  }
  context.engine->order(order, [reply](const dme::Granted<dme::JobView>& granted) {
    reply(answerOf(granted, accepted));
  });
}

}  // namespace supervisor::admin
