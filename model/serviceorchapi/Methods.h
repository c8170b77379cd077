#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/method/Config.h"
#include "framework/method/MethodObject.h"
#include "framework/mo/Dn.h"
#include "model/Snapshot.h"

/// Methods between the gateway and the engine's service orchestration: what blades report, and
/// what the engine asks to be done to a blade.
namespace serviceorchapi {

using method::In;
using method::MethodObject;
using method::Out;

/// In: slot, running OS version, the blade's token. Out: the token that the engine holds for the
/// slot, blade valid, blade should retry.
class ValidateBladeStateMe
    : public MethodObject<ValidateBladeStateMe, In<std::uint32_t, base::String, base::String>,
                          Out<base::String, bool, bool>> {
 public:
  static constexpr std::uint32_t kClassId = 398;
  static constexpr std::string_view kName = "serviceorchapi::ValidateBladeState";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot, the monitor object, the disks.
class UpdatePlatformInfoMe
    : public MethodObject<UpdatePlatformInfoMe,
                          In<std::uint32_t, method::Config, method::ConfigSet>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 400;
  static constexpr std::string_view kName = "serviceorchapi::UpdatePlatformInfo";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot, the application instances that the blade reports.
class ValidateAppInstancesMe
    : public MethodObject<ValidateAppInstancesMe, In<std::uint32_t, method::ConfigSet>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 399;
  static constexpr std::string_view kName = "serviceorchapi::ValidateAppInstances";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot, heartbeat count, heartbeat timer.
class UpdateSmaHeartbeatMe
    : public MethodObject<UpdateSmaHeartbeatMe, In<std::uint32_t, std::uint32_t, std::uint32_t>,
                          Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 397;
  static constexpr std::string_view kName = "serviceorchapi::UpdateSmaHeartbeat";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: identifier of the failed application instance.
class NotifyAppFailureMe : public MethodObject<NotifyAppFailureMe, In<base::String>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 401;
  static constexpr std::string_view kName = "serviceorchapi::NotifyAppFailure";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: application instance identifier, command code, progress in percent, status code, the
/// agent's result code, error description.
class UpdateProgressMe
    : public MethodObject<
          UpdateProgressMe,
          In<base::String, std::uint8_t, std::uint32_t, std::uint8_t, std::uint32_t, base::String>,
          Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 396;
  static constexpr std::string_view kName = "serviceorchapi::UpdateProgress";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot, disk format status.
class UpdateDiskFormatStatusMe
    : public MethodObject<UpdateDiskFormatStatusMe, In<std::uint32_t, std::uint8_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 404;
  static constexpr std::string_view kName = "serviceorchapi::UpdateDiskFormatStatus";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

/// In: application instance identifier, slot.
class ClearApplicationLogDataMe
    : public MethodObject<ClearApplicationLogDataMe, In<base::String, std::uint32_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 402;
  static constexpr std::string_view kName = "serviceorchapi::ClearApplicationLogData";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot.
class ClearSystemLogDataMe : public MethodObject<ClearSystemLogDataMe, In<std::uint32_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 403;
  static constexpr std::string_view kName = "serviceorchapi::ClearSystemLogData";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// In: slot.
class DeRegisterBladeMe : public MethodObject<DeRegisterBladeMe, In<std::uint32_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 405;
  static constexpr std::string_view kName = "serviceorchapi::DeRegisterBlade";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

/// Asks for coverage data of an instrumented build.
class GcovRequestMe : public MethodObject<GcovRequestMe, In<>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 406;
  static constexpr std::string_view kName = "serviceorchapi::GcovRequest";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

/// In: two numbers of the calling state machine, the date and time object's name, the call's
/// number, that object and what it resolves, slot, log level.
class UpdateTimeZoneMe
    : public model::TargetedMethod<UpdateTimeZoneMe,
                                   In<std::uint32_t, std::uint32_t, mo::Dn, std::uint64_t,
                                      method::Config, std::uint32_t, base::String>,
                                   Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 407;
  static constexpr std::string_view kName = "serviceorchapi::UpdateTimeZone";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

}  // namespace serviceorchapi
