#pragma once

#include <cstdint>

#include "framework/base/String.h"
#include "framework/noxxml/XMLConverter.h"

namespace sd {
class IPMo;
class IPV6Mo;
}  // namespace sd

// Addresses as the blades' documents write them.

namespace zan_serviceOrchAG {

/// "0011.2233.aabb" of 0x00112233aabb: three groups of four digits. Bits above the 48 of a MAC
/// address are left out.
base::String convertMacAddress(std::uint64_t mac);

/// Each adds an address and what belongs to its network below `parent`; a value that counts as not
/// set is left out.
void createMgmtIPv4(const sd::IPMo& ip, noxxml::AgElement* parent, noxxml::XMLConverter& converter);
void createMgmtIPv6(const sd::IPV6Mo& ip, noxxml::AgElement* parent,
                    noxxml::XMLConverter& converter);
void createClusterIPv4(const sd::IPMo& ip, noxxml::AgElement* parent,
                       noxxml::XMLConverter& converter);

}  // namespace zan_serviceOrchAG
