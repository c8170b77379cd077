#include "serviceOrchAG/executors/Addresses.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using sd::IPMo;
using sd::IPV6Mo;
using test_support::LogCapture;
using test_support::LogLine;

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

}  // namespace
}  // namespace zan_serviceOrchAG
