#include <set>

#include "framework/core_utils/Text.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/ReplyChecks.h"
#include "fuzz/support/Tags.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"

// The document of a command's progress: by what it holds the engine hears of an instance, an
// image's upload or a disk's format, and the blade is answered if it wants to be.

namespace fuzz {
namespace {

using serverapi::OsControllerUpgradeProgressMe;
using serviceorchapi::UpdateDiskFormatStatusMe;
using serviceorchapi::UpdateProgressMe;

bool isWhole(const Tags& tags) {
  static const std::set<std::string> kCommands{"installApp",         "uninstallApp", "upgradeApp",
                                               "startApp",           "stopApp",      "formatDisk",
                                               "uploadPlatformImage"};
  static const std::set<std::string> kStates{"running", "failed", "succeeded"};
  const std::string command = trimmed(tags, "operCmd");
  return !trimmed(tags, "appInstanceId").empty() &&
         kCommands.contains(command.substr(command.find('.') + 1)) &&
         tags.contains("operProgress") && kStates.contains(trimmed(tags, "operStatus")) &&
         !trimmed(tags, "code").empty() && tags.contains("ack");
}

void checkEngine(const EngineStandIn& engine, const Tags& tags) {
  check(engine.calls() <= 1, "the engine hears of a progress once at most");
  check(engine.calls() == engine.calls(UpdateProgressMe::kClassId) +
                              engine.calls(UpdateDiskFormatStatusMe::kClassId) +
                              engine.calls(OsControllerUpgradeProgressMe::kClassId),
        "the engine hears of a progress");
  if (const auto progress = engine.onlyCall<UpdateProgressMe>()) {
    check(std::get<0>(*progress).str() == trimmed(tags, "appInstanceId"),
          "the engine hears of the instance that the report names");
    const auto text = tags.find("errorDesc");
    check(std::get<5>(*progress) == (text == tags.end() ? base::String() : text->second),
          "the error's text stays as it was sent");
  }
  if (const auto format = engine.onlyCall<UpdateDiskFormatStatusMe>()) {
    check(std::get<0>(*format) == Gateway::kSlot, "the engine hears of the blade's own slot");
    check(std::get<1>(*format) >= 1 && std::get<1>(*format) <= 3, "a status is a known one");
  }
  if (const auto upload = engine.onlyCall<OsControllerUpgradeProgressMe>()) {
    check(std::get<2>(*upload) == Gateway::kSlot, "the engine hears of the blade's own slot");
  }
}

}  // namespace

void runCommandProgress(Input input) {
  Gateway gateway(takeManner(input));
  const std::string document = textOf(input);
  const Tags tags = noxxml::XMLConverter::xml2map(document, "commandProgressUpdateRequest");
  const auto response =
      gateway.handle(&MsgHandler::AG_commandProgressUpdateReqCb, document, "update");
  if (!isWhole(tags)) {
    check(response != nullptr, "an incomplete report is answered", document);
    checkReply(*response, "commandProgressUpdate", {505});
    check(gateway.engine().calls() == 0, "an incomplete report stays from the engine", document);
    return;
  }
  checkEngine(gateway.engine(), tags);
  if (gateway.hasDropped()) {
    return;
  }
  const bool wantsReply = core_utils::toUpperCase(trimmed(tags, "ack")) == "TRUE";
  check((response != nullptr) == wantsReply, "a report is answered if it asks for it", document);
  if (response != nullptr) {
    checkReply(*response, "commandProgressUpdate", {100});
  }
}

}  // namespace fuzz
