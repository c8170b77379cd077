#pragma once

#include <array>
#include <cstddef>

#include "framework/mo/Property.h"
#include "model/comm/DateTimeMo.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/AppLduLinkMo.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/ClusterBootstrapMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "model/sd/FaultMo.h"
#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "model/sd/InternalMgmtBootstrapMo.h"
#include "model/sd/JobMo.h"
#include "model/sd/LduMo.h"
#include "model/sd/MgmtBootstrapMo.h"
#include "model/sd/NetMgmtBootstrapMo.h"
#include "model/sd/OperationMo.h"
#include "model/sd/ResourceMo.h"
#include "model/sd/SlotMo.h"
#include "model/sd/SystemMacMo.h"
#include "model/sd/SystemMo.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/AppMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"

namespace model {

/// A list of classes of managed objects, to do something with each of them at compile time.
template <class... Me>
struct ClassList {
  static constexpr std::size_t kSize = sizeof...(Me);
  static constexpr std::array<const mo::ClassInfo*, kSize> kInfos{&Me::kClass...};
};

/// Every class of managed object: what blades report and applications (sm); what the engine keeps
/// itself, and what an application instance is given when it starts (sd); settings (comm).
using AllClasses =
    ClassList<sm::MonitorMo, sm::DiskFileSystemMo, sm::AppInstanceMo, sm::AppMo, sd::SystemMo,
              sd::ChassisMo, sd::SlotMo, sd::AppInstanceMo, sd::OperationMo, sd::FaultMo, sd::JobMo,
              sd::LduMo, sd::ExternalLduLinkMo, sd::AppLduLinkMo, sd::ResourceMo,
              sd::ClusterBootstrapMo, sd::InternalMgmtBootstrapMo, sd::MgmtBootstrapMo,
              sd::NetMgmtBootstrapMo, sd::IPMo, sd::IPV6Mo, sd::SystemMacMo, sd::BladeMo,
              comm::DateTimeMo>;

}  // namespace model
