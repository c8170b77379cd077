#include "serviceOrchAG/executors/Addresses.h"

#include <array>
#include <cstdio>

#include "framework/core_log/Log.h"
#include "framework/core_utils/Addresses.h"
#include "framework/core_utils/Numbers.h"
#include "model/sd/IPMo.h"
#include "model/sd/IPV6Mo.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

using core_utils::ipV4ToString;
using sd::IPMo;
using sd::IPV6Mo;

base::String convertMacAddress(std::uint64_t mac) {
  const auto group = [mac](unsigned int shift) {
    return static_cast<unsigned int>(mac >> shift & 0xffff);
  };
  std::array<char, sizeof "0000.0000.0000"> text{};
  std::snprintf(text.data(), text.size(), "%04x.%04x.%04x", group(32), group(16), group(0));
  core_log::logPrintf("convertMacAddress", core_log::serviceLevel(), 0,
                      "convertMacAddress: aOutMac: %s", text.data());
  return text.data();
}

void createMgmtIPv4(const IPMo& ip, noxxml::AgElement* parent, noxxml::XMLConverter& converter) {
  createChildNode(names().mgmtIPv4, ipV4ToString(ip.get(IPMo::kAddress)), parent, converter);
  createChildNode(names().mgmtIPv4Netmask, ipV4ToString(ip.get(IPMo::kNetmask)), parent, converter);
  createChildNode(names().mgmtIPv4Gateway, ipV4ToString(ip.get(IPMo::kGateway)), parent, converter);
}

void createMgmtIPv6(const IPV6Mo& ip, noxxml::AgElement* parent, noxxml::XMLConverter& converter) {
  createChildNode(names().mgmtIPv6, ip.get(IPV6Mo::kAddress), parent, converter);
  createChildNode(names().mgmtIPv6PrefixLength,
                  core_utils::uintToString(ip.get(IPV6Mo::kPrefixLength)), parent, converter);
  createChildNode(names().mgmtIPv6Gateway, ip.get(IPV6Mo::kGateway), parent, converter);
}

void createClusterIPv4(const IPMo& ip, noxxml::AgElement* parent, noxxml::XMLConverter& converter) {
  createChildNode(names().ipv4, ipV4ToString(ip.get(IPMo::kAddress)), parent, converter);
  createChildNode(names().ipv4Netmask, ipV4ToString(ip.get(IPMo::kNetmask)), parent, converter);
}

}  // namespace zan_serviceOrchAG
