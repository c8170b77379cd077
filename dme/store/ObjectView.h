#pragma once

#include <string>
#include <utility>
#include <vector>

#include "framework/method/Config.h"

namespace dme {

/// What one managed object shows to people: a copy, with the properties that are set, in the order
/// of its class's table. A slot's token never shows: "hasToken" stands in its place.
struct ObjectView {
  std::string dn;
  std::string className;
  std::vector<std::pair<std::string, method::Value>> values;

  bool operator==(const ObjectView&) const = default;
};

}  // namespace dme
