#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "framework/base/String.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"

namespace zan_serviceOrchAG {

/// The tags of a request, or of one group in it, by name, with their values.
class RequestTags {
 public:
  using Map = std::map<base::String, base::String>;

  /// `command` is the request's command name and stands in the log lines; it is borrowed.
  RequestTags(Map values, const std::string& command)
      : values_(std::move(values)), command_(command) {}

  /// The value as sent, or null when the tag is missing. Valid as long as the object.
  const base::String* find(const base::String& tag) const;

  /// The trimmed value, or nothing when the tag is missing.
  std::optional<base::String> value(const base::String& tag) const;

  /// The trimmed value; a missing tag is logged and counts as empty.
  base::String valueOrEmpty(const base::String& tag) const;

  const Map& all() const { return values_; }

 private:
  Map values_;
  const std::string& command_;
};

/// The tags directly below the root of a request document. None when the text is no document or the
/// root is not `command` followed by "Request".
RequestTags readRequestTags(const std::string& document, const std::string& command);

/// A request document with its groups: elements that hold tags of their own.
///
/// Elements live as long as the object.
class RequestTree {
 public:
  /// `command` as in RequestTags. A text that is no document makes a tree without elements.
  RequestTree(const std::string& document, const std::string& command);

  /// The tags directly below the root; none when the root has another name than the request's.
  RequestTags tags() const;

  /// All elements of that name at any depth, in document order.
  std::vector<noxxml::AgElement*> findAll(const base::String& name) const;

  /// The tags directly below an element.
  RequestTags tagsOf(const noxxml::AgElement& element) const;

 private:
  const std::string& command_;
  noxxml::AgFactory factory_;
  noxxml::XMLConverter converter_{&factory_};
  noxxml::AgElement* root_;  // null when the text is no document
};

}  // namespace zan_serviceOrchAG
