#pragma once

#include <string>

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

/// Why a request was not served (RFC 9457), and what to do about it.
struct Problem {
  unsigned status;
  std::string kind;    ///< the last step of the problem's type, "/problems/KIND"; never changes
  std::string title;   ///< the same for all problems of the kind
  std::string detail;  ///< about this one
  std::string remedy;
};

Response toResponse(const Problem& problem);

}  // namespace supervisor::admin
