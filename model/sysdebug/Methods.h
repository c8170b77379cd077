#pragma once

#include <cstdint>
#include <string_view>

#include "framework/method/MethodObject.h"

/// Methods that control the log of a service.
namespace sysdebug {

using method::In;
using method::MethodObject;
using method::Out;

/// The engine sets the service's log level. In: level, 0 to 8.
class ApplyLogControlMe : public MethodObject<ApplyLogControlMe, In<std::uint8_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 501;
  static constexpr std::string_view kName = "sysdebug::ApplyLogControl";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

/// The service asks for the log level that is meant for it. Out: level, 0 to 8.
class RefreshLogControlMe : public MethodObject<RefreshLogControlMe, In<>, Out<std::uint8_t>> {
 public:
  static constexpr std::uint32_t kClassId = 502;
  static constexpr std::string_view kName = "sysdebug::RefreshLogControl";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

}  // namespace sysdebug
