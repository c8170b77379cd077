#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "model/sd/ClusterBootstrapMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "tests/serviceOrchAG/executors/StartHarness.h"
#include "tests/support/LogCapture.h"

// The bootstrap settings in the document of a start.

namespace zan_serviceOrchAG {
namespace {

using base::String;
using method::Config;
using method::Value;
using test_support::LogCapture;
using test_support::LogLine;

using Cluster = sd::ClusterBootstrapMo;
using Link = sd::ExternalLduLinkMo;

TEST(StartBootstrap, TwoClusterLinks_HaveOneElementEach) {
  Config target = startVdpTarget();
  changeLinks(target, 3, setting<&Link::kLinkInterfaceType>(std::uint8_t{2}));
  EXPECT_EQ(countOf(sentDocument("startVdp", target), "<clusterBootstrap>"), 2U);
  Config plain = startTarget();
  EXPECT_EQ(countOf(sentDocument("start", plain), "<clusterBootstrap>"), 0U);
}

TEST(StartBootstrap, ClusterLinkWithNothingButItsPort_IsSentWithThat) {
  Config target = startVdpTarget();
  changeLinks(target, 2, [](Config& link) {
    dropChildren(link, kIp);
    unset<&Link::kBladeVnic1>(link);
  });
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executorNamed("startVdp"), target).hasFailed);
  EXPECT_EQ(elementOf(blades.sent().front().document, "clusterBootstrap"),
            "<clusterBootstrap><interfaceDetails/><portName>Port-channel48</portName>"
            "<interfaceType>cluster</interfaceType></clusterBootstrap>");
  EXPECT_TRUE(log.contains(8, "STARTAPP: appInstanceId[a1]: slot[3]: IPv4 : missing"));
  EXPECT_TRUE(log.contains(1, "STARTAPP: vdp : bladeVnic : [Adaptor1:Index1]:[]"));
}

TEST(StartBootstrap, NoClusterSettings_NoElement) {
  for (const char* name : {"start", "startVdp"}) {
    Config target = executorNamed(name).target();
    dropChildren(target, kCluster);
    const std::string document = sentDocument(name, target);
    EXPECT_FALSE(document.empty());
    EXPECT_EQ(countOf(document, "clusterMgmtBootstrap"), 0U);
  }
}

TEST(StartBootstrap, ClusterAddressesThatAreNotSet_AreLeftOut) {
  Config target = startTarget();
  changeChildren(target, kCluster, [](Config& cluster) {
    cluster.set(Cluster::kIPv4PoolStart.id, Value(std::uint32_t{0}));
    unset<&Cluster::kIPv4Gateway>(cluster);
    cluster.set(Cluster::kIPv6PoolStart.id, Value(String("::")));
    cluster.set(Cluster::kIPv6PoolEnd.id, Value(String("")));
    cluster.set(Cluster::kIPv6PrefixLength.id, Value(std::uint32_t{0}));
    unset<&Cluster::kIPv6Gateway>(cluster);
  });
  EXPECT_EQ(elementOf(sentDocument("start", target), "clusterMgmtBootstrap"),
            "<clusterMgmtBootstrap><clusterMgmtIPv4PoolEnd>192.0.2.19</clusterMgmtIPv4PoolEnd>"
            "<clusterMgmtIPv4VirtIP>192.0.2.9</clusterMgmtIPv4VirtIP>"
            "<clusterMgmtIPv4Netmask>255.255.255.0</clusterMgmtIPv4Netmask>"
            "<clusterMgmtIPv6VirtIP>2001:db8::9</clusterMgmtIPv6VirtIP>"
            "<interfaceDetails><portName>Management0</portName></interfaceDetails>"
            "</clusterMgmtBootstrap>");
}

TEST(StartBootstrap, ClusterAddressOfVersionSix_IsTextWhateverItSays) {
  Config target = startTarget();
  changeChildren(target, kCluster, setting<&Cluster::kIPv6VirtIP>(String("0.0.0.0")));
  EXPECT_EQ(elementOf(sentDocument("start", target), "clusterMgmtIPv6VirtIP"),
            "<clusterMgmtIPv6VirtIP>0.0.0.0</clusterMgmtIPv6VirtIP>");
}

TEST(StartBootstrap, ClusterSettingsWithoutAddresses_HaveThePort) {
  Config target = startTarget();
  dropChildren(target, kCluster);
  target.addChild(Config(kCluster, mo::Dn("empty")));
  EXPECT_EQ(elementOf(sentDocument("start", target), "clusterMgmtBootstrap"),
            "<clusterMgmtBootstrap><interfaceDetails><portName>Management0</portName>"
            "</interfaceDetails></clusterMgmtBootstrap>");
}

TEST(StartBootstrap, LinkKnownByItsVlan_TellsThat) {
  Config target = startTarget();
  changeLinks(target, 1, [](Config& link) {
    link.set(Link::kHasMac.id, Value(false));
    link.set(Link::kVlan.id, Value(std::uint32_t{77}));
    link.set(Link::kMgmtSubType.id, Value(std::uint8_t{2}));
  });
  EXPECT_EQ(countOf(sentDocument("start", target),
                    "<interfaceDetails><portName>Management0</portName>"
                    "<interfaceType>mgmt</interfaceType><mgmtSubType>events</mgmtSubType>"
                    "<vlan>77</vlan></interfaceDetails></mgmtBootstrap>"),
            1U);
}

TEST(StartBootstrap, LinkWithNothingButItsPort_IsSentWithThat) {
  for (const bool hasMac : {false, true}) {
    Config target = startTarget();
    changeLinks(target, 1, [hasMac](Config& link) {
      unset<&Link::kMgmtSubType>(link);
      unset<&Link::kBladeVnic1>(link);
      unset<&Link::kBladeVnic2>(link);
      unset<&Link::kSystemMac>(link);
      link.set(Link::kHasMac.id, Value(hasMac));
    });
    EXPECT_EQ(countOf(sentDocument("start", target),
                      "<interfaceDetails><portName>Management0</portName>"
                      "<interfaceType>mgmt</interfaceType></interfaceDetails></mgmtBootstrap>"),
              1U)
        << hasMac;
  }
}

TEST(StartBootstrap, TwoManagementLinks_TheFirstCounts) {
  Config target = startTarget();
  changeLinks(target, 3, setting<&Link::kLinkInterfaceType>(std::uint8_t{1}));
  const std::string document = sentDocument("start", target);
  EXPECT_EQ(countOf(document, "<portName>Management0</portName>"), 2U);
  EXPECT_EQ(countOf(document, "<portName>Ethernet1/8</portName>"), 0U);
  EXPECT_EQ(countOf(document, "<interface><interfaceType>mgmt</interfaceType>"), 2U);
}

TEST(StartBootstrap, NoManagementAddresses_IsToldAndTheLinkIsSent) {
  Config target = startTarget();
  dropChildren(target, kMgmt);
  const std::string mgmt = elementOf(sentDocument("start", target), "mgmtBootstrap");
  EXPECT_TRUE(
      mgmt.starts_with("<mgmtBootstrap><interfaceDetails><portName>Management0</portName>"));
  EXPECT_EQ(
      linesOf(target, 8),
      (std::vector<LogLine>{
          {8, kStartFunction, "STARTAPP: appInstanceId[a1]: slot[3]: mgmtBootstrap : missing"}}));
}

TEST(StartBootstrap, OneVersionOfIp_IsSentAlone) {
  const struct {
    std::uint32_t dropped;
    const char* first;
    const char* line;
  } rows[] = {{kIp, "<mgmtBootstrap><mgmtIPv6>2001:db8:1::7</mgmtIPv6>",
               "STARTAPP: appInstanceId[a1]: slot[3]: mgmtIPv4 : missing"},
              {kIpv6, "<mgmtBootstrap><mgmtIPv4>198.51.100.7</mgmtIPv4>",
               "STARTAPP: appInstanceId[a1]: slot[3]: mgmtIPv6 : missing"}};
  for (const auto& [dropped, first, line] : rows) {
    Config target = startTarget();
    changeChildren(target, kMgmt,
                   [childClass = dropped](Config& mgmt) { dropChildren(mgmt, childClass); });
    const ScriptedBlades blades;
    const LogCapture log;
    EXPECT_FALSE(runExecutor(executorNamed("start"), target).hasFailed);
    const std::string mgmt = elementOf(blades.sent().front().document, "mgmtBootstrap");
    EXPECT_TRUE(mgmt.starts_with(first)) << mgmt;
    EXPECT_EQ(countOf(mgmt, dropped == kIp ? "mgmtIPv4" : "mgmtIPv6"), 0U);
    EXPECT_TRUE(log.contains(1, line));
  }
}

TEST(StartBootstrap, InternalManagementWithoutAnAddress_IsToldAndSent) {
  const auto withoutIp = [](Config& target) {
    changeChildren(target, kInternal, [](Config& internal) { dropChildren(internal, kIp); });
  };
  const auto without = [](Config& target) {
    dropChildren(target, kInternal);
  };
  const std::pair<void (*)(Config&), std::string> rows[] = {
      {withoutIp,
       "<mgmtBootstrap><interfaceDetails><interfaceType>internal_mgmt</interfaceType>"
       "<bladeVNIC>60</bladeVNIC></interfaceDetails></mgmtBootstrap>"},
      {without,
       "<mgmtBootstrap><interfaceDetails><interfaceType>internal_mgmt</interfaceType>"
       "</interfaceDetails></mgmtBootstrap>"}};
  for (const auto& [change, element] : rows) {
    Config target = startVdpTarget();
    change(target);
    EXPECT_EQ(elementOf(sentDocument("startVdp", target), "mgmtBootstrap"), element);
    EXPECT_EQ(
        linesOf(target, 8),
        (std::vector<LogLine>{
            {8, kStartFunction,
             "STARTAPP: appInstanceId[a1]: slot[3]: InternalMgmtBootstrap: Ipv4 : missing"}}));
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
