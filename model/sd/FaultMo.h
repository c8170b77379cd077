#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// A difference between what a blade reports and what the engine believes. Times are in
/// milliseconds since the epoch, UTC.
class FaultMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x305;
  static constexpr std::string_view kName = "fault";

  static constexpr mo::Property<base::String> kKind{0x3080, "kind", mo::kDurable, mo::kNamingGroup};
  static constexpr mo::Property<base::String> kDetail{0x3081, "detail"};
  static constexpr mo::Property<std::uint64_t> kSince{0x3082, "since"};
  static constexpr mo::Property<std::uint64_t> kObservedAt{0x3083, "observedAt"};
  static constexpr mo::Property<std::uint32_t> kCount{0x3084,
                                                      "count"};  // of the reports that showed it

  static constexpr auto kProperties = mo::describe(kKind, kDetail, kSince, kObservedAt, kCount);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit FaultMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
