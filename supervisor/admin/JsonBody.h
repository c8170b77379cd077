#pragma once

#include <cstddef>
#include <string_view>

#include "supervisor/admin/Json.h"
#include "supervisor/admin/Message.h"

namespace supervisor::admin {

/// How deeply objects and lists may stand within each other in a body.
inline constexpr int kMostBodyDepth = 8;
/// How many members one of its objects may have.
inline constexpr std::size_t kMostMembers = 64;

/// A body's text, an object. Throws a ProblemError of the kind bad-body for what is no JSON: also
/// for bytes that are no UTF-8, for numbers beyond a double, for a member that stands there twice,
/// for too many of them, for what is nested too deeply.
Json parseBody(std::string_view text);

/// The request's body; an empty object for an empty body. Throws as parseBody(), and for a body
/// that does not say that it is JSON.
Json bodyOf(const Request& request);

}  // namespace supervisor::admin
