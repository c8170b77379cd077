#pragma once

#include <vector>

#include "framework/base/String.h"
#include "model/sd/ExternalLduLinkMo.h"

namespace sd {
class AppInstanceMo;
class LduMo;
}  // namespace sd

// What a command reads of the links of a logical device.

namespace zan_serviceOrchAG {

/// The links of the device to ports of the chassis, in their order; all, or those of one type. They
/// belong to the device.
std::vector<const sd::ExternalLduLinkMo*> externalLinks(const sd::LduMo& ldu);
std::vector<const sd::ExternalLduLinkMo*> externalLinks(const sd::LduMo& ldu,
                                                        sd::LinkInterfaceType type);
/// The link over which the application is managed: the first of that type, or null.
const sd::ExternalLduLinkMo* managementLink(const sd::LduMo& ldu);

/// The index of a blade's virtual interface from its text "Adaptor:Index". Empty, and logged, when
/// the adaptor is neither 1 nor 2, the index is no number or the instance has no logical device;
/// empty for index 0, which is no interface.
base::String getVnic(const base::String& text, const sd::AppInstanceMo& instance);

/// "data", "mgmt", "cluster" or "direct"; empty for a link of another type.
base::String getLinkInterfaceType(const sd::ExternalLduLinkMo& link);
/// "management" or "events"; empty for a link without.
base::String getExternalLinkLduMgmtSubType(const sd::ExternalLduLinkMo& link);

/// Whether the application tells the link from others by its MAC address. By its VLAN if not.
bool isToldByMac(const sd::ExternalLduLinkMo& link);
/// The link's MAC address as text; empty when it has none.
base::String macAddressOf(const sd::ExternalLduLinkMo& link);

}  // namespace zan_serviceOrchAG
