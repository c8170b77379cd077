#include "serviceOrchAG/executors/ApplicationPackage.h"

#include <string>
#include <vector>

#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

mo::Mo* firstApplication(const mo::Mo& instance) {
  const std::vector<mo::Mo*> applications = instance.findChild(sm::AppMo::kClassId);
  return applications.empty() ? nullptr : applications.front();
}

const base::String& deployTypeText(const sm::AppMo& app) {
  switch (static_cast<sm::DeployType>(app.get(sm::AppMo::kDeployType))) {
    case sm::DeployType::kNative:
      return names().native;
    case sm::DeployType::kLxc:
      return names().lxc;
    case sm::DeployType::kVm:
      return names().vm;
  }
  return names().unknown;
}

base::String dataDiskText(const sm::AppMo& app) {
  return std::to_string(app.get(sm::AppMo::kReqDataHdd) << 10);
}

}  // namespace zan_serviceOrchAG
