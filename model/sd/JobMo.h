#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// Something that an operator wants done to an application instance or a slot, from the wish to its
/// end. Times are in milliseconds since the epoch, UTC; one that has not come yet is not set.
class JobMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x320;
  static constexpr std::string_view kName = "job";

  // From 1, in the order in which jobs were accepted.
  static constexpr mo::Property<std::uint64_t> kId{0x30d0, "id", mo::kDurable, mo::kNamingGroup};
  // "install", "uninstall", "upgrade", "start", "stop", "logLevel", "formatDisk" and so on.
  static constexpr mo::Property<base::String> kVerb{0x30d1, "verb"};
  // The name of the object that it is done to.
  static constexpr mo::Property<base::String> kTarget{0x30d2, "target"};
  static constexpr mo::Property<std::uint32_t> kSlot{0x30d3, "slot"};
  // "accepted", "sending", "running", "succeeded", "failed" or "unknown".
  static constexpr mo::Property<base::String> kState{0x30d4, "state"};
  // Why it is in this state, where that does not go without saying.
  static constexpr mo::Property<base::String> kCause{0x30d5, "cause"};
  static constexpr mo::Property<std::uint32_t> kPercentage{0x30d6, "percentage"};
  // How often the command was given to the gateway.
  static constexpr mo::Property<std::uint32_t> kAttempts{0x30d7, "attempts"};
  static constexpr mo::Property<std::uint64_t> kAcceptedAt{0x30d8, "acceptedAt"};
  static constexpr mo::Property<std::uint64_t> kSentAt{0x30d9, "sentAt"};
  static constexpr mo::Property<std::uint64_t> kAcknowledgedAt{0x30da, "acknowledgedAt"};
  static constexpr mo::Property<std::uint64_t> kFinishedAt{0x30db, "finishedAt"};
  // Not sent by then, it fails.
  static constexpr mo::Property<std::uint64_t> kDeliverBy{0x30dc, "deliverBy"};
  // Not ended by then, nobody knows how it went.
  static constexpr mo::Property<std::uint64_t> kFinishBy{0x30dd, "finishBy"};
  // What the verb needs besides the target: the package of an upgrade, a log level, a time zone.
  static constexpr mo::Property<base::String> kArgument{0x30de, "argument"};
  // Why, as a word.
  static constexpr mo::Property<base::String> kReason{0x30df, "reason"};
  // The gateway's or the blade's result code where it failed.
  static constexpr mo::Property<std::uint32_t> kCode{0x31c0, "code"};
  // Grows with each change.
  static constexpr mo::Property<std::uint64_t> kRevision{0x31c1, "revision"};
  // The identifier of the application instance, where the target is one.
  static constexpr mo::Property<base::String> kApp{0x31c2, "app"};
  // From when it is sent until finishBy, in milliseconds.
  static constexpr mo::Property<std::uint64_t> kFinishWithin{0x31c3, "finishWithin"};
  // Of an upgrade: the version of the new package, where it is known.
  static constexpr mo::Property<base::String> kVersion{0x31c4, "version"};
  // The phase of the application instance before the blade was told anything.
  static constexpr mo::Property<base::String> kPhaseBefore{0x31c5, "phaseBefore"};

  static constexpr auto kProperties =
      mo::describe(kId, kVerb, kTarget, kSlot, kState, kCause, kPercentage, kAttempts, kAcceptedAt,
                   kSentAt, kAcknowledgedAt, kFinishedAt, kDeliverBy, kFinishBy, kArgument, kReason,
                   kCode, kRevision, kApp, kFinishWithin, kVersion, kPhaseBefore);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit JobMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
