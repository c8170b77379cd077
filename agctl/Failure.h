#pragma once

#include <string>
#include <tl/expected.hpp>

#include "agctl/ExitCode.h"
#include "agctl/Json.h"

namespace agctl {

/// Why something was not done, for people and for scripts.
struct Failure {
  ExitCode exitCode = ExitCode::kOther;
  std::string cause;
  std::string remedy;
  Json problem = {};  ///< the supervisor's problem document; null when it did not answer with one
};

template <class T>
using Outcome = tl::expected<T, Failure>;

}  // namespace agctl
