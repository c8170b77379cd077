#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/base/String.h"
#include "framework/noxxml/AgElement.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"

namespace zan_serviceOrchAG {

/// The tags directly below one element of a request, with their values, which stand in the document
/// and are valid as long as that. Of several tags with one name the last one counts.
class RequestTags {
 public:
  /// Without an element every tag is missing. `command` is the request's command name and stands in
  /// the log lines. Both are borrowed.
  RequestTags(const noxxml::AgElement* element, const std::string& command)
      : element_(element), command_(command) {}

  bool has(const base::String& tag) const { return find(tag) != nullptr; }

  /// The value as sent, or nothing when the tag is missing.
  std::optional<std::string_view> valueAsSent(const base::String& tag) const {
    const noxxml::AgElement* const found = find(tag);
    return found == nullptr ? std::nullopt : std::optional(found->textView());
  }

  /// The trimmed value, or nothing when the tag is missing.
  std::optional<std::string_view> value(const base::String& tag) const {
    const noxxml::AgElement* const found = find(tag);
    return found == nullptr ? std::nullopt : std::optional(trimmed(found->textView()));
  }

  /// The trimmed value, or nothing, after a line in the log, when the tag is missing.
  std::optional<std::string_view> expectedValue(const base::String& tag) const {
    const std::optional<std::string_view> found = value(tag);
    if (!found) {
      logMissing(tag);
    }
    return found;
  }

  /// The trimmed value; a missing tag is logged and counts as empty.
  std::string_view valueOrEmpty(const base::String& tag) const;

 private:
  const noxxml::AgElement* find(const base::String& tag) const {
    return element_ == nullptr ? nullptr : element_->findLastChild(tag);
  }
  void logMissing(const base::String& tag) const;

  const noxxml::AgElement* element_;
  const std::string& command_;
};

/// A request document: tags, and groups, which are elements that hold tags of their own.
///
/// Elements and tags are valid as long as the object.
class RequestTree {
 public:
  /// `command` as in RequestTags. A text that is no document makes a tree without elements.
  RequestTree(const std::string& document, const std::string& command);

  /// The tags directly below the root; none unless the root is `command` followed by "Request".
  RequestTags tags() const;

  /// All elements of that name at any depth, in document order.
  std::vector<noxxml::AgElement*> findAll(const base::String& name) const;

  /// Calls `visit` with every element below the root in document order.
  template <class Visit>
  void visitAll(Visit visit) const {
    if (root_ != nullptr) {
      root_->visitBelow(visit);
    }
  }

  /// The tags directly below an element.
  RequestTags tagsOf(const noxxml::AgElement& element) const { return {&element, command_}; }

 private:
  const std::string& command_;
  noxxml::AgFactory factory_;
  noxxml::XMLConverter converter_{&factory_};
  noxxml::AgElement* root_;  // null when the text is no document
};

}  // namespace zan_serviceOrchAG
