#pragma once

#include <string>

#include "agctl/Failure.h"

namespace agctl {

/// What an answer that is no success says. `body` is as it came.
Failure problemOf(long status, const std::string& body);

/// Whether the supervisor is there and has no room at the moment.
bool isBusy(const Failure& failure);

}  // namespace agctl
