#include "serviceOrchAG/server/MsgHandler.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "framework/base/Buffer.h"
#include "framework/core_log/Log.h"
#include "framework/core_utils/Text.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/handlers/Origin.h"
#include "serviceOrchAG/handlers/RequestDocument.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// The "commandProgress.update" request: how far a blade is with a command that it was sent. The
// engine gets to know, by the method for that kind of command; the blade gets a reply only when it
// asks for one.

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

constexpr auto kPriority = proc::Stimulus::Priority::kDefault;
constexpr long kPlatform = -1;  // stands for the application instance in reports about the platform
// Fixed arguments of OsControllerUpgradeProgress. The engine takes the real version from elsewhere.
constexpr unsigned kChassis = 1;
constexpr const char* kUpgradeVersion = "99.1.2.3";
constexpr const char* kUpgradeImageKind = "nox-os";

/// The engine's numbers of the commands.
enum class Command : std::uint8_t {
  kInstallApp = 1,
  kUninstallApp = 2,
  kUpgradeApp = 3,
  kStartApp = 4,
  kStopApp = 5,
  kFormatDisk = 6,
  kUploadPlatformImage = 7,
};

std::optional<Command> commandOf(const base::String& word) {
  const std::pair<const std::string*, Command> commands[] = {
      {&words().installAppName, Command::kInstallApp},
      {&words().uninstallAppName, Command::kUninstallApp},
      {&words().upgradeAppName, Command::kUpgradeApp},
      {&words().startAppName, Command::kStartApp},
      {&words().stopAppName, Command::kStopApp},
      {&words().formatDiskSubject, Command::kFormatDisk},
      {&words().uploadPlatformImageSubject, Command::kUploadPlatformImage},
  };
  for (const auto& [known, command] : commands) {
    if (word.str() == *known) {
      return command;
    }
  }
  return std::nullopt;
}

/// The engine's numbers of a state. They differ between its methods.
struct State {
  std::uint8_t ofProgress;
  std::uint8_t ofDiskFormat;
};

std::optional<State> stateOf(const base::String& word) {
  if (word.str() == words().stateRunning) {
    return State{1, 1};
  }
  if (word.str() == words().stateFailed) {
    return State{2, 3};
  }
  if (word.str() == words().stateSucceeded) {
    return State{3, 2};
  }
  return std::nullopt;
}

/// What a blade reports.
struct Report {
  base::String appInstanceId;
  base::String commandWord;  // without prefix
  Command command{};
  base::String progress;
  State state{};
  base::String code;
  base::String ack;
  base::String errorDesc;
};

long toLong(const base::String& text) {
  return std::strtol(text.c_str(), nullptr, 10);
}

unsigned int toUnsigned(const base::String& text) {
  return static_cast<unsigned int>(toLong(text));
}

/// Reads the tags of a report. Each step is false when it refuses the report; the response then
/// says why.
class ReportReader {
 public:
  ReportReader(const RequestTags& tags, Response& response) : tags_(tags), response_(response) {}

  /// Agents are told of the first tag that is wrong, in this order.
  bool read(Report& report) {
    return readFilled(names().appInstanceId, report.appInstanceId) && readCommand(report) &&
           readPresent(names().operProgress, report.progress) && readState(report) &&
           readFilled(names().code, report.code) && readPresent(names().ack, report.ack);
  }

 private:
  bool readPresent(const base::String& tag, base::String& target) {
    const std::optional<std::string_view> value = tags_.value(tag);
    if (!value) {
      MsgHandler::missingTagResponse(tag.str(), words().commandProgressUpdateName, &response_);
      return false;
    }
    target = *value;
    return true;
  }

  bool readFilled(const base::String& tag, base::String& target) {
    return readPresent(tag, target) && (!target.empty() || refuse(tag, target));
  }

  bool readCommand(Report& report) {
    base::String word;
    if (!readPresent(names().operCmd, word)) {
      return false;
    }
    report.commandWord = withoutCommandPrefix(word);
    const std::optional<Command> command = commandOf(report.commandWord);
    if (!command) {
      return refuse(names().operCmd, report.commandWord);
    }
    report.command = *command;
    return true;
  }

  bool readState(Report& report) {
    base::String word;
    if (!readPresent(names().operStatus, word)) {
      return false;
    }
    const std::optional<State> state = stateOf(word);
    if (!state) {
      return refuse(names().operStatus, word);
    }
    report.state = *state;
    return true;
  }

  bool refuse(const base::String& tag, const base::String& value) {
    MsgHandler::invalidParamResponse(tag.str(), value.str(), words().commandProgressUpdateName,
                                     &response_);
    return false;
  }

  const RequestTags& tags_;
  Response& response_;
};

/// People read this text, so it stays as the blade sent it, blanks included.
base::String readErrorDesc(const RequestTags& tags) {
  const std::optional<std::string_view> sent = tags.valueAsSent(names().errorDesc);
  if (!sent) {
    MsgHandler::missingTagError(names().errorDesc.str(), words().commandProgressUpdateName);
  }
  return sent.value_or(std::string_view());
}

/// The engine's number of the state of a platform image's upload.
std::uint8_t upgradeStatus(const Report& report) {
  switch (toLong(report.code)) {
    case status::kSuccess:
      return toLong(report.progress) >= 100 ? 2 : 3;
    case status::kUnknownError:
      return 6;
    case status::kTimeOut:
      return 5;
    case status::kParsingError:
      return 7;
    default:
      return 3;
  }
}

void reportInstance(const base::Buffer& cookie, const Report& report, const Origin& origin) {
  logPrintf("AG_commandProgressUpdateReqCb", serviceLevel(), 1,
            "invokeZanDmeServiceorchapiUpdateProgress for slot : %d, Message ID : %s", origin.slot,
            origin.messageId.c_str());
  Svc::invokeZanDmeServiceorchapiUpdateProgress(
      cookie, report.appInstanceId, static_cast<unsigned char>(report.command),
      toUnsigned(report.progress), report.state.ofProgress, toUnsigned(report.code),
      report.errorDesc, false, kPriority);
}

void reportImageUpload(const base::Buffer& cookie, const Report& report, const Origin& origin) {
  logPrintf("AG_commandProgressUpdateReqCb", serviceLevel(), 1,
            "invokeZanDmeServerapiOsControllerUpgradeProgress for slot : %d, Message ID : %s",
            origin.slot, origin.messageId.c_str());
  const unsigned long identifier = 0;
  Svc::invokeZanDmeServerapiOsControllerUpgradeProgress(
      cookie, identifier, kChassis, origin.engineSlot(), kUpgradeVersion,
      toUnsigned(report.progress), upgradeStatus(report), kUpgradeImageKind, false, kPriority);
}

void reportDiskFormat(const base::Buffer& cookie, const Report& report, const Origin& origin) {
  logPrintf("AG_commandProgressUpdateReqCb", serviceLevel(), 1,
            "invokeZanDmeServiceorchapiUpdateDiskFormatStatus for slot : %d, Message ID : %s",
            origin.slot, origin.messageId.c_str());
  Svc::invokeZanDmeServiceorchapiUpdateDiskFormatStatus(
      cookie, origin.engineSlot(), report.state.ofDiskFormat, false, kPriority);
}

/// A command to an application needs an instance: without one the engine is told nothing.
void tellEngine(const Report& report, const Origin& origin) {
  logPrintf("AG_commandProgressUpdateReqCb", serviceLevel(), 5,
            "Triggering UpgradeProgress method for slot = %d , operCmd = %s, percentage = %s, "
            "MesgId =  %s, appInstanceId = %s",
            origin.slot, report.commandWord.c_str(), report.progress.c_str(),
            origin.messageId.c_str(), report.appInstanceId.c_str());
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  if (toLong(report.appInstanceId) != kPlatform) {
    reportInstance(cookie, report, origin);
  } else if (report.command == Command::kUploadPlatformImage) {
    reportImageUpload(cookie, report, origin);
  } else if (report.command == Command::kFormatDisk) {
    reportDiskFormat(cookie, report, origin);
  }
}

}  // namespace

Response* MsgHandler::AG_commandProgressUpdateReqCb(const std::string& messageId,
                                                    const std::string& action,
                                                    const std::string& document, int slot) {
  if (action != words().actionUpdate) {
    return invalidActionResponse(action, words().commandProgressUpdateName, nullptr);
  }
  auto response = std::make_unique<Response>();
  const RequestTree tree(document, words().commandProgressUpdateName);
  const RequestTags tags = tree.tags();
  Report report;
  if (!ReportReader(tags, *response).read(report)) {
    return response.release();
  }
  report.errorDesc = readErrorDesc(tags);
  tellEngine(report, {messageId, slot});
  if (core_utils::toUpperCase(report.ack) != "TRUE") {
    return nullptr;
  }
  fillResponse(*response, words().commandProgressUpdateName, status::kSuccess, "OK");
  return response.release();
}

}  // namespace zan_serviceOrchAG
