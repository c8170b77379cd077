#include "tests/serviceOrchAG/executors/StartTarget.h"

#include <initializer_list>
#include <utility>

#include "model/AllClasses.h"

namespace zan_serviceOrchAG {

namespace {

using base::String;
using method::Config;
using method::Value;
using Link = sd::ExternalLduLinkMo;

using Number = std::uint32_t;
using Byte = std::uint8_t;
using Mac = std::uint64_t;

Config object(std::uint32_t classId, const char* dn,
              std::initializer_list<std::pair<std::uint32_t, Value>> values) {
  Config config(classId, mo::Dn(dn));
  for (const auto& [property, value] : values) {
    config.set(property, value);
  }
  return config;
}

Config link(const char* port, Byte type, Number vlan, const char* vnic1, const char* vnic2) {
  return object(kExternalLink, port,
                {{Link::kPortName.id, String(port)},
                 {Link::kLinkInterfaceType.id, type},
                 {Link::kVlan.id, vlan},
                 {Link::kBladeVnic1.id, String(vnic1)},
                 {Link::kBladeVnic2.id, String(vnic2)}});
}

Config ip(Number address, Number netmask, Number gateway) {
  return object(kIp, "ip",
                {{sd::IPMo::kAddress.id, address},
                 {sd::IPMo::kNetmask.id, netmask},
                 {sd::IPMo::kGateway.id, gateway}});
}

Config ldu() {
  Config mgmt = link("Management0", 1, 0, "1:10", "2:11");
  mgmt.set(Link::kMgmtSubType.id, Value(Byte{1}));
  mgmt.set(Link::kHasMac.id, Value(true));
  mgmt.set(Link::kSystemMac.id, Value(Mac{0x00112233aabb}));
  Config cluster = link("Port-channel48", 2, 4048, "1:48", "2:49");
  cluster.addChild(ip(0x0a630103, 0xffff0000, 0));
  Config direct = link("Ethernet1/8", 3, 0, "1:20", "2:21");
  direct.set(Link::kSystemMac.id, Value(Mac{0xff}));
  Config ldu = object(kLdu, "ldu", {{sd::LduMo::kLabel.id, String("ldu-1")}});
  ldu.addChild(link("Ethernet1/1", 0, 201, "1:2", "2:3"));
  ldu.addChild(std::move(mgmt));
  ldu.addChild(std::move(cluster));
  ldu.addChild(object(kAppLink, "chain",
                      {{sd::AppLduLinkMo::kBladeVnic1.id, String("1:2")},
                       {sd::AppLduLinkMo::kBladeVnic2.id, String("2:30")}}));
  ldu.addChild(std::move(direct));
  return ldu;
}

Config resource() {
  using Resource = sd::ResourceMo;
  return object(kResource, "resource",
                {{Resource::kReqCpuCores.id, Number{6}},
                 {Resource::kMaxAllowedRam.id, Number{32768}},
                 {Resource::kReqDataHdd.id, Number{40960}},
                 {Resource::kReqSecDataHdd.id, Number{10240}}});
}

Config clusterBootstrap() {
  using Cluster = sd::ClusterBootstrapMo;
  return object(kCluster, "clusterBootstrap",
                {{Cluster::kIPv4PoolStart.id, Number{0xc000020a}},
                 {Cluster::kIPv4PoolEnd.id, Number{0xc0000213}},
                 {Cluster::kIPv4VirtIP.id, Number{0xc0000209}},
                 {Cluster::kIPv4Netmask.id, Number{0xffffff00}},
                 {Cluster::kIPv4Gateway.id, Number{0xc0000201}},
                 {Cluster::kIPv6PoolStart.id, String("2001:db8::a")},
                 {Cluster::kIPv6PoolEnd.id, String("2001:db8::13")},
                 {Cluster::kIPv6VirtIP.id, String("2001:db8::9")},
                 {Cluster::kIPv6PrefixLength.id, Number{64}},
                 {Cluster::kIPv6Gateway.id, String("2001:db8::1")}});
}

Config internalMgmtBootstrap() {
  Config internal = object(kInternal, "internalMgmtBootstrap",
                           {{sd::InternalMgmtBootstrapMo::kBladeVnic.id, String("2:60")}});
  internal.addChild(ip(0xcb007103, 0xffffff00, 0xcb007101));
  internal.addChild(object(kMac, "mac", {{sd::SystemMacMo::kMac.id, Mac{0x00aabbccddee}}}));
  return internal;
}

Config mgmtBootstrap() {
  using V6 = sd::IPV6Mo;
  Config mgmt = object(kMgmt, "mgmtBootstrap", {});
  mgmt.addChild(ip(0xc6336407, 0xffffff80, 0xc6336401));
  mgmt.addChild(object(kIpv6, "ipv6",
                       {{V6::kAddress.id, String("2001:db8:1::7")},
                        {V6::kPrefixLength.id, Number{48}},
                        {V6::kGateway.id, String("2001:db8:1::1")}}));
  return mgmt;
}

Config setting(const char* key, const char* value) {
  return object(kNetMgmt, key,
                {{sd::NetMgmtBootstrapMo::kKey.id, String(key)},
                 {sd::NetMgmtBootstrapMo::kValue.id, String(value)}});
}

Config target(bool isVdp) {
  using Instance = sd::AppInstanceMo;
  Config instance = object(kInstance, "sys/chassis-1/slot-3/app-a1",
                           {{Instance::kAppInstanceId.id, String("a1")},
                            {Instance::kSlotId.id, Number{3}},
                            {Instance::kJobType.id, Byte{4}},
                            {Instance::kMgmtBootstrapVersion.id, String("2.1")}});
  instance.addChild(ldu());
  instance.addChild(
      object(kApp, "package", {{sm::AppMo::kDeployType.id, Byte{2}}, {sm::AppMo::kVdp.id, isVdp}}));
  instance.addChild(resource());
  instance.addChild(clusterBootstrap());
  instance.addChild(internalMgmtBootstrap());
  instance.addChild(mgmtBootstrap());
  instance.addChild(object(
      kChassis, "chassis",
      {{sd::ChassisMo::kSerial.id, String("CH1")}, {sd::ChassisMo::kModel.id, String("C-9")}}));
  instance.addChild(
      object(kBlade, "blade",
             {{sd::BladeMo::kSerial.id, String("BL3")}, {sd::BladeMo::kModel.id, String("B-3")}}));
  instance.addChild(setting("dns", "192.0.2.53"));
  instance.addChild(setting("domain", ""));
  return instance;
}

Config withoutChildren(const Config& config) {
  Config bare(config.classId(), config.dn());
  for (const auto& [property, value] : config.values()) {
    bare.set(property, value);
  }
  return bare;
}

// ----- Several of each, and gaps ----------------------------------------------------------------

Config with(Config config, std::initializer_list<std::pair<std::uint32_t, Value>> values) {
  for (const auto& [property, value] : values) {
    config.set(property, value);
  }
  return config;
}

Config appLink(const char* name, const char* vnic1, const char* vnic2) {
  return object(kAppLink, name,
                {{sd::AppLduLinkMo::kBladeVnic1.id, String(vnic1)},
                 {sd::AppLduLinkMo::kBladeVnic2.id, String(vnic2)}});
}

/// Two links of every type, in no order; each pair differs in what tells its links apart.
Config crowdedLdu() {
  constexpr std::uint32_t kSub = Link::kMgmtSubType.id;
  constexpr std::uint32_t kHasMac = Link::kHasMac.id;
  constexpr std::uint32_t kMacOf = Link::kSystemMac.id;
  Config cluster = link("Port-channel48", 2, 4048, "1:48", "2:49");
  cluster.addChild(ip(0x0a630103, 0xffff0000, 0));
  Config ldu = object(kLdu, "ldu", {});
  ldu.addChild(std::move(cluster));
  ldu.addChild(link("Ethernet1/2", 0, 202, "2:3", "1:12"));
  ldu.addChild(appLink("chain-1", "1:7", "2:3"));
  ldu.addChild(with(link("Management1", 1, 77, "1:10", "2:11"),
                    {{kSub, Byte{2}}, {kHasMac, false}, {kMacOf, Mac{0x010203040506}}}));
  ldu.addChild(with(link("Ethernet1/8", 3, 5, "1:20", "2:21"), {{kMacOf, Mac{0xffffffffffff}}}));
  ldu.addChild(
      with(link("Ethernet1/1", 0, 201, "1:2", "2:0"), {{kHasMac, true}, {kMacOf, Mac{1}}}));
  ldu.addChild(with(link("Management0", 1, 9, "1:30", "2:31"),
                    {{kSub, Byte{1}}, {kHasMac, true}, {kMacOf, Mac{0x00112233aabb}}}));
  ldu.addChild(with(link("Port-channel49", 2, 0, "2:5", ""), {{kHasMac, true}, {kMacOf, Mac{2}}}));
  ldu.addChild(link("Ethernet1/9", 3, 6, "1:100", "2:1"));
  ldu.addChild(appLink("chain-2", "2:2", ""));
  return ldu;
}

Config gappedClusterBootstrap() {
  using Cluster = sd::ClusterBootstrapMo;
  return object(kCluster, "clusterBootstrap",
                {{Cluster::kIPv4PoolStart.id, Number{0xc000020a}},
                 {Cluster::kIPv4PoolEnd.id, Number{0}},
                 {Cluster::kIPv4VirtIP.id, Number{0xc0000209}},
                 {Cluster::kIPv4Gateway.id, Number{0xc0000201}},
                 {Cluster::kIPv6PoolStart.id, String("::")},
                 {Cluster::kIPv6PoolEnd.id, String("2001:db8::13")},
                 {Cluster::kIPv6VirtIP.id, String("")},
                 {Cluster::kIPv6PrefixLength.id, Number{0}},
                 {Cluster::kIPv6Gateway.id, String("fe80::1")}});
}

/// The management settings of either kind.
void addGappedMgmtBootstraps(Config& instance) {
  using V6 = sd::IPV6Mo;
  Config internal = object(kInternal, "internalMgmtBootstrap",
                           {{sd::InternalMgmtBootstrapMo::kBladeVnic.id, String("1:61")}});
  internal.addChild(ip(0xcb007104, 0xffffff00, 0));
  Config mgmt = object(kMgmt, "mgmtBootstrap", {});
  mgmt.addChild(object(kIpv6, "ipv6",
                       {{V6::kAddress.id, String("::")},
                        {V6::kPrefixLength.id, Number{64}},
                        {V6::kGateway.id, String("fe80::2")}}));
  mgmt.addChild(ip(0, 0xffffff00, 0xc6336401));
  instance.addChild(std::move(internal));
  instance.addChild(std::move(mgmt));
}

bool isOfType(const Config& link, Byte type) {
  return *link.find(Link::kLinkInterfaceType.id) == Value(type);
}

}  // namespace

Config startTarget() {
  return target(false);
}

Config startVdpTarget() {
  return target(true);
}

Config crowdedStartTarget(bool isVdp) {
  using Instance = sd::AppInstanceMo;
  using Resource = sd::ResourceMo;
  Config instance = object(kInstance, "sys/chassis-1/slot-12/app-inst-9.b",
                           {{Instance::kAppInstanceId.id, String("inst-9.b")},
                            {Instance::kSlotId.id, Number{12}},
                            {Instance::kJobType.id, Byte{4}},
                            {Instance::kMgmtBootstrapVersion.id, String("3")}});
  instance.addChild(setting("a\"b", "x<y&"));
  instance.addChild(object(kBlade, "blade", {{sd::BladeMo::kSerial.id, String("BL12")}}));
  instance.addChild(object(
      kChassis, "chassis",
      {{sd::ChassisMo::kSerial.id, String("CH<2>")}, {sd::ChassisMo::kModel.id, String("C&\"9")}}));
  addGappedMgmtBootstraps(instance);
  instance.addChild(gappedClusterBootstrap());
  instance.addChild(object(kResource, "resource",
                           {{Resource::kReqCpuCores.id, Number{1}},
                            {Resource::kMaxAllowedRam.id, Number{2048}},
                            {Resource::kReqDataHdd.id, Number{4294967295}},
                            {Resource::kReqSecDataHdd.id, Number{7}}}));
  instance.addChild(
      object(kApp, "package", {{sm::AppMo::kDeployType.id, Byte{3}}, {sm::AppMo::kVdp.id, isVdp}}));
  instance.addChild(crowdedLdu());
  instance.addChild(setting("dns", ""));
  return instance;
}

void changeChildren(Config& config, std::uint32_t classId,
                    const std::function<void(Config&)>& change) {
  Config changed = withoutChildren(config);
  for (Config child : config.children()) {
    if (child.classId() == classId) {
      change(child);
    }
    changed.addChild(std::move(child));
  }
  config = std::move(changed);
}

void dropChildren(Config& config, std::uint32_t classId) {
  Config changed = withoutChildren(config);
  for (const Config& child : config.children()) {
    if (child.classId() != classId) {
      changed.addChild(child);
    }
  }
  config = std::move(changed);
}

void changeLinks(Config& instance, std::uint8_t type, const std::function<void(Config&)>& change) {
  changeChildren(instance, kLdu, [&](Config& ldu) {
    changeChildren(ldu, kExternalLink, [&](Config& each) {
      if (isOfType(each, type)) {
        change(each);
      }
    });
  });
}

void keepLinks(Config& instance, std::uint8_t type) {
  changeChildren(instance, kLdu, [&](Config& ldu) {
    Config kept = withoutChildren(ldu);
    for (const Config& child : ldu.children()) {
      if (child.classId() == kExternalLink && isOfType(child, type)) {
        kept.addChild(child);
      }
    }
    ldu = std::move(kept);
  });
}

}  // namespace zan_serviceOrchAG
