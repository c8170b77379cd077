#pragma once

#include <stdexcept>

namespace fuzz {

/// Thrown where Manner says that something is refused.
struct Refusal : std::runtime_error {
  Refusal() : std::runtime_error("refused") {}
};

}  // namespace fuzz
