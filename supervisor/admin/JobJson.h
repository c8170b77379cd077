#pragma once

#include <vector>

#include "dme/jobs/JobView.h"
#include "supervisor/admin/Json.h"

namespace supervisor::admin {

/// The words of dme::JobView; empty texts and times that have not come are left out.
Json toJson(const dme::JobView& job);
Json toJson(const std::vector<dme::JobView>& jobs);

/// Where the job can be asked for.
std::string pathOf(const dme::JobView& job);

}  // namespace supervisor::admin
