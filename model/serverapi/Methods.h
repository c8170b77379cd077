#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/method/MethodObject.h"

/// Methods about a blade's OS controller and its platform images.
namespace serverapi {

using method::In;
using method::MethodObject;
using method::Out;

/// In: identifier, chassis, slot, start-up version, running OS version, running image name,
/// running image size in bytes, cached OS version, cached image name, cached image size in bytes,
/// blade valid, two kinds, vendor word.
/// Out: path of the platform image, its checksum, its size in bytes.
class OsControllerVersionMe
    : public MethodObject<OsControllerVersionMe,
                          In<std::uint64_t, std::uint32_t, std::uint32_t, base::String,
                             base::String, base::String, std::uint32_t, base::String, base::String,
                             std::uint32_t, bool, std::uint8_t, std::uint8_t, base::String>,
                          Out<base::String, base::String, std::uint32_t>> {
 public:
  static constexpr std::uint32_t kClassId = 146;
  static constexpr std::string_view kName = "serverapi::OsControllerVersion";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: identifier, chassis, slot, version, progress in percent, upgrade status, image kind.
class OsControllerUpgradeProgressMe
    : public MethodObject<OsControllerUpgradeProgressMe,
                          In<std::uint64_t, std::uint32_t, std::uint32_t, base::String,
                             std::uint32_t, std::uint8_t, base::String>,
                          Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 147;
  static constexpr std::string_view kName = "serverapi::OsControllerUpgradeProgress";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

}  // namespace serverapi
