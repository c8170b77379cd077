#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"

// The document of an application's failure: the engine hears of the instance that it names.

namespace fuzz {

void runAppFailure(Input input) {
  using serviceorchapi::NotifyAppFailureMe;
  Gateway gateway(takeManner(input));
  const std::string document = textOf(input);
  const auto tags = noxxml::XMLConverter::xml2map(document, "appFailureRequest");
  const auto instance = tags.find("appInstanceId");
  const auto response = gateway.handle(&MsgHandler::AG_appFailureReqCb, document);
  if (instance == tags.end()) {
    check(response != nullptr, "a report is answered", document);
    checkReply(*response, "appFailure", {505});
    check(gateway.engine().calls() == 0, "a report of nothing stays from the engine", document);
    return;
  }
  if (gateway.hasDropped()) {
    return;
  }
  check(response != nullptr, "a report is answered", document);
  checkReply(*response, "appFailure", {100});
  const auto told = gateway.engine().onlyCall<NotifyAppFailureMe>();
  check(told.has_value() && gateway.engine().calls() == 1, "the engine hears of one failure",
        document);
  check(std::get<0>(*told) == zan_serviceOrchAG::trim(instance->second),
        "the engine hears of the instance that the report names", document);
}

}  // namespace fuzz
