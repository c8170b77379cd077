#include "supervisor/admin/SlotVerbs.h"

#include <utility>

#include "supervisor/admin/Fields.h"
#include "supervisor/admin/Order.h"
#include "supervisor/admin/SlotResource.h"

namespace supervisor::admin {
namespace {

void readLevel(Fields& fields, dme::JobOrder& order) {
  if (order.verb == dme::JobVerb::kLogLevel) {
    order.level = fields.requiredText("level");
  }
}

void orderOf(const Context& context, const Request& request, const Reply& reply,
             dme::JobVerb verb) {
  dme::JobOrder order;
  order.verb = verb;
  order.slot = slotStep(request);
  place(context, request, std::move(order), reply, &readLevel);
}

}  // namespace

void formatSlot(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kFormatDisk);
}
void clearSlotLogs(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kClearSystemLogs);
}
void deregisterSlot(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kDeregister);
}
void setSlotLogLevel(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kLogLevel);
}

}  // namespace supervisor::admin
