#include <unistd.h>

#include <cstdint>
#include <string>
#include <thread>
#include <tuple>

#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/link/MethodServer.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/ChassisFile.h"
#include "model/serviceorchapi/Methods.h"
#include "tests/dme/support/Acknowledged.h"
#include "tests/dme/support/ServiceStandIn.h"

// Registers blades without end, and writes to standard output what each is told as it is told.
// Ends by being killed. Arguments: state directory, number of the first slot.
int main(int argc, char** argv) {
  using serviceorchapi::ValidateBladeStateMe;
  if (argc != 3) {
    return 2;
  }
  auto store = dme::ObjectStore::open(argv[1]);
  if (!store) {
    return 1;
  }
  dme::Chassis chassis(**store, std::nullopt);
  dme::BladeMonitor monitor{dme::BladeMonitor::Settings{}};
  dme::MethodServer server(
      **store, chassis, monitor, [](std::uint64_t peer, const base::OBioStream& bytes, bool) {
        const auto answer = method::decodeAnswer<ValidateBladeStateMe>(bytes.data(), bytes.size());
        const std::string token = std::get<0>(answer->me->out).str();
        dme_test::Acknowledged record{static_cast<std::uint32_t>(peer), {}};
        token.copy(record.token, sizeof record.token);
        return ::write(STDOUT_FILENO, &record, sizeof record) == sizeof record;
      });
  for (auto i = static_cast<std::uint32_t>(std::stoul(argv[2]));; ++i) {
    // Mostly slots without a token, and every third time one that got its token lately.
    const std::uint32_t slot = (i % 3 == 2 ? i - 2 : i) % base::kHighestSlot + 1;
    const std::string call =
        dme_test::ServiceStandIn::encode<ValidateBladeStateMe>({slot, std::to_string(i), ""});
    server.handle(slot, reinterpret_cast<const unsigned char*>(call.data()), call.size(), {});
    if (i % 8 == 0) {
      std::this_thread::yield();  // commits of one and of many transactions
    }
  }
}
