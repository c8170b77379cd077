#include "serviceOrchAG/handlers/RequestDocument.h"

#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/MsgHandler.h"

namespace zan_serviceOrchAG {

void RequestTags::logMissing(const base::String& tag) const {
  MsgHandler::missingTagError(tag.str(), command_);
}

std::string_view RequestTags::valueOrEmpty(const base::String& tag) const {
  return expectedValue(tag).value_or(std::string_view());
}

RequestTree::RequestTree(const std::string& document, const std::string& command)
    : command_(command), root_(converter_.xmlDeserialize(document)) {}

RequestTags RequestTree::tags() const {
  const bool isRequest = root_ != nullptr && root_->name() == command_ + envelope::kRequestSuffix;
  return {isRequest ? root_ : nullptr, command_};
}

std::vector<noxxml::AgElement*> RequestTree::findAll(const base::String& name) const {
  if (root_ == nullptr) {
    return {};
  }
  return root_->xmlFindAllElementsCb(name);
}

}  // namespace zan_serviceOrchAG
