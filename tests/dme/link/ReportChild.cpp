#include <unistd.h>

#include <cstdint>
#include <string>
#include <thread>

#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/MethodServer.h"
#include "dme/store/ObjectStore.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/Acknowledged.h"
#include "tests/dme/support/ServiceStandIn.h"

// Reports of four blades without end, and writes to standard output which of them are acknowledged
// as they are. Every value carries its report's number. Ends by being killed. Arguments: state
// directory, number of the first report.

namespace {

using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateAppInstancesMe;

constexpr std::uint32_t kSlots = 4;

std::string platformReport(std::uint32_t slot, std::uint32_t number) {
  const std::string text = std::to_string(number);
  sm::MonitorMo monitor;
  monitor.set(sm::MonitorMo::kOsVersion, text);
  monitor.set(sm::MonitorMo::kMemTotal, number);
  if (number % 2 == 0) {
    monitor.set(sm::MonitorMo::kSysUptime, text);
  }
  method::ConfigSet disks;
  for (std::uint32_t i = 0; i < number % 7; ++i) {
    sm::DiskFileSystemMo disk;
    disk.set(sm::DiskFileSystemMo::kDiskName, text);
    disks.append(disk.toConfig());
  }
  return dme_test::ServiceStandIn::encode<UpdatePlatformInfoMe>({slot, monitor.toConfig(), disks});
}

std::string instancesReport(std::uint32_t slot, std::uint32_t number) {
  method::ConfigSet instances;
  for (std::uint32_t i = 0; i <= number % 5; ++i) {
    sm::AppInstanceMo instance;
    // Mostly the instances of the report before, and one that is new.
    instance.set(sm::AppInstanceMo::kAppInstanceId, std::to_string(i == 4 ? number : i));
    instance.set(sm::AppInstanceMo::kInstalledVersion, std::to_string(number));
    instances.append(instance.toConfig());
  }
  return dme_test::ServiceStandIn::encode<ValidateAppInstancesMe>({slot, instances});
}

// What an answer is about travels as the number of the peer.
std::uint64_t peerOf(const dme_test::AcknowledgedReport& report) {
  return (std::uint64_t{report.number} << 32U) | (report.slot << 1U) | report.isPlatform;
}

bool acknowledge(std::uint64_t peer) {
  const auto low = static_cast<std::uint32_t>(peer);
  const dme_test::AcknowledgedReport report{low >> 1U, static_cast<std::uint32_t>(peer >> 32U),
                                            low & 1U};
  return ::write(STDOUT_FILENO, &report, sizeof report) == sizeof report;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  auto store = dme::ObjectStore::open(argv[1]);
  if (!store) {
    return 1;
  }
  dme::Chassis chassis(**store, std::nullopt);
  for (std::uint32_t slot = 1; slot <= kSlots; ++slot) {
    chassis.slotForBlade(slot);
  }
  dme::BladeMonitor monitor{dme::BladeMonitor::Settings{}};
  auto number = static_cast<std::uint32_t>(std::stoul(argv[2]));
  dme::MethodServer server(
      **store, chassis, monitor,
      [](std::uint64_t peer, const base::OBioStream&, bool) { return acknowledge(peer); },
      [&number] { return std::uint64_t{number}; });
  for (;; ++number) {
    const std::uint32_t slot = number % kSlots + 1;
    const bool isPlatform = number / kSlots % 2 == 0;
    const std::string call =
        isPlatform ? platformReport(slot, number) : instancesReport(slot, number);
    server.handle(peerOf({slot, number, isPlatform ? 1U : 0U}),
                  reinterpret_cast<const unsigned char*>(call.data()), call.size(), {});
    if (number % 16 == 0) {
      std::this_thread::yield();  // commits of one and of many transactions
    }
  }
}
