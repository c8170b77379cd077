#include <cstdint>
#include <utility>

#include "framework/core_utils/Addresses.h"
#include "framework/core_utils/Numbers.h"
#include "model/sd/ClusterBootstrapMo.h"
#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "model/sd/InternalMgmtBootstrapMo.h"
#include "model/sd/MgmtBootstrapMo.h"
#include "serviceOrchAG/executors/Addresses.h"
#include "serviceOrchAG/executors/LduLink.h"
#include "serviceOrchAG/executors/StartDocument.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using Cluster = sd::ClusterBootstrapMo;
using Internal = sd::InternalMgmtBootstrapMo;
using Link = sd::ExternalLduLinkMo;
using noxxml::AgElement;

/// Empty without a link.
base::String portNameOf(const Link* link) {
  return link != nullptr ? link->get(Link::kPortName) : base::String();
}

bool addClusterBootstrap(StartDocument& start, const Link& link) {
  AgElement* const group = start.addGroup(names().clusterBootstrap, start.root());
  AgElement* const details = start.addGroup(names().interfaceDetails, group);
  if (const sd::IPMo* const ip = link.resolveSdIP()) {
    createClusterIPv4(*ip, details, start.converter());
  } else {
    start.logMissing(ExecutorFrame::kError, names().ipv4.c_str());
  }
  if (start.addRequired(group, {names().portName, portNameOf(&link), MissingLine::kElement,
                                "STARTAPP:: clusterBootstrap: Cluster portName is missing."}) ==
      nullptr) {
    return false;
  }
  start.addOptional(names().interfaceType, getLinkInterfaceType(link), group);
  const base::String& vnic = link.get(Link::kBladeVnic1);
  start.frame().log(ExecutorFrame::kTrace, "STARTAPP: vdp : bladeVnic : [Adaptor1:Index1]:[%s]",
                    vnic.c_str());
  start.addOptional(names().bladeVNIC, getVnic(vnic, start.instance()), group);
  return true;
}

/// The addresses that are set.
void addClusterAddresses(StartDocument& start, const Cluster& cluster, AgElement* group) {
  const std::pair<const base::String&, const mo::Property<std::uint32_t>&> v4[] = {
      {names().clusterMgmtIPv4PoolStart, Cluster::kIPv4PoolStart},
      {names().clusterMgmtIPv4PoolEnd, Cluster::kIPv4PoolEnd},
      {names().clusterMgmtIPv4VirtIP, Cluster::kIPv4VirtIP},
      {names().clusterMgmtIPv4Netmask, Cluster::kIPv4Netmask},
      {names().clusterMgmtIPv4Gateway, Cluster::kIPv4Gateway},
  };
  for (const auto& [name, property] : v4) {
    if (const std::uint32_t address = cluster.get(property); address != 0) {
      start.addOptional(name, core_utils::ipV4ToString(address), group);
    }
  }
  // Here "::" counts as not set, as everywhere.
  const std::pair<const base::String&, const base::String> v6[] = {
      {names().clusterMgmtIPv6PoolStart, cluster.get(Cluster::kIPv6PoolStart)},
      {names().clusterMgmtIPv6PoolEnd, cluster.get(Cluster::kIPv6PoolEnd)},
      {names().clusterMgmtIPv6VirtIP, cluster.get(Cluster::kIPv6VirtIP)},
      {names().clusterMgmtIPv6PrefixLength,
       core_utils::uintToString(cluster.get(Cluster::kIPv6PrefixLength))},
      {names().clusterMgmtIPv6Gateway, cluster.get(Cluster::kIPv6Gateway)},
  };
  for (const auto& [name, value] : v6) {
    start.addOptional(name, value, group);
  }
}

void addInternalMgmtAddress(StartDocument& start, const Internal* internal, AgElement* group) {
  const sd::IPMo* const ip = internal != nullptr ? internal->resolveSdIP() : nullptr;
  if (ip == nullptr) {
    start.logMissing(ExecutorFrame::kError, "InternalMgmtBootstrap: Ipv4");
    return;
  }
  createMgmtIPv4(*ip, group, start.converter());
}

bool addInternalMgmt(StartDocument& start, AgElement* group) {
  const Internal* const internal = start.instance().resolveSdInternalMgmtBootstrap();
  AgElement* const details = start.addGroup(names().interfaceDetails, group);
  if (start.addRequired(
          details, {names().interfaceType, names().internalMgmt, MissingLine::kElement,
                    "STARTAPP:: InternalMgmtBootstrap: interfaceType is missing."}) == nullptr) {
    return false;
  }
  if (internal != nullptr) {
    start.addOptional(names().bladeVNIC,
                      getVnic(internal->get(Internal::kBladeVnic), start.instance()), details);
  }
  addInternalMgmtAddress(start, internal, group);
  return true;
}

/// An application may be managed by either version of IP or both.
void addMgmtAddresses(StartDocument& start, AgElement* group) {
  const sd::MgmtBootstrapMo* const mgmt = start.instance().resolveSdMgmtBootstrap();
  if (mgmt == nullptr) {
    start.logMissing(ExecutorFrame::kError, names().mgmtBootstrap.c_str());
    return;
  }
  if (const sd::IPMo* const ip = mgmt->resolveSdIP()) {
    createMgmtIPv4(*ip, group, start.converter());
  } else {
    start.logMissing(ExecutorFrame::kTrace, names().mgmtIPv4.c_str());
  }
  if (const sd::IPV6Mo* const ip = mgmt->resolveSdIPV6()) {
    createMgmtIPv6(*ip, group, start.converter());
  } else {
    start.logMissing(ExecutorFrame::kTrace, names().mgmtIPv6.c_str());
  }
}

bool addMgmtLink(StartDocument& start, AgElement* group) {
  const Link* const link = managementLink(start.ldu());
  AgElement* const details = start.addGroup(names().interfaceDetails, group);
  if (start.addRequired(details, {names().portName, portNameOf(link), MissingLine::kElement,
                                  "STARTAPP:: mgmtBootstrap: portName is missing."}) == nullptr ||
      start.addRequired(details,
                        {names().interfaceType, getLinkInterfaceType(*link), MissingLine::kElement,
                         "STARTAPP:: mgmtBootstrap: interfaceType is missing."}) == nullptr) {
    return false;
  }
  start.addOptional(names().mgmtSubType, getExternalLinkLduMgmtSubType(*link), details);
  if (!isToldByMac(*link)) {
    start.addOptional(names().vlan, core_utils::uintToString(link->get(Link::kVlan)), details);
    return true;
  }
  for (const auto& vnic : {Link::kBladeVnic1, Link::kBladeVnic2}) {
    start.addOptional(names().bladeVNIC, getVnic(link->get(vnic), start.instance()), details);
  }
  start.addOptional(names().macAddress, macAddressOf(*link), details);
  return true;
}

}  // namespace

bool addClusterBootstraps(StartDocument& start) {
  if (!start.isVdp()) {
    return true;
  }
  for (const Link* const link : externalLinks(start.ldu(), sd::LinkInterfaceType::kCluster)) {
    if (!addClusterBootstrap(start, *link)) {
      return false;
    }
  }
  return true;
}

bool addClusterMgmtBootstrap(StartDocument& start) {
  const Cluster* const cluster = start.instance().resolveSdClusterBootstrap();
  if (cluster == nullptr) {
    return true;
  }
  AgElement* const group = start.addGroup(names().clusterMgmtBootstrap, start.root());
  addClusterAddresses(start, *cluster, group);
  return start.addRequired(
             start.addGroup(names().interfaceDetails, group),
             {names().portName, portNameOf(managementLink(start.ldu())), MissingLine::kElement,
              "STARTAPP:: clusterMgmtBootstrap: Management portName is missing."}) != nullptr;
}

bool addMgmtBootstrap(StartDocument& start) {
  AgElement* const group = start.addGroup(names().mgmtBootstrap, start.root());
  if (start.isVdp()) {
    return addInternalMgmt(start, group);
  }
  addMgmtAddresses(start, group);
  return addMgmtLink(start, group);
}

}  // namespace zan_serviceOrchAG
