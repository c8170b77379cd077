#include "sma/messages/ReportDocuments.h"

#include <chrono>
#include <cstdio>

#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::names;
using zan_serviceOrchAG::words;

std::string requestRoot(const std::string& command) {
  return command + "Request";
}

/// As "17 days 04:05:06".
std::string upTimeText(BladePlatform::Duration upTime) {
  using std::chrono::duration_cast;
  const auto days = duration_cast<std::chrono::days>(upTime);
  const std::chrono::hh_mm_ss clock(duration_cast<std::chrono::seconds>(upTime - days));
  char text[64];
  std::snprintf(text, sizeof text, "%d days %02d:%02d:%02d", static_cast<int>(days.count()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

std::string loadText(double load) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", load);
  return text;
}

void addCpu(Element& root, const LoadAverages& load) {
  Element& cpu = root.add(names().cpu.view());
  cpu.add(names().minus1.view(), loadText(load.minus1));
  cpu.add(names().minus5.view(), loadText(load.minus5));
  cpu.add(names().minus15.view(), loadText(load.minus15));
}

void addMemory(Element& root, const MemoryUse& memory, std::uint64_t appsKb) {
  Element& now = root.add(names().memory.view()).add(names().minus1.view());
  now.add(names().memTotalKB.view(), std::to_string(memory.totalKb));
  now.add(names().memFreeKB.view(), std::to_string(memory.freeKb));
  now.add(names().memUsedKB.view(), std::to_string(memory.usedKb));
  root.add(names().appsMemory.view())
      .add(names().currentSnapshot.view())
      .add(names().memTotalKB.view(), std::to_string(appsKb));
}

void addDisks(Element& root, const std::vector<DiskUse>& disks) {
  Element& now = root.add(names().diskFilesystem.view()).add(names().minus1.view());
  for (const DiskUse& disk : disks) {
    Element& each = now.add(names().disk.view());
    each.add(names().diskName.view(), disk.name);
    each.add(names().diskTotalKB.view(), std::to_string(disk.totalKb));
    each.add(names().diskFreeKB.view(), std::to_string(disk.freeKb));
    each.add(names().diskUsedKB.view(), std::to_string(disk.usedKb));
    each.add(names().diskMountPoint.view(), disk.mountPoint);
  }
}

void addApp(Element& root, const AppInstance& app) {
  Element& each = root.add(names().application.view());
  each.add(names().appInstanceId.view(), app.id);
  each.add(names().adminStatus.view(),
           app.enabled ? names().enable.view() : names().disable.view());
  each.add(names().operStatus.view(), app.running ? words().stateRunning : words().stateStopped);
  each.add(names().externalSoftwareManagement.view(), app.external ? "true" : "false");
  each.add(names().installedVersion.view(), app.version);
  each.add(names().hotfixes.view(), app.hotfixes);
}

}  // namespace

Element platformDocument(const BladePlatform& platform, BladePlatform::Duration time) {
  Element root{requestRoot(words().platformInfoUpdateName), "", {}};
  root.add(names().platformOsVersion.view(), kPlatformRelease);
  root.add(names().sysuptime.view(), upTimeText(platform.upTime(time)));
  addCpu(root, platform.load(time));
  addMemory(root, platform.memory(time), platform.appsMemoryKb(time));
  addDisks(root, platform.disks(time));
  for (const AppInstance& app : platform.apps()) {
    addApp(root, app);
  }
  return root;
}

Element appFailureDocument(const std::string& app) {
  Element root{requestRoot(words().appFailureName), "", {}};
  root.add(names().appInstanceId.view(), app);
  return root;
}

Element progressDocument(const Progress& progress) {
  Element root{requestRoot(words().commandProgressUpdateName), "", {}};
  root.add(names().appInstanceId.view(), progress.app);
  root.add(names().operCmd.view(), progress.command);
  root.add(names().operProgress.view(), std::to_string(progress.percent));
  root.add(names().operStatus.view(), progress.status);
  root.add(names().code.view(), std::to_string(progress.code));
  root.add(names().ack.view(), progress.ack ? "true" : "false");
  root.add(names().errorDesc.view(), progress.error);
  return root;
}

}  // namespace sma
