#pragma once

#include <initializer_list>
#include <string>

#include "serviceOrchAG/bridge/Response.h"

namespace fuzz {

/// Fails unless `body` is a whole reply document: it parses, its root is `command` followed by
/// "Response", and its first child says the status.
void checkReplyBody(const std::string& body, const std::string& command, unsigned status);

/// Fails unless the response is such a reply with one of these statuses.
void checkReply(const zan_serviceOrchAG::Response& response, const std::string& command,
                std::initializer_list<unsigned> statuses);

}  // namespace fuzz
