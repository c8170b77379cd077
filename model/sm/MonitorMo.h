#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sm {

/// The state of a blade's platform, as the blade reports it. Sizes are in megabytes; observedAt is
/// in milliseconds since the epoch, UTC.
class MonitorMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x286;
  static constexpr std::string_view kName = "monitor";

  static constexpr mo::Property<base::String> kOsVersion{0x82f, "osVersion"};
  static constexpr mo::Property<base::String> kSysUptime{0x837, "sysUptime"};
  static constexpr mo::Property<float> kCpuMinus1{0x830, "cpuMinus1"};
  static constexpr mo::Property<float> kCpuMinus5{0x831, "cpuMinus5"};
  static constexpr mo::Property<float> kCpuMinus15{0x832, "cpuMinus15"};
  static constexpr mo::Property<std::uint32_t> kMemTotal{0x2811, "memTotal"};
  static constexpr mo::Property<std::uint32_t> kMemFree{0x2812, "memFree"};
  static constexpr mo::Property<std::uint32_t> kMemUsed{0x2813, "memUsed"};
  static constexpr mo::Property<std::uint32_t> kAppsMemTotal{0x2814, "appsMemTotal"};
  static constexpr mo::Property<std::int32_t> kDiskCount{0x836, "diskCount"};
  static constexpr mo::Property<std::uint64_t> kObservedAt{0x30a0, "observedAt", mo::kDurable,
                                                           mo::kEngineGroup};

  static constexpr auto kProperties =
      mo::describe(kOsVersion, kSysUptime, kCpuMinus1, kCpuMinus5, kCpuMinus15, kMemTotal, kMemFree,
                   kMemUsed, kAppsMemTotal, kDiskCount, kObservedAt);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit MonitorMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sm
