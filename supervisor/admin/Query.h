#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "supervisor/admin/Message.h"

// Fields of a request's query. Each throws a ProblemError that names the field when the text is
// not what is wanted.

namespace supervisor::admin {

/// The whole text as a decimal number, or nothing.
std::optional<std::uint64_t> numberOf(std::string_view text);

std::optional<std::string> textField(const Request& request, const std::string& name);
std::optional<std::uint64_t> numberField(const Request& request, const std::string& name,
                                         std::uint64_t least, std::uint64_t most);
std::optional<std::uint32_t> slotField(const Request& request);
/// "true" or "false"; false when it is not given.
bool flagField(const Request& request, const std::string& name);

}  // namespace supervisor::admin
