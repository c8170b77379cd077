#include <algorithm>

#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "fuzz/support/Tags.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"

// A registration's document, under every verdict of the engine.

namespace fuzz {
namespace {

using serverapi::OsControllerVersionMe;
using serviceorchapi::ValidateBladeStateMe;

/// The status that the engine's manner leads to.
unsigned expectedStatus(Manner manner) {
  if (saysNo(manner)) {
    return 511;
  }
  if (manner == Manner::kWantsRetry) {
    return 510;
  }
  return manner == Manner::kSilent ? 506 : 100;
}

/// The registry takes no longer texts.
bool fitsTheRegistry(const Tags& tags) {
  constexpr std::size_t kMostTextBytes = 255;
  return std::max({trimmed(tags, "bladeSlotId").size(), trimmed(tags, "ip").size(),
                   trimmed(tags, "port").size()}) <= kMostTextBytes;
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
  const bool hasClient =
      fitsTheRegistry(tags) && (response->status == 100 || response->status == 511);
  check(zan_serviceOrchAG::is_bladeRegistered(slot) == hasClient,
        "a blade that was judged has a client", slot);
  check(zan_serviceOrchAG::getBladeStatus(slot) == (hasClient && response->status == 100),
        "a blade is valid when the engine says so", slot);
}

}  // namespace fuzz
