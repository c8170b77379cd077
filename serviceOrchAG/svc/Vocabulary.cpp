#include "serviceOrchAG/svc/Vocabulary.h"

#include "framework/base/SvcConfigParams.h"

namespace zan_serviceOrchAG {

Words::Words() = default;
Names::Names() = default;

std::string Names::configuredAddress() {
  return base::SvcConfigParams::getInstance().getAppAgAddress().str();
}

std::string Names::configuredSecondAddress() {
  return base::SvcConfigParams::getInstance().getAppAgSecondAddress().str();
}

std::string Names::configuredHeartbeatAddress() {
  return base::SvcConfigParams::getInstance().getAppAgHeartbeatAddress().str();
}

const Words& words() {
  static const Words& set = *new Words;
  return set;
}

const Names& names() {
  static const Names& set = *new Names;
  return set;
}

}  // namespace zan_serviceOrchAG
