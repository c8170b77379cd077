#include "fuzz/support/ReplyChecks.h"

#include <algorithm>
#include <vector>

#include "framework/noxxml/XMLConverter.h"
#include "fuzz/support/Check.h"

namespace fuzz {

void checkReplyBody(const std::string& body, const std::string& command, unsigned status) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root = converter.xmlDeserialize(body);
  check(root != nullptr, "a reply parses", body);
  check(root->name() == command + "Response", "a reply is named after its command", body);
  const std::vector<noxxml::AgElement*> children = root->children();
  check(!children.empty() && children.front()->name() == "response",
        "a reply begins with its response", body);
  const noxxml::AgElement* const code = children.front()->findChild("code");
  check(code != nullptr && code->text() == std::to_string(status),
        "a reply's document says its status", body);
  check(noxxml::XMLConverter::xmlSerialize(root) == body, "a reply is written in one way", body);
}

void checkReply(const zan_serviceOrchAG::Response& response, const std::string& command,
                std::initializer_list<unsigned> statuses) {
  check(std::find(statuses.begin(), statuses.end(), response.status) != statuses.end(),
        "a reply has a status of its command", std::to_string(response.status));
  checkReplyBody(response.body, command, response.status);
}

}  // namespace fuzz
