#include "serviceOrchAG/server/MsgHandler.h"

#include <memory>

#include "framework/core_log/Log.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

using core_log::logPrintf;
using core_log::serviceLevel;

unsigned int MsgHandler::getSdJobStatusCode(unsigned int code) {
  return zan_serviceOrchAG::getSdJobStatusCode(code);
}

noxxml::AgElement* MsgHandler::AG_response_generate(noxxml::XMLConverter& converter,
                                                    const std::string& cmd, unsigned int code,
                                                    const std::string& message) {
  noxxml::AgElement* const root = converter.xmlAddRootNode(cmd + envelope::kResponseSuffix, "");
  noxxml::AgElement* const response =
      converter.xmlAddChildNode(envelope::kResponseElement, "", root);
  converter.xmlAddChildNode(names().code, std::to_string(code), response);
  if (!message.empty()) {
    converter.xmlAddChildNode(envelope::kMessageElement, message, response);
  }
  return root;
}

void MsgHandler::fillResponse(Response& response, const std::string& cmd, unsigned int code,
                              const std::string& message) {
  noxxml::AgFactory factory;
  noxxml::XMLConverter converter(&factory);
  response.status = code;
  response.body = converter.xmlSerialize(AG_response_generate(converter, cmd, code, message));
}

Response* MsgHandler::errorResponse(const std::string& cmd, unsigned int code,
                                    const std::string& message, Response* response) {
  std::unique_ptr<Response> created;
  if (response == nullptr) {
    created = std::make_unique<Response>();
    response = created.get();
  }
  // The text can hold what a blade sent, so it is never the format.
  logPrintf("errorResponse", serviceLevel(), 6, "%s", message.c_str());
  fillResponse(*response, cmd, code, message);
  created.release();
  return response;
}

Response* MsgHandler::missingTagResponse(const std::string& tag, const std::string& cmd,
                                         Response* response) {
  return errorResponse(cmd, status::kWrongParameterValue,
                       "No <" + tag + "> tag found in the " + cmd + " request", response);
}

Response* MsgHandler::missingValueResponse(const std::string& tag, const std::string& cmd,
                                           Response* response) {
  // "response", although it is the request that lacks the value: agents match this text.
  return errorResponse(cmd, status::kWrongParameterValue,
                       "No " + tag + " value found in the " + cmd + " response", response);
}

Response* MsgHandler::invalidParamResponse(const std::string& tag, const std::string& value,
                                           const std::string& cmd, Response* response) {
  return errorResponse(
      cmd, status::kWrongParameterValue,
      "Invalid value \"" + value + "\" found for <" + tag + "> in the " + cmd + " request",
      response);
}

Response* MsgHandler::invalidActionResponse(const std::string& action, const std::string& cmd,
                                            Response* response) {
  return errorResponse(cmd, status::kInvalidCommand,
                       "Received " + cmd + " request with invalid action \"" + action + "\"",
                       response);
}

void MsgHandler::missingTagError(const std::string& tag, const std::string& cmd) {
  logPrintf("missingTagError", serviceLevel(), 5, "No <%s> tag found in the %s request",
            tag.c_str(), cmd.c_str());
}

void MsgHandler::extraTagError(const std::string& tag, const std::string& cmd) {
  logPrintf("extraTagError", serviceLevel(), 8, "More <%s> tag found in the %s request",
            tag.c_str(), cmd.c_str());
}

}  // namespace zan_serviceOrchAG
