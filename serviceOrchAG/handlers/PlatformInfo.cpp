#include "serviceOrchAG/server/MsgHandler.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/base/Buffer.h"
#include "framework/core_log/Log.h"
#include "framework/core_utils/Numbers.h"
#include "framework/method/Config.h"
#include "framework/mo/Pool.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "serviceOrchAG/bridge/PendingMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/bridge/ResponseSync.h"
#include "serviceOrchAG/handlers/RequestDocument.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// The "platformInfo.update" request: a blade reports its platform and the application instances on
// it. Whatever the document holds becomes managed objects for the engine; what it lacks is logged
// and left out. The reply says only whether the engine took the platform's part.

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;
using noxxml::AgElement;
using sm::AppInstanceMo;
using sm::DiskFileSystemMo;
using sm::MonitorMo;
using Elements = std::vector<AgElement*>;

constexpr const char* kFunction = "AG_platformInfoUpdateReqCb";
constexpr unsigned kUpdateTimeOutMs = 10000;
constexpr auto kPriority = proc::Stimulus::Priority::kDefault;

const std::string& commandName() {
  return words().platformInfoUpdateName;
}

/// The object is done with afterwards.
method::Config asArgument(mo::Mo& object) {
  constexpr std::uint32_t kFlags = 0x2000;
  const mo::ChangeFlags* const changed = &object.changeFlags();
  return std::move(object).toConfig(mo::kReportGroups, changed, 0, kFlags);
}

// ----- Elements that must occur once ------------------------------------------------------------

/// Null, after a line in the log, unless the report has exactly one group of that name.
const AgElement* onlyGroup(const RequestTree& document, const base::String& group) {
  const Elements found = document.findAll(group);
  if (found.empty()) {
    MsgHandler::missingTagError(group.str(), commandName());
  } else if (found.size() > 1) {
    MsgHandler::extraTagError(group.str(), commandName());
  }
  return found.size() == 1 ? found.front() : nullptr;
}

/// The one of `found`, which are all elements of that name in the group. Null, after a line in the
/// log, unless there is exactly one.
const AgElement* onlyInner(const Elements& found, const base::String& name,
                           const base::String& group) {
  if (found.empty()) {
    logPrintf(kFunction, serviceLevel(), 8, "No <%s> tag found for %s in %s.", name.c_str(),
              group.c_str(), commandName().c_str());
  } else if (found.size() > 1) {
    logPrintf(kFunction, serviceLevel(), 8, "%zu <%s> tag found for %s in %s.", found.size(),
              name.c_str(), group.c_str(), commandName().c_str());
  }
  return found.size() == 1 ? found.front() : nullptr;
}

// ----- Values -----------------------------------------------------------------------------------

void setText(mo::Mo& object, const mo::Property<base::String>& property,
             std::optional<std::string_view> value) {
  if (value) {
    object.set(property, *value);
  }
}

/// The numbers of one group. A missing one is logged and its property left unset.
class GroupNumbers {
 public:
  GroupNumbers(const RequestTags& tags, const base::String& group) : tags_(tags), group_(group) {}

  void setLoad(mo::Mo& object, const mo::Property<float>& property, const base::String& tag) const {
    if (const std::optional<std::string_view> value = find(tag)) {
      object.set(property, static_cast<float>(std::strtod(std::string(*value).c_str(), nullptr)));
    }
  }

  /// For sizes that are there: what is less than a megabyte does not count.
  void setMegabytesDown(mo::Mo& object, const mo::Property<std::uint32_t>& property,
                        const base::String& tag) const {
    if (const std::optional<std::string_view> kilobytes = find(tag)) {
      object.set(property, static_cast<std::uint32_t>(std::floor(toMegabytes(*kilobytes))));
    }
  }

  /// For sizes that are taken: a megabyte that has been begun counts.
  void setMegabytesUp(mo::Mo& object, const mo::Property<std::uint32_t>& property,
                      const base::String& tag) const {
    if (const std::optional<std::string_view> kilobytes = find(tag)) {
      object.set(property, static_cast<std::uint32_t>(std::ceil(toMegabytes(*kilobytes))));
    }
  }

 private:
  std::optional<std::string_view> find(const base::String& tag) const {
    const std::optional<std::string_view> value = tags_.value(tag);
    if (!value) {
      logPrintf(kFunction, serviceLevel(), 6, "No <%s> tag found for %s in %s.", tag.c_str(),
                group_.c_str(), commandName().c_str());
    }
    return value;
  }

  /// What is no number of kilobytes counts as 0.
  static double toMegabytes(std::string_view kilobytes) {
    std::uint32_t number = 0;
    try {
      core_utils::stringToUint(kilobytes, number);
    } catch (const std::exception&) {
      return 0;
    }
    return number * (1.0 / 1024);
  }

  const RequestTags& tags_;
  const base::String& group_;
};

// ----- The platform -----------------------------------------------------------------------------

void readCpu(const RequestTree& document, MonitorMo& monitor) {
  const base::String& group = names().cpu;
  if (const AgElement* const cpu = onlyGroup(document, group)) {
    const RequestTags tags = document.tagsOf(*cpu);
    const GroupNumbers numbers(tags, group);
    numbers.setLoad(monitor, MonitorMo::kCpuMinus1, names().minus1);
    numbers.setLoad(monitor, MonitorMo::kCpuMinus5, names().minus5);
    numbers.setLoad(monitor, MonitorMo::kCpuMinus15, names().minus15);
  }
}

void readMemory(const RequestTree& document, MonitorMo& monitor) {
  const base::String& group = names().memory;
  const AgElement* const memory = onlyGroup(document, group);
  if (memory == nullptr) {
    return;
  }
  const base::String& inner = names().minus1;
  if (const AgElement* const last = onlyInner(memory->xmlFindAllElementsCb(inner), inner, group)) {
    const RequestTags tags = document.tagsOf(*last);
    const GroupNumbers numbers(tags, group);
    numbers.setMegabytesDown(monitor, MonitorMo::kMemTotal, names().memTotalKB);
    numbers.setMegabytesDown(monitor, MonitorMo::kMemFree, names().memFreeKB);
    numbers.setMegabytesUp(monitor, MonitorMo::kMemUsed, names().memUsedKB);
  }
}

void readAppsMemory(const RequestTree& document, MonitorMo& monitor) {
  const base::String& group = names().appsMemory;
  const AgElement* const memory = onlyGroup(document, group);
  if (memory == nullptr) {
    return;
  }
  const base::String& inner = names().currentSnapshot;
  if (const AgElement* const now = onlyInner(memory->xmlFindAllElementsCb(inner), inner, group)) {
    const RequestTags tags = document.tagsOf(*now);
    GroupNumbers(tags, group)
        .setMegabytesDown(monitor, MonitorMo::kAppsMemTotal, names().memTotalKB);
  }
}

method::Config readDisk(const RequestTags& tags) {
  const auto disk = mo::Pool::obtain<DiskFileSystemMo>();
  const GroupNumbers numbers(tags, names().diskFilesystem);
  setText(*disk, DiskFileSystemMo::kDiskName, tags.expectedValue(names().diskName));
  numbers.setMegabytesDown(*disk, DiskFileSystemMo::kDiskTotal, names().diskTotalKB);
  numbers.setMegabytesDown(*disk, DiskFileSystemMo::kDiskFree, names().diskFreeKB);
  numbers.setMegabytesUp(*disk, DiskFileSystemMo::kDiskUsed, names().diskUsedKB);
  setText(*disk, DiskFileSystemMo::kDiskMountPoint, tags.expectedValue(names().diskMountPoint));
  return asArgument(*disk);
}

method::ConfigSet readDisks(const RequestTree& document, MonitorMo& monitor) {
  method::ConfigSet disks;
  const base::String& group = names().diskFilesystem;
  const AgElement* const fileSystems = onlyGroup(document, group);
  if (fileSystems == nullptr) {
    return disks;
  }
  const base::String& inner = names().minus1;
  const AgElement* const last = onlyInner(fileSystems->findChildren(inner), inner, group);
  if (last == nullptr) {
    return disks;
  }
  const Elements found = last->xmlFindAllElementsCb(names().disk);
  monitor.set(MonitorMo::kDiskCount, static_cast<std::int32_t>(found.size()));
  if (found.empty()) {
    MsgHandler::missingTagError(names().disk.str(), commandName());
  }
  disks.reserve(found.size());
  for (const AgElement* disk : found) {
    disks.append(readDisk(document.tagsOf(*disk)));
  }
  return disks;
}

struct Platform {
  method::Config monitor;
  method::ConfigSet disks;
};

Platform readPlatform(const RequestTree& document) {
  const auto monitor = mo::Pool::obtain<MonitorMo>();
  const RequestTags tags = document.tags();
  setText(*monitor, MonitorMo::kOsVersion, tags.expectedValue(names().platformOsVersion));
  setText(*monitor, MonitorMo::kSysUptime, tags.expectedValue(names().sysuptime));
  readCpu(document, *monitor);
  readMemory(document, *monitor);
  readAppsMemory(document, *monitor);
  method::ConfigSet disks = readDisks(document, *monitor);
  return {asArgument(*monitor), std::move(disks)};
}

// ----- The application instances ----------------------------------------------------------------

/// An unknown word, -1, travels as 255.
void setState(AppInstanceMo& appInstance, std::int32_t state) {
  appInstance.set(AppInstanceMo::kState, static_cast<std::uint8_t>(state));
}

/// Both states go to one property, the operational one last: when it is there, it counts.
void readStates(const RequestTags& tags, const base::String& id, AppInstanceMo& appInstance) {
  if (const std::optional<std::string_view> sent = tags.value(names().adminStatus)) {
    const base::String word(*sent);
    const std::int32_t state = getAdminState(word);
    setState(appInstance, state);
    if (state == -1) {
      logPrintf(kFunction, serviceLevel(), 8,
                "AdminStatus value[%s] incorrect for appInstance %s in platformInfo message",
                word.c_str(), id.c_str());
    }
  }
  if (const std::optional<std::string_view> sent = tags.expectedValue(names().operStatus)) {
    const base::String word(*sent);
    const std::int32_t state = getOperState(word);
    setState(appInstance, state);
    if (state == -1) {
      logPrintf(kFunction, serviceLevel(), 8,
                "operStatus value[%s] incorrect for appInstance %s in platformInfo message",
                word.c_str(), id.c_str());
    }
  }
}

method::Config readAppInstance(const RequestTags& tags) {
  const auto appInstance = mo::Pool::obtain<AppInstanceMo>();
  const std::optional<std::string_view> id = tags.expectedValue(names().appInstanceId);
  setText(*appInstance, AppInstanceMo::kAppInstanceId, id);
  readStates(tags, id.value_or(std::string_view()), *appInstance);
  if (const auto value = tags.value(names().externalSoftwareManagement)) {
    appInstance->set(AppInstanceMo::kExternalSoftwareManagement, *value == "true");
  }
  setText(*appInstance, AppInstanceMo::kInstalledVersion,
          tags.expectedValue(names().installedVersion));
  setText(*appInstance, AppInstanceMo::kHotfixes, tags.value(names().hotfixes));
  return asArgument(*appInstance);
}

method::ConfigSet readAppInstances(const RequestTree& document) {
  method::ConfigSet appInstances;
  const Elements found = document.findAll(names().application);
  if (found.empty()) {
    MsgHandler::missingTagError(names().application.str(), commandName());
  }
  appInstances.reserve(found.size());
  for (const AgElement* application : found) {
    appInstances.append(readAppInstance(document.tagsOf(*application)));
  }
  return appInstances;
}

// ----- The engine -------------------------------------------------------------------------------

/// Where a report comes from.
struct Origin {
  const std::string& messageId;
  int slot;

  unsigned int engineSlot() const { return static_cast<unsigned int>(slot); }
};

/// Nobody waits for the answer: what the engine thinks of the instances is between it and people.
void reportAppInstances(const method::ConfigSet& appInstances, const Origin& origin) {
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  logPrintf(kFunction, serviceLevel(), 1,
            "Triggering ValidateAppInstances method for slot : %d, Message ID : %s", origin.slot,
            origin.messageId.c_str());
  Svc::invokeZanDmeServiceorchapiValidateAppInstances(cookie, origin.engineSlot(), appInstances,
                                                      false, kPriority);
}

/// To be called when the event has been set. The lock, because an engine that answers twice may be
/// writing again.
bool readResult(ResponseSync& waiter) {
  const os::CriticalSection::Guard guard(waiter.lock);
  return waiter.result;
}

/// Waits for the engine's answer and makes the reply of it.
void concludeUpdate(ResponseSync& waiter, const Origin& origin, Response& response) {
  if (waiter.event.wait(kUpdateTimeOutMs) == 1) {
    // The result is not touched: a late answer may be writing it just now.
    logPrintf(kFunction, serviceLevel(), 8,
              "DME timeout during UpdatePlatformInfo for slot %d, Message ID : %s", origin.slot,
              origin.messageId.c_str());
    MsgHandler::fillResponse(response, commandName(), status::kTimeOut, "response time out.");
  } else if (!readResult(waiter)) {
    MsgHandler::fillResponse(response, commandName(), status::kOperationFailed,
                             "Failed to update PlatformInfo in DME.");
  } else {
    MsgHandler::fillResponse(response, commandName(), status::kSuccess, "OK");
  }
}

void reportPlatform(MsgHandler& handler, const Platform& platform, const Origin& origin,
                    Response& response) {
  logPrintf(kFunction, serviceLevel(), 1,
            "Triggering UpdatePlatformInfo method for slot : %d, Message ID : %s", origin.slot,
            origin.messageId.c_str());
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  ResponseSync waiter(&response);
  waiter.cookie = cookie;
  const PendingResponse pending(handler, waiter);
  Svc::invokeZanDmeServiceorchapiUpdatePlatformInfo(cookie, origin.engineSlot(), platform.monitor,
                                                    platform.disks, true, kPriority);
  logPrintf(kFunction, serviceLevel(), 1,
            "UpdatePlatformInfo : wait... for slot : %d, Message ID : %s", origin.slot,
            origin.messageId.c_str());
  concludeUpdate(waiter, origin, response);
}

}  // namespace

Response* MsgHandler::AG_platformInfoUpdateReqCb(const std::string& messageId,
                                                 const std::string& action,
                                                 const std::string& document, int slot) {
  if (action != words().actionUpdate) {
    return invalidActionResponse(action, commandName(), nullptr);
  }
  auto response = std::make_unique<Response>();
  const RequestTree tree(document, commandName());
  const Platform platform = readPlatform(tree);
  const Origin origin{messageId, slot};
  reportAppInstances(readAppInstances(tree), origin);
  reportPlatform(*this, platform, origin, *response);
  return response.release();
}

}  // namespace zan_serviceOrchAG
