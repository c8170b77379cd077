#pragma once

#include <span>

#include "supervisor/admin/Router.h"

namespace supervisor::admin {

/// Everything that the interface can be asked.
std::span<const Route> routes();

}  // namespace supervisor::admin
