#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/QuietChannel.h"
#include "serviceOrchAG/bridge/ClientMap.h"

// A stimulus that arrives from the engine, through the callbacks that the service registers.

namespace fuzz {

void runInbound(Input input) {
  const Manner manner = takeManner(input);
  Gateway gateway(manner);
  QuietChannel::instance().refuseAddresses(false);
  zan_serviceOrchAG::createSMAClient("3", "127.0.0.1", "1", true);
  gateway.receive(input);
}

}  // namespace fuzz
