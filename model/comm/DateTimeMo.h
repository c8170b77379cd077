#pragma once

#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace comm {

/// The chassis' date and time settings.
class DateTimeMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x307;
  static constexpr std::string_view kName = "dateTime";

  // As the administrator set it: the name of a zone, and perhaps a remark after a blank.
  static constexpr mo::Property<base::String> kTimeZone{0x30f0, "timeZone"};

  static constexpr auto kProperties = mo::describe(kTimeZone);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit DateTimeMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace comm
