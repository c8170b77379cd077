#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

Words::Words() = default;
Names::Names() = default;

std::string Names::configuredAddress() {
  return "127.128.254.1:5556";
}
std::string Names::configuredSecondAddress() {
  return "127.128.1.254:5556";
}
std::string Names::configuredHeartbeatAddress() {
  return "127.128.254.1:5559";
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
