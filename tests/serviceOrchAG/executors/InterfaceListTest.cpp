#include "serviceOrchAG/executors/InterfaceList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/filter/Filter.h"
#include "model/Snapshot.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "tests/serviceOrchAG/executors/StartHarness.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using base::String;
using method::Config;
using method::Value;
using test_support::LogCapture;
using test_support::LogLine;

using Link = sd::ExternalLduLinkMo;

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

}  // namespace
}  // namespace zan_serviceOrchAG
