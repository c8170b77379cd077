#include "serviceOrchAG/server/MsgHandler.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>

#include "framework/base/Buffer.h"
#include "framework/core_log/Log.h"
#include "framework/core_utils/Numbers.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/handlers/RequestDocument.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// The "heartbeat" request: a blade says that it lives. Its counters go to the engine, which is the
// one to judge them, and the blade always gets an OK.

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

/// 0, after a line in the log, when the tag is missing or holds no number.
std::uint32_t readNumber(const RequestTags& tags, const base::String& tag, int slot) {
  std::uint32_t number = 0;
  const std::optional<std::string_view> sent = tags.expectedValue(tag);
  if (!sent) {
    return number;
  }
  const base::String value(*sent);
  try {
    core_utils::stringToUint(value, number);
  } catch (const std::exception& error) {
    logPrintf("AG_heartbeatReqCb", serviceLevel(), 8,
              "Heartbeat exception caught for slot[%d]: %s[%s] : %s", slot, tag.c_str(),
              value.c_str(), error.what());
  }
  return number;
}

/// Every heartbeat gets the same reply, so it is written once. Never freed: workers use it to the
/// last.
const Response& okReply() {
  static const Response& reply = *[] {
    auto made = std::make_unique<Response>();
    MsgHandler::fillResponse(*made, words().heartbeatName, status::kSuccess, "OK");
    return made.release();
  }();
  return reply;
}

}  // namespace

Response* MsgHandler::AG_heartbeatReqCb(const std::string& messageId, const std::string& /*action*/,
                                        const std::string& document, int slot) {
  const RequestTree tree(document, words().heartbeatName);
  const RequestTags tags = tree.tags();
  const std::uint32_t count = readNumber(tags, names().count, slot);
  const std::uint32_t timer = readNumber(tags, names().timer, slot);
  logPrintf("AG_heartbeatReqCb", serviceLevel(), 1,
            "Triggering UpdateSmaHeartbeat method for slot : %d, Message ID : %s", slot,
            messageId.c_str());
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(cookie, static_cast<unsigned int>(slot), count,
                                                    timer, false,
                                                    proc::Stimulus::Priority::kDefault);
  return new Response(okReply());
}

}  // namespace zan_serviceOrchAG
