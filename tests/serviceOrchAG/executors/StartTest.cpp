#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/filter/Filter.h"
#include "model/AllClasses.h"
#include "model/Snapshot.h"
#include "serviceOrchAG/executors/Addresses.h"
#include "serviceOrchAG/executors/ApplicationPackage.h"
#include "serviceOrchAG/executors/InterfaceList.h"
#include "serviceOrchAG/executors/LduLink.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using base::String;
using method::Config;
using method::Value;
using sd::IPMo;
using sd::IPV6Mo;
using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;

using Cluster = sd::ClusterBootstrapMo;
using Internal = sd::InternalMgmtBootstrapMo;
using Link = sd::ExternalLduLinkMo;
using Resource = sd::ResourceMo;

constexpr const char* kFunction = "executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb";

/// The first element of this name in a document, from its first character to its last; empty when
/// there is none.
std::string elementOf(const std::string& document, const std::string& name) {
  std::size_t begin = document.find('<' + name + '>');
  begin = begin == std::string::npos ? document.find('<' + name + ' ') : begin;
  if (begin == std::string::npos) {
    const std::string empty = '<' + name + "/>";
    return document.find(empty) == std::string::npos ? "" : empty;
  }
  const std::string end = "</" + name + '>';
  return document.substr(begin, document.find(end, begin) + end.size() - begin);
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

template <auto kProperty, class T>
auto setting(T value) {
  return [value](Config& config) {
    config.set(kProperty->id, Value(value));
  };
}
template <auto kProperty>
void unset(Config& config) {
  config.set(kProperty->id, Value());
}

/// The lines of this level that a run wrote.
std::vector<LogLine> linesOf(const Config& target, int level) {
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executorNamed("start"), target).hasFailed);
  std::vector<LogLine> lines;
  for (const LogLine& line : log.lines()) {
    if (line.level == level) {
      lines.push_back(line);
    }
  }
  return lines;
}

// ----- What the instance is given -------------------------------------------------------------

TEST(StartResources, DeployTypes_StandInInstallTypeAndInterfaceList) {
  for (const auto& [value, text] :
       std::vector<std::pair<std::uint8_t, std::string>>{{1, "native"}, {2, "lxc"}, {3, "vm"}}) {
    Config target = startTarget();
    changeChildren(target, kApp, setting<&sm::AppMo::kDeployType>(value));
    const std::string document = sentDocument("start", target);
    EXPECT_EQ(elementOf(document, "installType"), "<installType>" + text + "</installType>");
    EXPECT_EQ(countOf(document, "<interfaceList type=\"" + text + "\">"), 1U) << text;
  }
}

TEST(StartResources, TwoApplications_TheFirstCounts) {
  Config target = startTarget();
  Config second(kApp, mo::Dn("second"));
  second.set(sm::AppMo::kDeployType.id, Value(std::uint8_t{3}));
  second.set(sm::AppMo::kVdp.id, Value(true));
  target.addChild(second);
  EXPECT_EQ(sentDocument("start", target), golden("start.xml"));
}

TEST(StartResources, SecondDiskOfSizeZero_FailsWhereItWouldBeSent) {
  Config target = startTarget();
  changeChildren(target, kResource, setting<&Resource::kReqSecDataHdd>(std::uint32_t{0}));
  for (const char* platform : {"qvm2", "qvm3"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    const ScriptedBlades blades;
    const LogCapture log(8);
    const Outcome outcome = runExecutor(executorNamed("start"), target);
    EXPECT_EQ(outcome.failure.bits, 1U);
    EXPECT_EQ(outcome.failure.code, 1003U);
    EXPECT_EQ(outcome.failure.text, "STARTAPP:: create <reqSecDataHdd> fails.");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {8, kFunction, "STARTAPP: appInstanceId[a1]: slot[3]: reqSecDataHdd : missing"}}));
    EXPECT_TRUE(blades.sent().empty());
  }
  for (const char* platform : {"standard", "qvm1"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_EQ(sentDocument("start", target), goldenOn(platform, "start"));
  }
}

TEST(StartResources, NoSecondDisk_IsLeftOut) {
  const Configured configured({"supervisor.platform=qvm2"});
  Config target = startTarget();
  changeChildren(target, kResource, unset<&Resource::kReqSecDataHdd>);
  const std::string document = sentDocument("start", target);
  EXPECT_FALSE(document.empty());
  EXPECT_EQ(elementOf(document, "reqSecDataHdd"), "");
}

TEST(StartResources, LargestNumbers_ArePlainDecimal) {
  Config target = startTarget();
  changeChildren(target, kResource, setting<&Resource::kReqDataHdd>(std::uint32_t{4294967295}));
  EXPECT_EQ(elementOf(sentDocument("start", target), "reqDataHdd"),
            "<reqDataHdd>4294967295</reqDataHdd>");
}

// ----- Virtual interfaces ---------------------------------------------------------------------

TEST(StartDataVnics, OddTexts_AddNothing) {
  Config target = startTarget();
  changeLinks(target, 0, [](Config& link) {
    link.set(Link::kBladeVnic1.id, Value(String("3:7")));
    link.set(Link::kBladeVnic2.id, Value(String("2:0")));
  });
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executorNamed("start"), target).hasFailed);
  ASSERT_EQ(blades.sent().size(), 1U);
  EXPECT_EQ(elementOf(blades.sent().front().document, "reqDataVnics"),
            "<reqDataVnics>10,11,2,20,21,30,48,49</reqDataVnics>");
  EXPECT_TRUE(log.contains(5, "STARTAPP : vnicIndex adaptorId = 3 (must me 1 or 2)"));
  EXPECT_TRUE(
      log.contains(1, "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[], VnicIndex2:[]"));
}

TEST(StartDataVnics, OnlyLinksOfApplications_AreEnough) {
  Config target = startVdpTarget();
  dropChildren(target, kCluster);
  changeChildren(target, kLdu, [](Config& ldu) { dropChildren(ldu, kExternalLink); });
  EXPECT_EQ(elementOf(sentDocument("startVdp", target), "reqDataVnics"),
            "<reqDataVnics>2,30</reqDataVnics>");
}

TEST(StartDataVnics, PlatformWithout_TellsWhatItLeavesOut) {
  for (const char* platform : {"qvm1", "qvm2"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_EQ(linesOf(startTarget(), 5),
              (std::vector<LogLine>{
                  {5, kFunction, "STARTAPP: reqDataVnics: ignored because of QVM2/QVM1 platform"},
                  {5, kFunction, "STARTAPP: blade: ignored because of QVM2/QVM1 platform"}}));
  }
  for (const char* platform : {"standard", "qvm3"}) {
    const Configured configured({std::string("supervisor.platform=") + platform});
    EXPECT_TRUE(linesOf(startTarget(), 5).empty());
  }
}

TEST(StartDataVnics, PlatformWithout_StartsWithoutAnyVnicAndWithoutABlade) {
  const Configured configured({"supervisor.platform=qvm1"});
  Config target = startTarget();
  dropChildren(target, kBlade);
  changeLinks(target, 1, setting<&Link::kHasMac>(false));
  for (std::uint8_t type = 0; type < 4; ++type) {
    changeLinks(target, type, [](Config& link) {
      unset<&Link::kBladeVnic1>(link);
      unset<&Link::kBladeVnic2>(link);
    });
  }
  EXPECT_EQ(countOf(sentDocument("start", target), "<allocatedVNIC>"), 0U);
  EXPECT_EQ(countOf(sentDocument("start", target), "<interface>"), 4U);
}

struct VnicRow {
  const char* text;
  const char* index;
  std::vector<LogLine> lines;
};

TEST(GetVnic, Texts_AreTakenApart) {
  sd::AppInstanceMo instance;
  instance.attach(std::make_unique<sd::LduMo>());
  const auto adaptor = [](const std::string& id) {
    return std::vector<LogLine>{
        {5, "getVnic", "STARTAPP : vnicIndex adaptorId = " + id + " (must me 1 or 2)"}};
  };
  const auto number = [](const std::string& text, const std::string& index) {
    return std::vector<LogLine>{
        {8, "getVnic",
         "STARTAPP : vnicIndex [" + text + "]: not a decimal number: '" + index + "'"}};
  };
  const std::vector<VnicRow> rows{
      {"1:7", "7", {}},
      {"2:7", "7", {}},
      {"1:007", "7", {}},
      {"1:2147483647", "2147483647", {}},
      {"1:2:3", "2", {}},
      {"1:0", "", {}},
      {"2:0", "", {}},
      {"3:7", "", adaptor("3")},
      {"0:7", "", adaptor("0")},
      {"12:7", "", adaptor("12")},
      {" 1:7", "", adaptor(" 1")},
      {"", "", adaptor("")},
      {":", "", adaptor("")},
      {"3:x", "", adaptor("3")},
      {"x\n:7", "", adaptor("x\\x0A")},
      {"1", "", number("1", "")},
      {"1:", "", number("1:", "")},
      {"1:x", "", number("1:x", "x")},
      {"1: 7", "", number("1: 7", " 7")},
      {"1:2147483648", "", number("1:2147483648", "2147483648")},
  };
  for (const VnicRow& row : rows) {
    const LogCapture log;
    EXPECT_EQ(getVnic(row.text, instance), row.index) << row.text;
    EXPECT_EQ(log.lines(), row.lines) << row.text;
  }
}

TEST(GetVnic, InstanceWithoutADevice_HasNone) {
  sd::AppInstanceMo instance;
  instance.set(sd::AppInstanceMo::kAppInstanceId, "a1");
  const LogCapture log;
  EXPECT_EQ(getVnic("1:7", instance), "");
  EXPECT_EQ(log.lines(), (std::vector<LogLine>{{6, "getVnic", "STARTAPP : a1 : LduMo is null"}}));
}

// ----- Addresses ------------------------------------------------------------------------------

TEST(ConvertMacAddress, Numbers_AreThreeGroups) {
  const std::vector<std::pair<std::uint64_t, std::string>> rows{
      {0, "0000.0000.0000"},
      {0x00112233aabb, "0011.2233.aabb"},
      {0xffffffffffff, "ffff.ffff.ffff"},
      {0x123400112233aabb, "0011.2233.aabb"},
      {1, "0000.0000.0001"},
      {0x000100000000, "0001.0000.0000"}};
  for (const auto& [mac, text] : rows) {
    const LogCapture log;
    EXPECT_EQ(convertMacAddress(mac), text);
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{{0, "convertMacAddress", "convertMacAddress: aOutMac: " + text}}));
  }
}

TEST(CreateMgmtIPv4, AddressOfZeros_IsWritten) {
  CommandDocument document("r");
  createMgmtIPv4(IPMo(), document.root(), document.converter());
  EXPECT_EQ(document.text(),
            "<r><mgmtIPv4>0.0.0.0</mgmtIPv4><mgmtIPv4Netmask>0.0.0.0</mgmtIPv4Netmask>"
            "<mgmtIPv4Gateway>0.0.0.0</mgmtIPv4Gateway></r>");
}

TEST(CreateMgmtIPv6, ValuesThatAreNotSet_AreLeftOut) {
  IPV6Mo ip;
  ip.set(IPV6Mo::kAddress, "::");
  ip.set(IPV6Mo::kGateway, "fe80::1");
  CommandDocument document("r");
  createMgmtIPv6(ip, document.root(), document.converter());
  EXPECT_EQ(document.text(), "<r><mgmtIPv6Gateway>fe80::1</mgmtIPv6Gateway></r>");
}

TEST(CreateClusterIPv4, GatewayOfTheNetwork_IsNotPartOfIt) {
  IPMo ip;
  ip.set(IPMo::kAddress, 0x0a000001);
  ip.set(IPMo::kNetmask, 0xff000000);
  ip.set(IPMo::kGateway, 0x0a0000fe);
  CommandDocument document("r");
  createClusterIPv4(ip, document.root(), document.converter());
  EXPECT_EQ(document.text(), "<r><IPv4>10.0.0.1</IPv4><IPv4Netmask>255.0.0.0</IPv4Netmask></r>");
}

// ----- Bootstrap settings ---------------------------------------------------------------------

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
  EXPECT_EQ(linesOf(target, 8),
            (std::vector<LogLine>{
                {8, kFunction, "STARTAPP: appInstanceId[a1]: slot[3]: mgmtBootstrap : missing"}}));
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
            {8, kFunction,
             "STARTAPP: appInstanceId[a1]: slot[3]: InternalMgmtBootstrap: Ipv4 : missing"}}));
  }
}

// ----- Interfaces -----------------------------------------------------------------------------

class GetInterfaceList : public testing::Test {
 protected:
  GetInterfaceList() { filter::Filter::initFactories(); }

  /// The list's elements for the links of a type of this instance.
  std::string list(const Config& target, sd::LinkInterfaceType type, bool hasDevice = true) {
    const std::unique_ptr<mo::Mo> object = model::objectOf(target);
    const auto& instance = *mo::checkCast<sd::AppInstanceMo>(object.get());
    CommandDocument document("r");
    getInterfaceList("interfaceList", *instance.resolve<sm::AppMo>(), instance,
                     hasDevice ? instance.resolveSdLdu() : nullptr, document.converter(),
                     document.root(), type);
    return document.text();
  }
  /// What is told about the missing values of an interface.
  static LogLine gap(const std::string& what) {
    return {1, "getInterfaceList",
            "STARTAPP: ExternalLduLink : slot[3]: appInstanceId[a1]: " + what + " : missing"};
  }
};

TEST_F(GetInterfaceList, WithoutADevice_HasTheInternalInterfaceOfAnApplicationWithOne) {
  EXPECT_EQ(list(startTarget(), sd::LinkInterfaceType::kData, false), "<r/>");
  const std::string internal =
      "<r><interface><interfaceType>internal_mgmt</interfaceType>"
      "<interfaceDriver>virtio</interfaceDriver><queues>2</queues>"
      "<allocatedVNIC>60</allocatedVNIC><macAddress>00aa.bbcc.ddee</macAddress></interface></r>";
  EXPECT_EQ(list(startVdpTarget(), sd::LinkInterfaceType::kData, false), internal);
  EXPECT_EQ(list(startVdpTarget(), sd::LinkInterfaceType::kMgmt, false), internal);
}

TEST_F(GetInterfaceList, InternalInterfaceOfNothing_HasItsFixedValues) {
  const std::string fixed =
      "<r><interface><interfaceType>internal_mgmt</interfaceType>"
      "<interfaceDriver>virtio</interfaceDriver><queues>2</queues>";
  Config target = startVdpTarget();
  changeChildren(target, kInternal, [](Config& internal) { dropChildren(internal, kMac); });
  EXPECT_EQ(list(target, sd::LinkInterfaceType::kData, false),
            fixed + "<allocatedVNIC>60</allocatedVNIC></interface></r>");
  dropChildren(target, kInternal);
  const LogCapture log;
  EXPECT_EQ(list(target, sd::LinkInterfaceType::kData, false), fixed + "</interface></r>");
  EXPECT_EQ(log.lines(),
            (std::vector<LogLine>{
                {1, "getInterfaceList",
                 "STARTAPP: interfaceList :InternalMgmtBootstrap : bladeVnic : [Adaptor:Index]:[]"},
                {5, "getVnic", "STARTAPP : vnicIndex adaptorId =  (must me 1 or 2)"},
                {1, "getInterfaceList",
                 "STARTAPP: interfaceList : InternalMgmtBootstrap : bladeVnic : VnicIndex:[]"}}));
}

TEST_F(GetInterfaceList, LinksOfOtherTypes_StayOut) {
  EXPECT_EQ(list(startTarget(), sd::LinkInterfaceType::kDirect),
            "<r><interface><interfaceType>direct</interfaceType>"
            "<interfaceDriver>passthrough</interfaceDriver><queues>2</queues>"
            "<allocatedVNIC>20</allocatedVNIC><allocatedVNIC>21</allocatedVNIC>"
            "<macAddress>0000.0000.00ff</macAddress></interface></r>");
}

TEST_F(GetInterfaceList, LinkWithoutAType_IsInNone) {
  Config target = startVdpTarget();
  keepLinks(target, 0);
  changeLinks(target, 0, unset<&Link::kLinkInterfaceType>);
  using enum sd::LinkInterfaceType;
  for (const sd::LinkInterfaceType type : {kData, kMgmt, kCluster, kDirect}) {
    EXPECT_EQ(list(target, type), "<r/>");
  }
}

TEST_F(GetInterfaceList, MacFlag_CountsForManagementLinksAlone) {
  for (std::uint8_t type = 0; type < 4; ++type) {
    for (const bool hasMac : {false, true}) {
      Config target = startTarget();
      changeLinks(target, type, [hasMac](Config& link) {
        link.set(Link::kHasMac.id, Value(hasMac));
        link.set(Link::kVlan.id, Value(std::uint32_t{9}));
        link.set(Link::kSystemMac.id, Value(std::uint64_t{1}));
      });
      const std::string text = list(target, static_cast<sd::LinkInterfaceType>(type));
      const bool isToldByMac = type == 3 || (type == 1 && hasMac);
      EXPECT_EQ(countOf(text, "<macAddress>0000.0000.0001</macAddress>"), isToldByMac ? 1U : 0U);
      EXPECT_EQ(countOf(text, "<vlan>9</vlan>"), isToldByMac ? 0U : 1U);
    }
  }
}

TEST_F(GetInterfaceList, ManagementLinkOfNothing_TellsEachGap) {
  Config target = startTarget();
  changeLinks(target, 1, [](Config& link) {
    unset<&Link::kMgmtSubType>(link);
    unset<&Link::kBladeVnic2>(link);
    unset<&Link::kSystemMac>(link);
  });
  const LogCapture log(1);
  EXPECT_EQ(list(target, sd::LinkInterfaceType::kMgmt),
            "<r><interface><interfaceType>mgmt</interfaceType>"
            "<interfaceDriver>virtio</interfaceDriver><queues>2</queues>"
            "<allocatedVNIC>10</allocatedVNIC></interface></r>");
  EXPECT_EQ(
      log.lines(),
      (std::vector<LogLine>{
          gap("mgmtSubType[Management0]"),
          {1, "getInterfaceList",
           "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:10], "
           "[Adaptor2:Index2]:[]"},
          {5, "getVnic", "STARTAPP : vnicIndex adaptorId =  (must me 1 or 2)"},
          {1, "getInterfaceList",
           "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[10], "
           "VnicIndex2:[]"},
          {1, "getInterfaceList",
           "STARTAPP: ExternalLduLink: slot[3]: appInstanceId[a1]: interfaceList: type = lxc : "
           "allocatedVnic : missing "},
          gap("macAddress[Management0]")}));
}

TEST_F(GetInterfaceList, DataLinkWithoutVlan_TellsThatAndStarts) {
  Config target = startTarget();
  changeLinks(target, 0, setting<&Link::kVlan>(std::uint32_t{0}));
  const LogCapture log;
  EXPECT_EQ(countOf(list(target, sd::LinkInterfaceType::kData), "vlan"), 0U);
  EXPECT_EQ(log.lines().back(), gap("vlan[Ethernet1/1]"));
  EXPECT_NE(sentDocument("start", target), "");
}

TEST_F(GetInterfaceList, HostileNames_StayText) {
  Config target = startTarget();
  changeLinks(target, 1, setting<&Link::kPortName>(String("</portName>&%s\n")));
  const std::string document = sentDocument("start", target);
  EXPECT_EQ(countOf(document, "<portName>&lt;/portName&gt;&amp;%s"), 2U);
}

// ----- Where it runs --------------------------------------------------------------------------

TEST(StartIdentity, EquipmentWithoutAModel_HasAnEmptyAttribute) {
  Config target = startTarget();
  changeChildren(target, kChassis, unset<&sd::ChassisMo::kModel>);
  changeChildren(target, kBlade, unset<&sd::BladeMo::kModel>);
  const std::string document = sentDocument("start", target);
  EXPECT_EQ(elementOf(document, "chassis"), "<chassis model=\"\">CH1</chassis>");
  EXPECT_EQ(elementOf(document, "blade"), "<blade model=\"\">BL3</blade>");
}

TEST(StartIdentity, NoNetworkSettings_TheListIsEmpty) {
  Config target = startTarget();
  dropChildren(target, kNetMgmt);
  EXPECT_EQ(elementOf(sentDocument("start", target), "netMgmtBootstrapList"),
            "<netMgmtBootstrapList/>");
}

TEST(StartIdentity, SlotNumber_SelectsTheBlade) {
  Config target = startTarget();
  target.set(sd::AppInstanceMo::kSlotId.id, Value(std::uint32_t{12}));
  const ScriptedBlades blades;
  const LogCapture log;
  runExecutor(executorNamed("start"), target);
  ASSERT_EQ(blades.sent().size(), 1U);
  EXPECT_EQ(blades.sent().front().slot, "12");
  EXPECT_EQ(elementOf(blades.sent().front().document, "slot"), "<slot>12</slot>");
  EXPECT_TRUE(log.contains(
      1, "STARTAPP: 100 : Start message sent to SMA with success request / response for slot 12."));
}

TEST(GetDeployType, UnsetOrOdd_IsUnknown) {
  sm::AppMo app;
  EXPECT_EQ(getDeployType(app), "unknown");
  app.set(sm::AppMo::kDeployType, 7);
  EXPECT_EQ(getDeployType(app), "unknown");
  app.set(sm::AppMo::kDeployType, 3);
  EXPECT_EQ(getDeployType(app), "vm");
}

}  // namespace
}  // namespace zan_serviceOrchAG
