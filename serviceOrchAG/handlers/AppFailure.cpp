#include "serviceOrchAG/server/MsgHandler.h"

#include <memory>
#include <optional>

#include "framework/base/Buffer.h"
#include "framework/core_log/Log.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/handlers/RequestDocument.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// The "appFailure" request: an application instance of a blade has failed. The engine gets to know
// which, and decides whether it knows it; the blade's report is acknowledged either way.

namespace zan_serviceOrchAG {

using core_log::logPrintf;
using core_log::serviceLevel;

Response* MsgHandler::AG_appFailureReqCb(const std::string& messageId,
                                         const std::string& /*action*/, const std::string& document,
                                         int slot) {
  auto response = std::make_unique<Response>();
  const RequestTree tree(document, words().appFailureName);
  const std::optional<std::string_view> sent = tree.tags().value(names().appInstanceId);
  if (!sent) {
    missingTagResponse(names().appInstanceId.str(), words().appFailureName, response.get());
    return response.release();
  }
  const base::String appInstance(*sent);
  logPrintf("AG_appFailureReqCb", serviceLevel(), 5,
            "Received appFailure request for appInstance slot[%d]: %s", slot, appInstance.c_str());
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  logPrintf("AG_appFailureReqCb", serviceLevel(), 1,
            "Triggering NotifyAppFailure method for slot : %d, Message ID : %s", slot,
            messageId.c_str());
  Svc::invokeZanDmeServiceorchapiNotifyAppFailure(cookie, appInstance, false,
                                                  proc::Stimulus::Priority::kDefault);
  fillResponse(*response, words().appFailureName, status::kSuccess, "OK");
  return response.release();
}

}  // namespace zan_serviceOrchAG
