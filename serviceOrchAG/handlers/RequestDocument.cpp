#include "serviceOrchAG/handlers/RequestDocument.h"

#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/MsgHandler.h"

namespace zan_serviceOrchAG {

const base::String* RequestTags::find(const base::String& tag) const {
  const auto entry = values_.find(tag);
  return entry == values_.end() ? nullptr : &entry->second;
}

std::optional<base::String> RequestTags::value(const base::String& tag) const {
  const base::String* const sent = find(tag);
  return sent == nullptr ? std::nullopt : std::optional(trim(*sent));
}

base::String RequestTags::valueOrEmpty(const base::String& tag) const {
  std::optional<base::String> trimmed = value(tag);
  if (!trimmed) {
    MsgHandler::missingTagError(tag.str(), command_);
  }
  return std::move(trimmed).value_or(base::String());
}

RequestTags readRequestTags(const std::string& document, const std::string& command) {
  return {noxxml::XMLConverter::xml2map(document, command + envelope::kRequestSuffix), command};
}

RequestTree::RequestTree(const std::string& document, const std::string& command)
    : command_(command), root_(converter_.xmlDeserialize(document)) {}

RequestTags RequestTree::tags() const {
  return {noxxml::XMLConverter::xml2map(root_, command_ + envelope::kRequestSuffix), command_};
}

std::vector<noxxml::AgElement*> RequestTree::findAll(const base::String& name) const {
  if (root_ == nullptr) {
    return {};
  }
  return root_->xmlFindAllElementsCb(name);
}

RequestTags RequestTree::tagsOf(const noxxml::AgElement& element) const {
  return {noxxml::XMLConverter::xml2map(&element, element.name()), command_};
}

}  // namespace zan_serviceOrchAG
