#pragma once

#include <cstdint>
#include <string_view>

#include "framework/mo/Mo.h"

namespace sd {

/// What an application instance is given of its blade. Memory and disks are in megabytes.
class ResourceMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30b;
  static constexpr std::string_view kName = "resource";

  static constexpr mo::Property<std::uint32_t> kReqCpuCores{0x3130, "reqCpuCores"};
  static constexpr mo::Property<std::uint32_t> kMaxAllowedRam{0x3131, "maxAllowedRam"};
  static constexpr mo::Property<std::uint32_t> kReqDataHdd{0x3132, "reqDataHdd"};
  // The second data disk's size; not set when there is none.
  static constexpr mo::Property<std::uint32_t> kReqSecDataHdd{0x3133, "reqSecDataHdd"};

  static constexpr auto kProperties =
      mo::describe(kReqCpuCores, kMaxAllowedRam, kReqDataHdd, kReqSecDataHdd);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit ResourceMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
