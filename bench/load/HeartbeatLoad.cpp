#include <string>

#include "bench/load/Load.h"
#include "framework/msglyr/DealerSet.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

const std::string kBody =
    "<heartbeatRequest><count>4711</count><timer>30</timer></heartbeatRequest>";

class HeartbeatLoad {
 public:
  explicit HeartbeatLoad(const Plan& plan) : plan_(plan), started_(slots()) {
    for (unsigned i = 0; i < plan.shape.clients; ++i) {
      clients_.add(plan.endPoint);
    }
  }

  Result run() {
    if (!start()) {
      result_.failure = "no connection";
      return std::move(result_);
    }
    runUntil(Clock::now() + plan_.warmUp);
    result_.nanos.clear();
    result_.nanos.reserve(1 << 20);
    result_.requests = 0;
    const double cpuBefore = cpuMicros(plan_.serverClock);
    const Clock::time_point begin = Clock::now();
    runUntil(begin + plan_.measured);
    result_.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    result_.serverCpuMicros =
        (cpuMicros(plan_.serverClock) - cpuBefore) / static_cast<double>(result_.requests);
    return std::move(result_);
  }

 private:
  std::size_t slots() const { return std::size_t{plan_.shape.clients} * plan_.shape.outstanding; }

  // The number of the request is its slot in started_; the client's blade is its index.
  bool send(std::size_t slot) {
    const std::size_t client = slot / plan_.shape.outstanding;
    msglyr::Message message(5);
    message[0] = "serviceOrchAG.heartbeat";
    message[1] = "nox-xml:1";
    message[2] = std::to_string(slot);
    message[3] = "sma_slot" + std::to_string(client % kHeartbeatSlots + 1);
    message[4] = kBody;
    started_[slot] = Clock::now();
    return clients_.send(client, message);
  }

  bool start() {
    const Clock::time_point giveUp = Clock::now() + std::chrono::seconds(5);
    for (std::size_t slot = 0; slot < slots(); ++slot) {
      while (!send(slot)) {
        if (Clock::now() > giveUp) {
          return false;
        }
        poll();
      }
    }
    return true;
  }

  void runUntil(Clock::time_point end) {
    while (Clock::now() < end) {
      if (poll() == 0) {
        result_.failure = "no reply within a second";
        return;
      }
    }
  }

  std::size_t poll() {
    return clients_.poll(std::chrono::seconds(1),
                         [this](std::size_t, const std::string&, msglyr::Message& reply) {
                           if (reply.getnumParts() != 5) {
                             result_.failure = "reply of a wrong form";
                             return;
                           }
                           const std::size_t slot = std::stoul(reply[2]);
                           const auto took = Clock::now() - started_.at(slot);
                           result_.nanos.push_back(static_cast<std::uint32_t>(took.count()));
                           ++result_.requests;
                           if (!send(slot)) {
                             result_.failure = "connection lost";
                           }
                         });
  }

  const Plan& plan_;
  msglyr::DealerSet clients_;
  std::vector<Clock::time_point> started_;
  Result result_;
};

}  // namespace

Result loadHeartbeats(const Plan& plan) {
  return HeartbeatLoad(plan).run();
}

}  // namespace load
