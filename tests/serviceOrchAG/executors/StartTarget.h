#pragma once

#include <cstdint>
#include <functional>

#include "framework/method/Config.h"

namespace zan_serviceOrchAG {

/// An application instance to be started on slot 3, with everything that it can be given: links of
/// every type, a link to another application, resources, bootstrap settings, equipment.
method::Config startTarget();
/// The same of an application with cluster links and an internal management interface.
method::Config startVdpTarget();
/// Another one, on slot 12: two links of every type, in no order, and gaps in what it is given.
method::Config crowdedStartTarget(bool isVdp);

/// Changes every child of a class, or takes them all away.
void changeChildren(method::Config& config, std::uint32_t classId,
                    const std::function<void(method::Config&)>& change);
void dropChildren(method::Config& config, std::uint32_t classId);

// Classes of what stands below an instance to be started.
inline constexpr std::uint32_t kInstance = 0x303;
inline constexpr std::uint32_t kApp = 0x306;
inline constexpr std::uint32_t kLdu = 0x308;
inline constexpr std::uint32_t kExternalLink = 0x309;
inline constexpr std::uint32_t kAppLink = 0x30a;
inline constexpr std::uint32_t kResource = 0x30b;
inline constexpr std::uint32_t kCluster = 0x30c;
inline constexpr std::uint32_t kInternal = 0x30d;
inline constexpr std::uint32_t kMgmt = 0x30e;
inline constexpr std::uint32_t kNetMgmt = 0x30f;
inline constexpr std::uint32_t kIp = 0x310;
inline constexpr std::uint32_t kIpv6 = 0x311;
inline constexpr std::uint32_t kMac = 0x312;
inline constexpr std::uint32_t kChassis = 0x301;
inline constexpr std::uint32_t kBlade = 0x313;

/// Changes the links of one type, such as 1 for management.
void changeLinks(method::Config& instance, std::uint8_t type,
                 const std::function<void(method::Config&)>& change);
/// Leaves only the links of this type.
void keepLinks(method::Config& instance, std::uint8_t type);

}  // namespace zan_serviceOrchAG
