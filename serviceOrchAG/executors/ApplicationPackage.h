#pragma once

#include "framework/base/String.h"
#include "framework/mo/Mo.h"
#include "model/sm/AppMo.h"

// What the commands about an application's package read of it.

namespace zan_serviceOrchAG {

/// The application of an instance: the first that stands below it, or null.
mo::Mo* firstApplication(const mo::Mo& instance);

/// "native", "lxc", "vm" or "unknown".
base::String getDeployType(const sm::AppMo& app);

/// The data disk that the application needs in megabytes, as decimal text.
base::String dataDiskText(const sm::AppMo& app);

}  // namespace zan_serviceOrchAG
