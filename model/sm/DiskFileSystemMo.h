#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sm {

/// A file system of a blade, as the blade reports it. Sizes are in megabytes; observedAt is in
/// milliseconds since the epoch, UTC.
class DiskFileSystemMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x289;
  static constexpr std::string_view kName = "diskFileSystem";

  static constexpr mo::Property<base::String> kDiskName{0x841, "diskName", mo::kDurable,
                                                        mo::kNamingGroup};
  static constexpr mo::Property<std::uint32_t> kDiskTotal{0x2815, "diskTotal"};
  static constexpr mo::Property<std::uint32_t> kDiskFree{0x2816, "diskFree"};
  static constexpr mo::Property<std::uint32_t> kDiskUsed{0x2817, "diskUsed"};
  static constexpr mo::Property<base::String> kDiskMountPoint{0x843, "diskMountPoint"};
  static constexpr mo::Property<std::uint64_t> kObservedAt{0x30b0, "observedAt", mo::kDurable,
                                                           mo::kEngineGroup};

  static constexpr auto kProperties =
      mo::describe(kDiskName, kDiskTotal, kDiskFree, kDiskUsed, kDiskMountPoint, kObservedAt);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit DiskFileSystemMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sm
