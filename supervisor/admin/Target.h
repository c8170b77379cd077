#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace supervisor::admin {

/// A request's target, decoded: the steps of its path and the fields of its query.
struct Target {
  std::vector<std::string> steps;  ///< "/api/v1/slots/3" has four; "/" has none
  std::map<std::string, std::string> query;
};

/// Splits first and decodes then, so that an escaped "/" stays within its step. In the query "+"
/// stands for a blank. The error says what is wrong with the text.
tl::expected<Target, std::string> parseTarget(std::string_view text);

/// The text with everything escaped that has a meaning in a query.
std::string escapeQueryValue(std::string_view text);

}  // namespace supervisor::admin
