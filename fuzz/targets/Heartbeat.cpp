#include <optional>

#include "framework/core_utils/Numbers.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "fuzz/support/Tags.h"
#include "model/serviceorchapi/Methods.h"

// A heartbeat's document: whatever it holds, the engine hears of one beat and the blade an OK.

namespace fuzz {
namespace {

std::uint32_t numberOf(const Tags& tags, const char* tag) {
  std::uint32_t number = 0;
  try {
    core_utils::stringToUint(trimmed(tags, tag), number);
  } catch (const std::invalid_argument&) {
  }
  return number;
}

}  // namespace

void runHeartbeat(Input input) {
  using serviceorchapi::UpdateSmaHeartbeatMe;
  Gateway gateway(takeManner(input));
  const std::string document = textOf(input);
  const auto response = gateway.handle(&MsgHandler::AG_heartbeatReqCb, document);
  if (gateway.hasDropped()) {
    return;
  }
  check(response != nullptr, "a heartbeat is answered", document);
  checkReply(*response, "heartbeat", {100});
  const auto beat = gateway.engine().onlyCall<UpdateSmaHeartbeatMe>();
  check(beat.has_value() && gateway.engine().calls() == 1, "the engine hears of one beat",
        document);
  const auto tags = noxxml::XMLConverter::xml2map(document, "heartbeatRequest");
  check(*beat == UpdateSmaHeartbeatMe::InTuple(Gateway::kSlot, numberOf(tags, "count"),
                                               numberOf(tags, "timer")),
        "the engine hears the numbers of the beat", document);
}

}  // namespace fuzz
