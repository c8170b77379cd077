#include "serviceOrchAG/executors/ApplicationPackage.h"

#include <string>
#include <vector>

namespace zan_serviceOrchAG {

mo::Mo* firstApplication(const mo::Mo& instance) {
  const std::vector<mo::Mo*> applications = instance.findChild(sm::AppMo::kClassId);
  return applications.empty() ? nullptr : applications.front();
}

base::String getDeployType(const sm::AppMo& app) {
  return app.stringify(sm::AppMo::kDeployType);
}

base::String dataDiskText(const sm::AppMo& app) {
  return std::to_string(app.get(sm::AppMo::kReqDataHdd) << 10);
}

}  // namespace zan_serviceOrchAG
