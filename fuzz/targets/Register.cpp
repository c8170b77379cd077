#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"

// A registration's document, under every verdict of the engine.

namespace fuzz {
namespace {

using serverapi::OsControllerVersionMe;
using serviceorchapi::ValidateBladeStateMe;
using Tags = std::map<base::String, base::String>;

std::string trimmed(const Tags& tags, const char* tag) {
  const auto entry = tags.find(tag);
  return entry == tags.end() ? "" : zan_serviceOrchAG::trim(entry->second).str();
}

/// The status that the engine's manner leads to.
unsigned expectedStatus(Manner manner) {
  switch (manner) {
    case Manner::kRejects:
    case Manner::kFails:
    case Manner::kAnswersTwice:  // the second answer is there before the first is read
      return 511;
    case Manner::kWantsRetry:
      return 510;
    case Manner::kSilent:
      return 506;
    default:
      return 100;
  }
}

void checkEngine(const Gateway& gateway, const Tags& tags, bool isAnswered) {
  const auto asked = gateway.engine().onlyCall<ValidateBladeStateMe>();
  check(asked.has_value(), "the engine is asked about the blade");
  check(std::get<2>(*asked).str() == trimmed(tags, "token"), "the engine gets the blade's token");
  const auto images = gateway.engine().onlyCall<OsControllerVersionMe>();
  check(images.has_value() == isAnswered, "the engine gets the images once it has judged");
  if (images) {
    check(std::get<2>(*images) == std::get<0>(*asked), "both calls are about one slot");
    check(std::get<4>(*images) == std::get<1>(*asked), "both calls name one version");
  }
}

}  // namespace

void runRegister(Input input) {
  const Manner manner = takeManner(input);
  Gateway gateway(manner);
  const std::string document = textOf(input);
  const Tags tags = noxxml::XMLConverter::xml2map(document, "registerRequest");
  const bool isWhole = tags.contains("bladeSlotId") && tags.contains("ip") && tags.contains("port");
  const auto response = gateway.handle(&MsgHandler::AG_registerReqCb, document);
  if (!isWhole) {
    check(response != nullptr, "a registration is answered", document);
    checkReply(*response, "register", {505});
    check(gateway.engine().calls() == 0, "an incomplete registration stays from the engine");
    return;
  }
  const std::string slot = trimmed(tags, "bladeSlotId");
  if (gateway.hasDropped()) {
    check(!zan_serviceOrchAG::is_bladeRegistered(slot), "a dropped registration leaves nothing");
    return;
  }
  check(response != nullptr, "a registration is answered", document);
  checkReply(*response, "register", {expectedStatus(manner)});
  checkEngine(gateway, tags, manner != Manner::kSilent);
  check(zan_serviceOrchAG::is_bladeRegistered(slot) ==
            (response->status == 100 || response->status == 511),
        "a blade that was judged has a client", slot);
  check(zan_serviceOrchAG::getBladeStatus(slot) == (response->status == 100),
        "a blade is valid when the engine says so", slot);
}

}  // namespace fuzz
