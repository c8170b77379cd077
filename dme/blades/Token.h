#pragma once

#include <optional>
#include <string_view>

#include "framework/base/String.h"

namespace dme {

/// A new token: 32 lower-case hexadecimal digits from the system's random numbers. Nothing when
/// the system gives none.
std::optional<base::String> makeToken();

/// Compares in a time that depends on the lengths alone, so that a blade cannot find a token out
/// piece by piece.
bool isSameToken(std::string_view left, std::string_view right);

}  // namespace dme
