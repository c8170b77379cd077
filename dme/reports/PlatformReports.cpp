#include "dme/reports/PlatformReports.h"

#include <string>

#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"

namespace dme {

namespace {

mo::Dn diskBelow(const mo::Dn& monitor, std::size_t place) {
  return monitor.child("disk-" + std::to_string(place));
}

template <class Me>
void put(ObjectStore& store, const mo::Dn& dn, const Me& report, std::uint64_t now) {
  Object& object = store.create<Me>(dn);
  const bool hasChanged = store.assign(object, report, mo::kReportGroups);
  store.observe(object, Me::kObservedAt, now, hasChanged);
}

}  // namespace

Result<void> PlatformReports::record(std::uint32_t slot, const method::Config& monitor,
                                     const method::ConfigSet& disks, std::uint64_t now) {
  const Result<Object*> place = chassis_.slotOrReason(slot);
  if (!place) {
    return tl::unexpected<Error>(place.error());
  }
  sm::MonitorMo reported;
  if (!takeReport(monitor, reported, counters_)) {
    return failure("class " + std::to_string(monitor.classId()) + " is no monitor");
  }
  const mo::Dn monitorDn = (*place)->dn().child("monitor");
  put(store_, monitorDn, reported, now);

  std::size_t kept = 0;
  for (const method::Config& config : disks.configs()) {
    sm::DiskFileSystemMo disk;
    if (kept == kMostDisks) {
      ++counters_.surplusDisks;
    } else if (!takeReport(config, disk, counters_)) {
      ++counters_.unfitObjects;
    } else {
      put(store_, diskBelow(monitorDn, ++kept), disk, now);
    }
  }
  for (std::size_t gone = kept + 1; store_.find(diskBelow(monitorDn, gone)) != nullptr; ++gone) {
    store_.remove(diskBelow(monitorDn, gone));
  }
  return {};
}

}  // namespace dme
