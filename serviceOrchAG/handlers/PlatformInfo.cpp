#include "serviceOrchAG/server/MsgHandler.h"

#include <cmath>
#include <cstddef>
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
#include "serviceOrchAG/handlers/Origin.h"
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

/// The elements of one name: how many there are, and the only one.
class Occurrences {
 public:
  explicit Occurrences(const base::String& name) : name_(name) {}

  /// Counts the element if it is of that name.
  void look(const AgElement* element) {
    if (element->isNamed(name_)) {
      ++count_;
      last_ = element;
    }
  }

  const base::String& name() const { return name_; }
  std::size_t count() const { return count_; }
  /// Null unless there is exactly one.
  const AgElement* only() const { return count_ == 1 ? last_ : nullptr; }

 private:
  const base::String& name_;
  std::size_t count_ = 0;
  const AgElement* last_ = nullptr;
};

/// What a report may hold at any depth, found in one walk over it.
struct Sections {
  static constexpr std::size_t kUsualApplications = 32;

  explicit Sections(const RequestTree& document) {
    const base::String& application = names().application;
    applications.reserve(kUsualApplications);
    document.visitAll([&](AgElement* element) {
      cpu.look(element);
      memory.look(element);
      appsMemory.look(element);
      fileSystems.look(element);
      if (element->isNamed(application)) {
        applications.push_back(element);
      }
    });
  }

  Occurrences cpu{names().cpu};
  Occurrences memory{names().memory};
  Occurrences appsMemory{names().appsMemory};
  Occurrences fileSystems{names().diskFilesystem};
  Elements applications;
};

/// Null, after a line in the log, unless the report has exactly one such group.
const AgElement* onlyGroup(const Occurrences& group) {
  if (group.count() == 0) {
    MsgHandler::missingTagError(group.name().str(), commandName());
  } else if (group.count() > 1) {
    MsgHandler::extraTagError(group.name().str(), commandName());
  }
  return group.only();
}

/// `found` are all elements of their name in the group. Null, after a line in the log, unless there
/// is exactly one.
const AgElement* onlyInner(const Occurrences& found, const base::String& group) {
  if (found.count() == 0) {
    logPrintf(kFunction, serviceLevel(), 8, "No <%s> tag found for %s in %s.", found.name().c_str(),
              group.c_str(), commandName().c_str());
  } else if (found.count() > 1) {
    logPrintf(kFunction, serviceLevel(), 8, "%zu <%s> tag found for %s in %s.", found.count(),
              found.name().c_str(), group.c_str(), commandName().c_str());
  }
  return found.only();
}

/// The same of the elements at any depth below the group.
const AgElement* onlyBelow(const AgElement& group, const base::String& name,
                           const base::String& groupName) {
  Occurrences found(name);
  group.visitBelow([&](const AgElement* element) { found.look(element); });
  return onlyInner(found, groupName);
}

// ----- Values -----------------------------------------------------------------------------------

/// A property whose value is missing is left unset. Those of one object are best set in ascending
/// order of their numbers, which spares it from making room between those that it has; where that
/// is not the order of the lines about missing values, the values are read first.
template <class T, class Value>
void setIfThere(mo::Mo& object, const mo::Property<T>& property,
                const std::optional<Value>& value) {
  if (value) {
    object.set(property, *value);
  }
}

/// The numbers of one group. A missing one is logged.
class GroupNumbers {
 public:
  GroupNumbers(const RequestTags& tags, const base::String& group) : tags_(tags), group_(group) {}

  std::optional<float> load(const base::String& tag) const {
    const std::optional<std::string_view> value = find(tag);
    if (!value) {
      return std::nullopt;
    }
    return static_cast<float>(std::strtod(std::string(*value).c_str(), nullptr));
  }

  /// For sizes that are there: what is less than a megabyte does not count.
  std::optional<std::uint32_t> megabytesDown(const base::String& tag) const {
    const std::optional<std::string_view> kilobytes = find(tag);
    if (!kilobytes) {
      return std::nullopt;
    }
    return static_cast<std::uint32_t>(std::floor(toMegabytes(*kilobytes)));
  }

  /// For sizes that are taken: a megabyte that has been begun counts.
  std::optional<std::uint32_t> megabytesUp(const base::String& tag) const {
    const std::optional<std::string_view> kilobytes = find(tag);
    if (!kilobytes) {
      return std::nullopt;
    }
    return static_cast<std::uint32_t>(std::ceil(toMegabytes(*kilobytes)));
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

void readCpu(const RequestTree& document, const Occurrences& group, MonitorMo& monitor) {
  if (const AgElement* const cpu = onlyGroup(group)) {
    const RequestTags tags = document.tagsOf(*cpu);
    const GroupNumbers numbers(tags, group.name());
    setIfThere(monitor, MonitorMo::kCpuMinus1, numbers.load(names().minus1));
    setIfThere(monitor, MonitorMo::kCpuMinus5, numbers.load(names().minus5));
    setIfThere(monitor, MonitorMo::kCpuMinus15, numbers.load(names().minus15));
  }
}

void readMemory(const RequestTree& document, const Occurrences& group, MonitorMo& monitor) {
  const AgElement* const memory = onlyGroup(group);
  if (memory == nullptr) {
    return;
  }
  if (const AgElement* const last = onlyBelow(*memory, names().minus1, group.name())) {
    const RequestTags tags = document.tagsOf(*last);
    const GroupNumbers numbers(tags, group.name());
    setIfThere(monitor, MonitorMo::kMemTotal, numbers.megabytesDown(names().memTotalKB));
    setIfThere(monitor, MonitorMo::kMemFree, numbers.megabytesDown(names().memFreeKB));
    setIfThere(monitor, MonitorMo::kMemUsed, numbers.megabytesUp(names().memUsedKB));
  }
}

void readAppsMemory(const RequestTree& document, const Occurrences& group, MonitorMo& monitor) {
  const AgElement* const memory = onlyGroup(group);
  if (memory == nullptr) {
    return;
  }
  if (const AgElement* const now = onlyBelow(*memory, names().currentSnapshot, group.name())) {
    const RequestTags tags = document.tagsOf(*now);
    const GroupNumbers numbers(tags, group.name());
    setIfThere(monitor, MonitorMo::kAppsMemTotal, numbers.megabytesDown(names().memTotalKB));
  }
}

method::Config readDisk(const RequestTags& tags) {
  const GroupNumbers numbers(tags, names().diskFilesystem);
  const auto name = tags.expectedValue(names().diskName);
  const auto total = numbers.megabytesDown(names().diskTotalKB);
  const auto free = numbers.megabytesDown(names().diskFreeKB);
  const auto used = numbers.megabytesUp(names().diskUsedKB);
  const auto mountPoint = tags.expectedValue(names().diskMountPoint);
  const auto disk = mo::Pool::obtain<DiskFileSystemMo>();
  setIfThere(*disk, DiskFileSystemMo::kDiskName, name);
  setIfThere(*disk, DiskFileSystemMo::kDiskMountPoint, mountPoint);
  setIfThere(*disk, DiskFileSystemMo::kDiskTotal, total);
  setIfThere(*disk, DiskFileSystemMo::kDiskFree, free);
  setIfThere(*disk, DiskFileSystemMo::kDiskUsed, used);
  return asArgument(*disk);
}

method::ConfigSet readDisks(const RequestTree& document, const Occurrences& group,
                            MonitorMo& monitor) {
  method::ConfigSet disks;
  const AgElement* const fileSystems = onlyGroup(group);
  if (fileSystems == nullptr) {
    return disks;
  }
  Occurrences inner(names().minus1);
  for (const AgElement* child : fileSystems->children()) {
    inner.look(child);
  }
  const AgElement* const last = onlyInner(inner, group.name());
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

Platform readPlatform(const RequestTree& document, const Sections& sections) {
  const auto monitor = mo::Pool::obtain<MonitorMo>();
  const RequestTags tags = document.tags();
  setIfThere(*monitor, MonitorMo::kOsVersion, tags.expectedValue(names().platformOsVersion));
  setIfThere(*monitor, MonitorMo::kSysUptime, tags.expectedValue(names().sysuptime));
  readCpu(document, sections.cpu, *monitor);
  readMemory(document, sections.memory, *monitor);
  readAppsMemory(document, sections.appsMemory, *monitor);
  method::ConfigSet disks = readDisks(document, sections.fileSystems, *monitor);
  return {asArgument(*monitor), std::move(disks)};
}

// ----- The application instances ----------------------------------------------------------------

/// What the blade says of an instance's state: nothing, when it says nothing. An unknown word, -1,
/// travels as 255. Both states go to one property: when the operational one is there, it counts.
std::optional<std::uint8_t> readState(const RequestTags& tags, const base::String& id) {
  std::optional<std::uint8_t> read;
  if (const std::optional<std::string_view> sent = tags.value(names().adminStatus)) {
    const base::String word(*sent);
    const std::int32_t state = getAdminState(word);
    read = static_cast<std::uint8_t>(state);
    if (state == -1) {
      logPrintf(kFunction, serviceLevel(), 8,
                "AdminStatus value[%s] incorrect for appInstance %s in platformInfo message",
                word.c_str(), id.c_str());
    }
  }
  if (const std::optional<std::string_view> sent = tags.expectedValue(names().operStatus)) {
    const base::String word(*sent);
    const std::int32_t state = getOperState(word);
    read = static_cast<std::uint8_t>(state);
    if (state == -1) {
      logPrintf(kFunction, serviceLevel(), 8,
                "operStatus value[%s] incorrect for appInstance %s in platformInfo message",
                word.c_str(), id.c_str());
    }
  }
  return read;
}

method::Config readAppInstance(const RequestTags& tags) {
  const auto id = tags.expectedValue(names().appInstanceId);
  const auto state = readState(tags, id.value_or(std::string_view()));
  const auto external = tags.value(names().externalSoftwareManagement);
  const auto version = tags.expectedValue(names().installedVersion);
  const auto hotfixes = tags.value(names().hotfixes);
  const auto appInstance = mo::Pool::obtain<AppInstanceMo>();
  setIfThere(*appInstance, AppInstanceMo::kAppInstanceId, id);
  setIfThere(*appInstance, AppInstanceMo::kInstalledVersion, version);
  setIfThere(*appInstance, AppInstanceMo::kState, state);
  setIfThere(*appInstance, AppInstanceMo::kHotfixes, hotfixes);
  if (external) {
    appInstance->set(AppInstanceMo::kExternalSoftwareManagement, *external == "true");
  }
  return asArgument(*appInstance);
}

method::ConfigSet readAppInstances(const RequestTree& document, const Elements& found) {
  method::ConfigSet appInstances;
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
  const Sections sections(tree);
  const Platform platform = readPlatform(tree, sections);
  const Origin origin{messageId, slot};
  reportAppInstances(readAppInstances(tree, sections.applications), origin);
  reportPlatform(*this, platform, origin, *response);
  return response.release();
}

}  // namespace zan_serviceOrchAG
