#include "sma/messages/OddRequest.h"

#include <algorithm>

#include "serviceOrchAG/svc/Vocabulary.h"
#include "sma/messages/ReportDocuments.h"
#include "sma/messages/Requests.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;
using Change = std::function<void(Draft&)>;

constexpr std::size_t kThousand = 1000;
/// As much as a document may hold by default, nearly.
constexpr std::size_t kMegabyte = 1'000'000;
/// More than any gateway takes by default.
constexpr std::size_t kOversize = 1'500'000;
/// Text that would do harm where it is taken for a format, a path, markup or a line of its own.
constexpr std::string_view kHostile = "../%s%n\r\n<b>&amp;\x1b[2J'; --\xff";

// --- what can be done to a document; paths as Element::find() takes them

Element& parentOf(Element& root, std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? root : *root.find(path.substr(0, slash));
}

/// Every element that stands at the path is removed.
Change without(std::string_view path) {
  return [path](Draft& draft) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    std::erase_if(parentOf(draft.document, path).children,
                  [name](const Element& each) { return each.name == name; });
  };
}

/// The first element that stands at the path is there `count` times.
Change repeated(std::string_view path, std::size_t count) {
  return [path, count](Draft& draft) {
    const Element one = *draft.document.find(path);
    auto& children = parentOf(draft.document, path).children;
    children.insert(children.end(), count - 1, one);
  };
}

Change twice(std::string_view path) {
  return repeated(path, 2);
}

Change text(std::string_view path, std::string_view value) {
  return [path, value](Draft& draft) {
    draft.document.find(path)->text = value;
  };
}

Change longText(std::string_view path, std::size_t size) {
  return [path, size](Draft& draft) {
    draft.document.find(path)->text.assign(size, 'h');
  };
}

void changeLeaves(Element& element, const std::function<void(std::string&)>& change) {
  if (element.children.empty()) {
    change(element.text);
  }
  for (Element& child : element.children) {
    changeLeaves(child, change);
  }
}

/// The value of every element without children is changed.
Change allValues(const std::function<void(std::string&)>& change) {
  return [change](Draft& draft) {
    changeLeaves(draft.document, change);
  };
}

void makeEmpty(std::string& value) {
  value.clear();
}

void addBlanks(std::string& value) {
  value = " \t" + value + "\n ";
}

/// A chain of elements, each within the one before.
void nest(Draft& draft) {
  Element chain{"level", "", {}};
  for (std::size_t level = 1; level < kThousand; ++level) {
    Element outer{"level", "", {}};
    outer.children.push_back(std::move(chain));
    chain = std::move(outer);
  }
  draft.document.children.push_back(std::move(chain));
}

void rename(Draft& draft) {
  draft.document.name = "somethingElse";
}

// --- and to what is written of it

void malform(Draft& draft) {
  draft.bytes = "<" + draft.document.name + "><a>1</b></" + draft.document.name + ">\x01<";
}

void truncate(Draft& draft) {
  const std::string whole = toXml(draft.document);
  draft.bytes = whole.substr(0, whole.size() / 2);
}

void makeEmptyDocument(Draft& draft) {
  draft.bytes = "";
}

Change command(std::string_view other) {
  return [other](Draft& draft) {
    draft.command = other;
  };
}

// --- the odd requests

using Rows = std::vector<OddRequest>;

Rows oddHeartbeats() {
  constexpr auto kBase = BaseRequest::Heartbeat;
  return {
      {"malformed-xml", kBase, malform},
      {"truncated-xml", kBase, truncate},
      {"oversized-xml", kBase, longText("count", kOversize)},
      {"wrong-part-count", kBase,
       [](Draft& draft) {
         draft.parts = 4;
       }},
      {"wrong-content-type", kBase,
       [](Draft& draft) {
         draft.contentType = words().contentType + ":2";
       }},
      {"unknown-command", kBase, command("selfDestruct")},
      {"foreign-subject", kBase,
       [](Draft& draft) {
         draft.service = "someOtherService";
       }},
  };
}

Rows oddPlatformDocuments() {
  constexpr auto kBase = BaseRequest::Platform;
  return {
      {"platform-wrong-action", kBase, command("platformInfo.set")},
      {"platform-malformed-xml", kBase, malform},
      {"platform-truncated-xml", kBase, truncate},
      {"platform-empty-document", kBase, makeEmptyDocument},
      {"platform-wrong-root", kBase, rename},
      {"platform-nested", kBase, nest},
      {"platform-oversized", kBase, longText("application/hotfixes", kOversize)},
      {"platform-empty-values", kBase, allValues(makeEmpty)},
      {"platform-blank-values", kBase, allValues(addBlanks)},
  };
}

Rows oddPlatformGroups() {
  constexpr auto kBase = BaseRequest::Platform;
  return {
      {"platform-no-os-version", kBase, without("OsVersion")},
      {"platform-no-uptime", kBase, without("Sysuptime")},
      {"platform-no-cpu", kBase, without("Cpu")},
      {"platform-no-memory", kBase, without("Memory")},
      {"platform-no-apps-memory", kBase, without("AppsMemory")},
      {"platform-no-disk-filesystem", kBase, without("DiskFilesystem")},
      {"platform-two-cpu", kBase, twice("Cpu")},
      {"platform-two-memory", kBase, twice("Memory")},
      {"platform-two-apps-memory", kBase, twice("AppsMemory")},
      {"platform-two-disk-filesystem", kBase, twice("DiskFilesystem")},
      {"platform-no-memory-inner", kBase, without("Memory/minus1")},
      {"platform-no-apps-memory-inner", kBase, without("AppsMemory/CurrentSnapshot")},
      {"platform-no-disk-inner", kBase, without("DiskFilesystem/minus1")},
      {"platform-two-memory-inner", kBase, twice("Memory/minus1")},
      {"platform-two-apps-memory-inner", kBase, twice("AppsMemory/CurrentSnapshot")},
      {"platform-two-disk-inner", kBase, twice("DiskFilesystem/minus1")},
  };
}

Rows oddPlatformNumbers() {
  constexpr auto kBase = BaseRequest::Platform;
  return {
      {"platform-no-load-1", kBase, without("Cpu/minus1")},
      {"platform-no-load-5", kBase, without("Cpu/minus5")},
      {"platform-no-load-15", kBase, without("Cpu/minus15")},
      {"platform-load-word", kBase, text("Cpu/minus1", "much")},
      {"platform-load-huge", kBase, text("Cpu/minus1", "1e999")},
      {"platform-load-nan", kBase, text("Cpu/minus1", "nan")},
      {"platform-load-negative", kBase, text("Cpu/minus1", "-1.5")},

      {"platform-no-memory-total", kBase, without("Memory/minus1/MemTotalKB")},
      {"platform-no-memory-free", kBase, without("Memory/minus1/MemFreeKB")},
      {"platform-no-memory-used", kBase, without("Memory/minus1/MemUsedKB")},
      {"platform-no-apps-memory-total", kBase, without("AppsMemory/CurrentSnapshot/MemTotalKB")},
      {"platform-memory-word", kBase, text("Memory/minus1/MemTotalKB", "lots")},
      {"platform-memory-negative", kBase, text("Memory/minus1/MemTotalKB", "-1")},
      {"platform-memory-fraction", kBase, text("Memory/minus1/MemTotalKB", "1.5")},
      {"platform-memory-overflow", kBase, text("Memory/minus1/MemTotalKB", "4294967296")},
  };
}

Rows oddDisks() {
  constexpr auto kBase = BaseRequest::Platform;
  return {
      {"platform-no-disks", kBase, without("DiskFilesystem/minus1/Disk")},
      {"platform-thousand-disks", kBase, repeated("DiskFilesystem/minus1/Disk", kThousand)},
      {"platform-no-disk-name", kBase, without("DiskFilesystem/minus1/Disk/DiskName")},
      {"platform-no-disk-mount-point", kBase, without("DiskFilesystem/minus1/Disk/DiskMountPoint")},
      {"platform-no-disk-total", kBase, without("DiskFilesystem/minus1/Disk/DiskTotalKB")},
      {"platform-no-disk-free", kBase, without("DiskFilesystem/minus1/Disk/DiskFreeKB")},
      {"platform-no-disk-used", kBase, without("DiskFilesystem/minus1/Disk/DiskUsedKB")},
      {"platform-disk-word", kBase, text("DiskFilesystem/minus1/Disk/DiskUsedKB", "half")},
      {"platform-disk-overflow", kBase,
       text("DiskFilesystem/minus1/Disk/DiskTotalKB", "99999999999999999999")},
      {"platform-hostile-disk-name", kBase, text("DiskFilesystem/minus1/Disk/DiskName", kHostile)},
  };
}

Rows oddApplications() {
  constexpr auto kBase = BaseRequest::Platform;
  return {
      {"platform-no-applications", kBase, without("application")},
      {"platform-twin-applications", kBase, twice("application")},
      {"platform-thousand-applications", kBase, repeated("application", kThousand)},
      {"platform-no-app-id", kBase, without("application/appInstanceId")},
      {"platform-no-app-admin", kBase, without("application/adminStatus")},
      {"platform-no-app-oper", kBase, without("application/operStatus")},
      {"platform-no-app-external", kBase, without("application/externalSoftwareManagement")},
      {"platform-no-app-version", kBase, without("application/installedVersion")},
      {"platform-no-app-hotfixes", kBase, without("application/hotfixes")},
      {"platform-app-admin-word", kBase, text("application/adminStatus", "bogus")},
      {"platform-app-oper-word", kBase, text("application/operStatus", "Stopped")},
      {"platform-app-external-word", kBase, text("application/externalSoftwareManagement", "True")},
      {"platform-empty-app-id", kBase, text("application/appInstanceId", "")},
      {"platform-hostile-app-id", kBase, text("application/appInstanceId", kHostile)},
      {"platform-megabyte-hotfixes", kBase, longText("application/hotfixes", kMegabyte)},
  };
}

Rows oddAppFailures() {
  constexpr auto kBase = BaseRequest::AppFailure;
  return {
      {"failure-with-action", kBase, command("appFailure.update")},
      {"failure-malformed-xml", kBase, malform},
      {"failure-empty-document", kBase, makeEmptyDocument},
      {"failure-wrong-root", kBase, rename},
      {"failure-nested", kBase, nest},
      {"failure-no-id", kBase, without("appInstanceId")},
      {"failure-two-ids", kBase, twice("appInstanceId")},
      {"failure-empty-id", kBase, text("appInstanceId", "")},
      {"failure-blank-id", kBase, allValues(addBlanks)},
      {"failure-unknown-id", kBase, text("appInstanceId", "nobody's")},
      {"failure-hostile-id", kBase, text("appInstanceId", kHostile)},
      {"failure-megabyte-id", kBase, longText("appInstanceId", kMegabyte)},
  };
}

Rows oddProgress() {
  constexpr auto kBase = BaseRequest::Progress;
  return {
      {"progress-wrong-action", kBase, command("commandProgress.get")},
      {"progress-malformed-xml", kBase, malform},
      {"progress-empty-document", kBase, makeEmptyDocument},
      {"progress-wrong-root", kBase, rename},
      {"progress-nested", kBase, nest},

      {"progress-no-id", kBase, without("appInstanceId")},
      {"progress-no-command", kBase, without("operCmd")},
      {"progress-no-percentage", kBase, without("operProgress")},
      {"progress-no-status", kBase, without("operStatus")},
      {"progress-no-code", kBase, without("code")},
      {"progress-no-ack", kBase, without("ack")},
      {"progress-no-error", kBase, without("errorDesc")},
      {"progress-empty-id", kBase, text("appInstanceId", "")},
      {"progress-empty-command", kBase, text("operCmd", "")},
      {"progress-empty-percentage", kBase, text("operProgress", "")},
      {"progress-empty-status", kBase, text("operStatus", "")},
      {"progress-empty-code", kBase, text("code", "")},
      {"progress-empty-ack", kBase, text("ack", "")},
      {"progress-blank-values", kBase, allValues(addBlanks)},

      {"progress-unknown-id", kBase, text("appInstanceId", "nobody's")},
      {"progress-hostile-id", kBase, text("appInstanceId", kHostile)},
      {"progress-unknown-command", kBase, text("operCmd", "polishApp")},
      {"progress-prefixed-command", kBase, text("operCmd", "app.startApp")},
      {"progress-two-prefixes", kBase, text("operCmd", "x.y.startApp")},
      {"progress-platform-start", kBase, text("appInstanceId", "-1")},
      {"progress-percentage-word", kBase, text("operProgress", "half")},
      {"progress-percentage-beyond", kBase, text("operProgress", "250")},
      {"progress-percentage-negative", kBase, text("operProgress", "-5")},
      {"progress-unknown-status", kBase, text("operStatus", "paused")},
      {"progress-capital-status", kBase, text("operStatus", "Running")},
      {"progress-code-word", kBase, text("code", "fine")},
      {"progress-capital-ack", kBase, text("ack", "True")},
      {"progress-ack-no", kBase, text("ack", "no")},
      {"progress-hostile-error", kBase, text("errorDesc", kHostile)},
      {"progress-megabyte-error", kBase, longText("errorDesc", kMegabyte)},
  };
}

Rows joined() {
  Rows all = oddHeartbeats();
  for (Rows rows : {oddPlatformDocuments(), oddPlatformGroups(), oddPlatformNumbers(), oddDisks(),
                    oddApplications(), oddAppFailures(), oddProgress()}) {
    std::move(rows.begin(), rows.end(), std::back_inserter(all));
  }
  return all;
}

// --- what they depart from

Element conformingPlatform(const BladePlatform& platform, BladePlatform::Duration time) {
  if (!platform.apps().empty()) {
    return platformDocument(platform, time);
  }
  BladePlatform other = platform;
  other.change({.id = appId(platform.slot(), 1)});
  return platformDocument(other, time);
}

Element conformingProgress(const BladePlatform& platform) {
  Progress progress;
  progress.app = appId(platform.slot(), 1);
  progress.command = "startApp";
  progress.percent = 50;
  progress.status = words().stateRunning;
  progress.ack = true;
  return progressDocument(progress);
}

}  // namespace

const std::vector<OddRequest>& oddRequests() {
  static const Rows kAll = joined();
  return kAll;
}

const OddRequest* oddRequestByName(std::string_view name) {
  const auto& all = oddRequests();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [name](const OddRequest& each) { return each.name == name; });
  return found == all.end() ? nullptr : &*found;
}

Draft conformingDraft(BaseRequest base, const BladePlatform& platform,
                      BladePlatform::Duration time) {
  Draft draft;
  draft.service = kServiceName;
  draft.contentType = words().contentType + ":" + words().contentVersion;
  switch (base) {
    case BaseRequest::Heartbeat:
      draft.command = words().heartbeatKey;
      draft.document = heartbeatDocument(1, 1);
      break;
    case BaseRequest::Platform:
      draft.command = words().platformInfoUpdateKey;
      draft.document = conformingPlatform(platform, time);
      break;
    case BaseRequest::AppFailure:
      draft.command = words().appFailureKey;
      draft.document = appFailureDocument(appId(platform.slot(), 1));
      break;
    case BaseRequest::Progress:
      draft.command = words().commandProgressUpdateKey;
      draft.document = conformingProgress(platform);
      break;
  }
  return draft;
}

msglyr::Message makeOddRequest(const OddRequest& odd, const BladePlatform& platform,
                               BladePlatform::Duration time, std::string_view messageId) {
  Draft draft = conformingDraft(odd.base, platform, time);
  odd.change(draft);
  msglyr::Message message = makeRequest(draft.command, messageId, platform.slot(),
                                        draft.bytes ? *draft.bytes : toXml(draft.document));
  message[0] = draft.service + "." + draft.command;
  message[1] = draft.contentType;
  message.parts().resize(draft.parts);
  return message;
}

}  // namespace sma
