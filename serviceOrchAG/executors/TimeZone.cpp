#include "serviceOrchAG/executors/TimeZone.h"

#include <mutex>

#include "framework/utils/TimeZoneCache.h"
#include "model/comm/DateTimeMo.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {

namespace {

using comm::DateTimeMo;
using utils::TimeZoneCache;

constexpr ExecutorNames kNames{"executeServiceorchapiUpdateTimeZoneCb",
                               "ServiceorchapiUpdateTimeZone", "SETTINGUPDATE"};

/// Adds one of the document's elements; both are required. False, and told, when it has no value.
bool add(ExecutorFrame& frame, CommandDocument& document, int slot, const base::String& name,
         const base::String& value) {
  if (createChildNode(name, value, document.root(), document.converter()) != nullptr) {
    return true;
  }
  frame.log(ExecutorFrame::kError, "SETTINGUPDATE: %s[%d]: %s : missing", names().slot.c_str(),
            slot, name.c_str());
  frame.refuse(std::string("SETTINGUPDATE:: ") + name.c_str() + " is missing");
  return false;
}

void exchange(ExecutorFrame& frame, unsigned int slot, const std::string& document) {
  const int number = static_cast<int>(slot);
  frame.log(ExecutorFrame::kDocument, "SETTINGUPDATE: setting update request = %s, slot = %d",
            document.c_str(), number);
  if (frame.send(std::to_string(slot), document, words().settingsUpdateSubject)) {
    frame.log(ExecutorFrame::kTrace,
              "SETTINGUPDATE: %d : Setting update message sent to SMA with success request / "
              "response for slot %d.",
              100, number);
  } else {
    frame.log(ExecutorFrame::kError,
              "SETTINGUPDATE: Setting update message Request/Response between ServiceOrchAG and "
              "SMA failed for slot %d.",
              number);
  }
  frame.leave();
}

}  // namespace

void updateTimeZoneCache(const DateTimeMo* settings) {
  core_log::logPrintf("updateTimeZoneCache", core_log::serviceLevel(), ExecutorFrame::kDocument,
                      "serviceOrchAG:updateTimeZoneCache entered");
  std::string zone = settings->get(DateTimeMo::kTimeZone).str();
  zone.resize(std::min(zone.find(' '), zone.size()));
  const std::lock_guard guard(TimeZoneCache::getInstance());
  TimeZoneCache::getInstance().setTimeZoneData(zone.empty() ? "UTC" : zone);
}

void Svc::executeServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe& me,
                                                const unsigned int&, const unsigned int&,
                                                const mo::Dn&, const unsigned long&,
                                                const method::Config&, const unsigned int& slot,
                                                const base::String& logLevel) {
  static TimeZoneCache& cache = TimeZoneCache::getInstance();
  ExecutorFrame frame(kNames, me);
  if (!frame.enter()) {
    return;
  }
  // The failure's text begins as another command's: the engine knows it so.
  const auto* const settings = frame.target<DateTimeMo>(
      me.target(), "SETTINGUPDATE: cannot find DateTimeMo", "STARTAPP:: DateTimeMo is missing");
  if (settings == nullptr) {
    return;
  }
  const int number = static_cast<int>(slot);
  const std::string& root = words().platformSettingsUpdateName;  // as it is, without "Request"
  frame.log(ExecutorFrame::kTrace, "SETTINGUPDATE: request type : %s, slot : %d ", root.c_str(),
            number);
  CommandDocument document(root);
  updateTimeZoneCache(settings);
  const base::String posix = cache.getTimeZoneInPosix();
  frame.log(ExecutorFrame::kTrace, "SETTINGUPDATE: timezone[%s] : Postfix timezone[%s] ",
            settings->get(DateTimeMo::kTimeZone).c_str(), posix.c_str());
  if (add(frame, document, number, names().timezone, posix) &&
      add(frame, document, number, names().logLevel, logLevel)) {
    exchange(frame, slot, document.text());
  }
}
void Svc::formatSuccessRspServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe&) {}
void Svc::formatFailedRspServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe&) {}

}  // namespace zan_serviceOrchAG
