#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// How far the blade in a slot has come: the values of SlotMo's admission.
enum class Admission : std::uint8_t {
  kNone = 0,         // no blade has registered yet
  kTokenIssued = 1,  // the slot's token was made and the blade was asked to come again
  kValid = 2,
  kForeign = 3  // the blade showed another token and must be formatted
};

/// A value of SlotMo's slotCommand: the change of the platform's log level.
inline constexpr std::uint32_t kChangePlatformLogLevel = 277;

/// A slot of a chassis and the blade in it. Image sizes are in bytes.
class SlotMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x302;
  static constexpr std::string_view kName = "slot";

  static constexpr mo::Property<std::uint32_t> kNumber{0x3020, "number", mo::kDurable,
                                                       mo::kNamingGroup};
  static constexpr mo::Property<base::String> kLabel{0x3021, "name"};
  static constexpr mo::Property<base::String> kToken{0x3022, "token", mo::kDurable,
                                                     mo::kSecretGroup};
  static constexpr mo::Property<std::uint8_t> kAdmission{0x3023, "admission"};
  static constexpr mo::Property<base::String> kRunningVersion{0x3024, "runningVersion"};
  static constexpr mo::Property<base::String> kRunningImage{0x3025, "runningImage"};
  static constexpr mo::Property<std::uint32_t> kRunningImageSize{0x3026, "runningImageSize"};
  static constexpr mo::Property<base::String> kCachedVersion{0x3027, "cachedVersion"};
  static constexpr mo::Property<base::String> kCachedImage{0x3028, "cachedImage"};
  static constexpr mo::Property<std::uint32_t> kCachedImageSize{0x3029, "cachedImageSize"};
  static constexpr mo::Property<base::String> kStartupVersion{0x302a, "startupVersion"};
  static constexpr mo::Property<base::String> kVendor{0x302b, "vendor"};
  // Since the engine started.
  static constexpr mo::Property<std::uint32_t> kRegistrations{0x302c, "registrations",
                                                              mo::kVolatile};
  // What is being done to the slot: 0, or a number such as kChangePlatformLogLevel.
  static constexpr mo::Property<std::uint32_t> kSlotCommand{0x302d, "slotCommand"};
  // 0 debug, 1 info, 2 warning, 3 error, 4 critical.
  static constexpr mo::Property<std::uint8_t> kPlatformLogLevel{0x302e, "platformLogLevel"};

  static constexpr auto kProperties =
      mo::describe(kNumber, kLabel, kToken, kAdmission, kRunningVersion, kRunningImage,
                   kRunningImageSize, kCachedVersion, kCachedImage, kCachedImageSize,
                   kStartupVersion, kVendor, kRegistrations, kSlotCommand, kPlatformLogLevel);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit SlotMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
