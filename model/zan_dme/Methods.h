#pragma once

#include <cstdint>
#include <string_view>

#include "framework/method/Config.h"
#include "framework/method/MethodObject.h"
#include "framework/mo/Dn.h"
#include "model/Snapshot.h"

/// Stages of the engine's state machines that ask the gateway to send a command to a blade.
namespace zan_dme {

/// What every stage carries: two numbers of the state machine, the target's name, the call's
/// number, and the target with what it resolves.
template <class Me>
using StageMethod = model::TargetedMethod<
    Me, method::In<std::uint32_t, std::uint32_t, mo::Dn, std::uint64_t, method::Config>,
    method::Out<>>;

class FsmSdAppInstanceInstallApplicationSendCommandMe
    : public StageMethod<FsmSdAppInstanceInstallApplicationSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 601;
  static constexpr std::string_view kName =
      "zan_dme::FsmSdAppInstanceInstallApplicationSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdAppInstanceStartApplicationSendCommandMe
    : public StageMethod<FsmSdAppInstanceStartApplicationSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 602;
  static constexpr std::string_view kName = "zan_dme::FsmSdAppInstanceStartApplicationSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdAppInstanceStopApplicationSendCommandMe
    : public StageMethod<FsmSdAppInstanceStopApplicationSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 603;
  static constexpr std::string_view kName = "zan_dme::FsmSdAppInstanceStopApplicationSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdAppInstanceUninstallApplicationSendCommandMe
    : public StageMethod<FsmSdAppInstanceUninstallApplicationSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 604;
  static constexpr std::string_view kName =
      "zan_dme::FsmSdAppInstanceUninstallApplicationSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdAppInstanceUpgradeApplicationSendCommandMe
    : public StageMethod<FsmSdAppInstanceUpgradeApplicationSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 605;
  static constexpr std::string_view kName =
      "zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdSlotChangePlatformLogLevelSendCommandMe
    : public StageMethod<FsmSdSlotChangePlatformLogLevelSendCommandMe> {
 public:
  static constexpr std::uint32_t kClassId = 606;
  static constexpr std::string_view kName = "zan_dme::FsmSdSlotChangePlatformLogLevelSendCommand";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class FsmSdSlotFormatDiskStartDiskFormatMe
    : public StageMethod<FsmSdSlotFormatDiskStartDiskFormatMe> {
 public:
  static constexpr std::uint32_t kClassId = 607;
  static constexpr std::string_view kName = "zan_dme::FsmSdSlotFormatDiskStartDiskFormat";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

}  // namespace zan_dme
