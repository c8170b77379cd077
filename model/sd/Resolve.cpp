#include "model/sd/AppInstanceMo.h"
#include "model/sd/ClusterBootstrapMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "model/sd/InternalMgmtBootstrapMo.h"
#include "model/sd/LduMo.h"
#include "model/sd/MgmtBootstrapMo.h"
#include "model/sd/ResourceMo.h"
#include "model/sd/SystemMacMo.h"

// What each class resolves: the one of another class that came along with it.

namespace sd {

LduMo* AppInstanceMo::resolveSdLdu() const {
  return resolve<LduMo>();
}
ResourceMo* AppInstanceMo::resolveSdResource() const {
  return resolve<ResourceMo>();
}
ClusterBootstrapMo* AppInstanceMo::resolveSdClusterBootstrap() const {
  return resolve<ClusterBootstrapMo>();
}
InternalMgmtBootstrapMo* AppInstanceMo::resolveSdInternalMgmtBootstrap() const {
  return resolve<InternalMgmtBootstrapMo>();
}
MgmtBootstrapMo* AppInstanceMo::resolveSdMgmtBootstrap() const {
  return resolve<MgmtBootstrapMo>();
}

IPMo* ExternalLduLinkMo::resolveSdIP() const {
  return resolve<IPMo>();
}

IPMo* InternalMgmtBootstrapMo::resolveSdIP() const {
  return resolve<IPMo>();
}
SystemMacMo* InternalMgmtBootstrapMo::resolveSdSystemMac() const {
  return resolve<SystemMacMo>();
}

IPMo* MgmtBootstrapMo::resolveSdIP() const {
  return resolve<IPMo>();
}
IPV6Mo* MgmtBootstrapMo::resolveSdIPV6() const {
  return resolve<IPV6Mo>();
}

}  // namespace sd
