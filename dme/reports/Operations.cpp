#include "dme/reports/Operations.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "dme/base/Text.h"
#include "dme/reports/BladeEvents.h"
#include "model/sd/OperationMo.h"

namespace dme {

namespace {

using sd::OperationMo;

constexpr std::string_view kRunning = "running";
constexpr std::string_view kSucceeded = "succeeded";
constexpr std::string_view kFailed = "failed";

// Places are codes; an empty word is none. Failed and succeeded change places between the first
// two kinds of report: agents and gateways in the field number them so.
constexpr std::array<std::string_view, 8> kCommands{
    "",         "installApp", "uninstallApp", "upgradeApp",
    "startApp", "stopApp",    "formatDisk",   "uploadPlatformImage"};
constexpr std::array<std::string_view, 4> kProgressStatus{"", kRunning, kFailed, kSucceeded};
constexpr std::array<std::string_view, 4> kFormatStatus{"", kRunning, kSucceeded, kFailed};
constexpr std::array<std::string_view, 8> kUpgradeStatus{"", "",      kSucceeded, kRunning,
                                                         "", kFailed, kFailed,    kFailed};
// The agent's result code that an upgrade status stands for; 0 for none.
constexpr std::array<std::uint32_t, 8> kUpgradeCode{0, 0, 100, 0, 0, 506, 509, 503};

constexpr std::uint8_t kFormatDisk = 6;
constexpr std::uint8_t kUploadPlatformImage = 7;

Result<std::string_view> wordOf(std::span<const std::string_view> words, std::uint8_t code,
                                const char* what) {
  if (code >= words.size() || words[code].empty()) {
    return failure(std::string(what) + " " + std::to_string(code) + " is unknown");
  }
  return words[code];
}

template <class T>
const Error* errorOf(const Result<T>& result) {
  return result ? nullptr : &result.error();
}

std::uint32_t withinHundred(std::uint32_t percentage) {
  return static_cast<std::uint32_t>(std::clamp(static_cast<std::int32_t>(percentage), 0, 100));
}

bool startsTheInstance(std::string_view command) {
  return command == "installApp" || command == "upgradeApp" || command == "startApp";
}

// The report that ended a run may come again.
bool beginsRun(const Object& operation, std::string_view status) {
  const std::string_view before = operation.get(OperationMo::kStatus).view();
  return before.empty() || (before != kRunning && before != status);
}

template <class T>
void setIfThere(OperationMo& operation, const mo::Property<T>& property,
                const std::optional<T>& value) {
  if (value) {
    operation.set(property, *value);
  }
}

}  // namespace

Result<void> Operations::noteProgress(const base::String& instance, std::uint8_t command,
                                      std::uint32_t percentage, std::uint8_t status,
                                      std::uint32_t code, const base::String& errorText,
                                      std::uint64_t now) {
  const auto commandWord = wordOf(kCommands, command, "command");
  const auto statusWord = wordOf(kProgressStatus, status, "status");
  const Result<Object*> subject = instances_.find(instance);
  for (const Error* const error : {errorOf(commandWord), errorOf(statusWord), errorOf(subject)}) {
    if (error != nullptr) {
      return tl::unexpected<Error>(*error);
    }
  }
  if (*statusWord == kSucceeded && startsTheInstance(*commandWord)) {
    instances_.clearFailure(**subject);
  }
  note(**subject, {*commandWord, *statusWord, withinHundred(percentage), code, errorText}, now);
  return {};
}

Result<void> Operations::noteDiskFormat(std::uint32_t slot, std::uint8_t status,
                                        std::uint64_t now) {
  return chassis_.slotOrReason(slot).and_then([&](Object* subject) {
    return wordOf(kFormatStatus, status, "disk format status").map([&](std::string_view word) {
      note(*subject, {kCommands[kFormatDisk], word, std::nullopt, std::nullopt, ""}, now);
    });
  });
}

Result<void> Operations::noteUpgrade(std::uint32_t slot, std::uint32_t percentage,
                                     std::uint8_t status, std::uint64_t now) {
  return chassis_.slotOrReason(slot).and_then([&](Object* subject) {
    return wordOf(kUpgradeStatus, status, "upgrade status").map([&](std::string_view word) {
      const std::uint32_t code = kUpgradeCode[status];
      note(*subject,
           {kCommands[kUploadPlatformImage], word, withinHundred(percentage),
            code != 0 ? std::optional(code) : std::nullopt, ""},
           now);
    });
  });
}

void Operations::note(const Object& subject, const OperationReport& report, std::uint64_t now) {
  Object& held =
      store_.create<OperationMo>(subject.dn().child("operation-" + std::string(report.command)));
  OperationMo operation;
  operation.set(OperationMo::kCommand, base::String(report.command));
  operation.set(OperationMo::kStatus, base::String(report.status));
  setIfThere(operation, OperationMo::kPercentage, report.percentage);
  setIfThere(operation, OperationMo::kCode, report.code);
  if (!report.errorText.empty()) {
    counters_.cutTexts += report.errorText.size() > kMostTextBytes ? 1 : 0;
    operation.set(OperationMo::kErrorText, cutText(report.errorText));
  }
  operation.set(OperationMo::kStartedAt,
                beginsRun(held, report.status) ? now : held.get(OperationMo::kStartedAt));
  operation.set(OperationMo::kObservedAt, now);
  store_.assign(held, operation, mo::kAllGroups);
  if (events_ != nullptr) {
    events_->progressed(subject, report);
  }
}

}  // namespace dme
