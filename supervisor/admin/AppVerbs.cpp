#include "supervisor/admin/AppVerbs.h"

#include <utility>

#include "supervisor/admin/Fields.h"
#include "supervisor/admin/Order.h"

namespace supervisor::admin {
namespace {

void readPackage(Fields& fields, dme::JobOrder& order) {
  if (order.verb == dme::JobVerb::kUpgrade) {
    order.packageFile = fields.requiredText("packageFile");
    order.version = fields.text("version").value_or("");
  }
}

void orderOf(const Context& context, const Request& request, const Reply& reply,
             dme::JobVerb verb) {
  dme::JobOrder order;
  order.verb = verb;
  order.app = request.parameters.front();
  place(context, request, std::move(order), reply, &readPackage);
}

}  // namespace

void installApp(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kInstall);
}
void uninstallApp(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kUninstall);
}
void startApp(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kStart);
}
void stopApp(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kStop);
}
void clearAppLogs(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kClearAppLogs);
}
void upgradeApp(const Context& context, const Request& request, const Reply& reply) {
  orderOf(context, request, reply, dme::JobVerb::kUpgrade);
}

}  // namespace supervisor::admin
