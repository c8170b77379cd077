#pragma once

#include <map>
#include <string>

#include "framework/base/String.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"

namespace fuzz {

/// The tags of a request's document, with their values as sent.
using Tags = std::map<base::String, base::String>;

/// The trimmed value; empty when the tag is missing.
inline std::string trimmed(const Tags& tags, const char* tag) {
  const auto entry = tags.find(tag);
  return entry == tags.end() ? "" : zan_serviceOrchAG::trim(entry->second).str();
}

}  // namespace fuzz
