#include "serviceOrchAG/handlers/RequestDocument.h"

#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/MsgHandler.h"

namespace zan_serviceOrchAG {

bool RequestTags::has(const base::String& tag) const {
  return element_ != nullptr && element_->findLastChild(tag) != nullptr;
}

std::optional<std::string_view> RequestTags::valueAsSent(const base::String& tag) const {
  const noxxml::AgElement* const found =
      element_ == nullptr ? nullptr : element_->findLastChild(tag);
  return found == nullptr ? std::nullopt : std::optional(found->textView());
}

std::optional<std::string_view> RequestTags::value(const base::String& tag) const {
  const std::optional<std::string_view> sent = valueAsSent(tag);
  return sent ? std::optional(trimmed(*sent)) : std::nullopt;
}

std::optional<std::string_view> RequestTags::expectedValue(const base::String& tag) const {
  const std::optional<std::string_view> found = value(tag);
  if (!found) {
    MsgHandler::missingTagError(tag.str(), command_);
  }
  return found;
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
