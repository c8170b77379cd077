#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "dme/Engine.h"
#include "framework/proc/DmeLink.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "tests/dme/support/Acknowledged.h"
#include "tests/dme/support/ServiceStandIn.h"

// Orders jobs for eight slots without end, with a gateway of its own that answers in every way
// there is, and writes to standard output what was ordered and what the gateway was given. Ends by
// being killed. Arguments: state directory, number of the round; in round 0 nothing is ordered, and
// the program ends when every job is over or unknown.

namespace {

using dme_test::JobRecord;
using Stage = zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe;

constexpr std::uint32_t kSlots = 8;
constexpr unsigned kMostWaiting = 16;

void write(JobRecord::Kind kind, std::uint64_t id) {
  const JobRecord record{kind, static_cast<std::uint32_t>(id)};
  if (::write(STDOUT_FILENO, &record, sizeof record) != sizeof record) {
    ::_exit(3);
  }
}

class Gateway {
 public:
  explicit Gateway(const std::string& endPoint) {
    link_.open(endPoint,
               [this](const unsigned char* bytes, std::size_t size) { take(bytes, size); });
  }
  void send(const std::string& bytes) {
    base::OBioStream stream;
    stream.loopWrite(reinterpret_cast<const unsigned char*>(bytes.data()),
                     static_cast<unsigned>(bytes.size()));
    link_.send(stream, true);
  }

 private:
  void take(const unsigned char* bytes, std::size_t size) {
    const auto stage = method::decodeCall<Stage>(bytes, size);
    if (stage == nullptr) {
      return;
    }
    const std::uint64_t id = std::get<3>(stage->in);
    write(JobRecord::kGiven, id);
    switch (id % 16) {
      case 0:
        if (++attempts_[id] < 2) {
          write(JobRecord::kNotDelivered, id);
          fail(*stage, 580);
          return;
        }
        break;
      case 1:
      case 9:
        fail(*stage, 578);
        return;
      case 2:
      case 10:
        return;  // no answer
      case 3:
      case 11:
        fail(*stage, 1003);
        return;
      default:
        break;
    }
    base::OBioStream answer;
    proc::writeSuccess(answer, *stage);
    link_.send(answer, true);
  }
  void fail(const Stage& stage, std::uint32_t code) {
    link_.send(method::encodeFailure(stage, {1, code, "as it is told"}), true);
  }

  std::map<std::uint64_t, unsigned> attempts_;  // used by the link's thread alone
  proc::DmeLink link_;                          // last: its thread uses the rest
};

bool isAnyUnderWay(const dme::Engine& engine) {
  dme::JobFilter filter;
  filter.states = {dme::JobState::kAccepted, dme::JobState::kSending, dme::JobState::kRunning};
  return !engine.jobs(filter).empty();
}

void pauseBriefly() {
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

int main(int argc, char** argv) {
  using serviceorchapi::ValidateBladeStateMe;
  if (argc != 3) {
    return 2;
  }
  auto engine = dme::Engine::open({argv[1], "", "inproc://job-child", {}});
  if (!engine || !(*engine)->start()) {
    return 1;
  }
  Gateway gateway((*engine)->endPoint());
  for (std::uint32_t slot = 1; slot <= kSlots; ++slot) {
    for (int i = 0; i < 2; ++i) {
      gateway.send(dme_test::ServiceStandIn::encode<ValidateBladeStateMe>({slot, "1.2", ""}));
    }
  }
  while (!(*engine)->slot(kSlots) || (*engine)->slot(kSlots)->admission != sd::Admission::kValid) {
    pauseBriefly();
  }
  const bool isLast = std::string(argv[2]) == "0";
  std::atomic<unsigned> waiting{0};
  for (std::uint32_t i = 0; !isLast || isAnyUnderWay(**engine); ++i) {
    if (isLast || waiting >= kMostWaiting) {
      pauseBriefly();
      continue;
    }
    dme::JobOrder order;
    order.verb = dme::JobVerb::kLogLevel;
    order.slot = i % kSlots + 1;
    order.level = "error";
    order.finishWithin = std::chrono::milliseconds(20);
    ++waiting;
    (*engine)->order(order, [&waiting](const dme::Granted<dme::JobView>& job) {
      if (job) {
        write(JobRecord::kOrdered, job->id);
      }
      --waiting;
    });
    if (i % kSlots == 0) {
      pauseBriefly();
    }
  }
  (*engine)->stop();
  return 0;
}
