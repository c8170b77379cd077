#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// How far a command to a blade has come, as the blade reports it. Times are in milliseconds since
/// the epoch, UTC.
class OperationMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x304;
  static constexpr std::string_view kName = "operation";

  static constexpr mo::Property<base::String> kCommand{0x3060, "command"};
  static constexpr mo::Property<std::uint32_t> kPercentage{0x3061, "percentage"};
  static constexpr mo::Property<base::String> kStatus{0x3062, "status"};
  // The agent's own result code.
  static constexpr mo::Property<std::uint32_t> kCode{0x3063, "code"};
  static constexpr mo::Property<base::String> kErrorText{0x3064, "errorText"};
  static constexpr mo::Property<std::uint64_t> kStartedAt{0x3065, "startedAt"};
  static constexpr mo::Property<std::uint64_t> kObservedAt{0x3066, "observedAt"};

  static constexpr auto kProperties =
      mo::describe(kCommand, kPercentage, kStatus, kCode, kErrorText, kStartedAt, kObservedAt);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit OperationMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
