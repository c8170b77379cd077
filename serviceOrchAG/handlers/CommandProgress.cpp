#include "serviceOrchAG/server/MsgHandler.h"

namespace zan_serviceOrchAG {

Response* MsgHandler::AG_commandProgressUpdateReqCb(const std::string& /*messageId*/,
                                                    const std::string& /*action*/,
                                                    const std::string& /*document*/, int /*slot*/) {
  return nullptr;
}

}  // namespace zan_serviceOrchAG
