#include <string>

#include "bench/load/Load.h"
#include "framework/msglyr/DealerSet.h"
#include "sma/messages/Requests.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

const std::string kAccepted = "100";
constexpr std::chrono::seconds kPatience{5};

class RequestLoad {
 public:
  RequestLoad(const Plan& plan, const Request& request)
      : plan_(plan), request_(request), started_(slots()) {
    for (unsigned i = 0; i < plan.shape.clients; ++i) {
      clients_.add(plan.endPoint);
      messages_.push_back(sma::makeRequest(request.command, "", i % kLoadSlots + 1, ""));
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
    result_.refused = 0;
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
    msglyr::Message& message = messages_[client];
    message[2] = std::to_string(slot);
    message[4] = request_.documents[sent_++ % request_.documents.size()];
    started_[slot] = Clock::now();
    return clients_.send(client, message);
  }

  bool start() {
    const Clock::time_point giveUp = Clock::now() + kPatience;
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
        result_.failure = "no reply in time";
        return;
      }
    }
  }

  std::size_t poll() {
    return clients_.poll(kPatience, [this](std::size_t, const std::string&,
                                           msglyr::Message& reply) { onReply(reply); });
  }

  void onReply(const msglyr::Message& reply) {
    if (reply.getnumParts() != 5) {
      result_.failure = "reply of a wrong form";
      return;
    }
    const std::size_t slot = std::stoul(reply[2]);
    const auto took = Clock::now() - started_.at(slot);
    result_.nanos.push_back(static_cast<std::uint32_t>(took.count()));
    ++result_.requests;
    result_.refused += reply[3] == kAccepted ? 0 : 1;
    if (!send(slot)) {
      result_.failure = "connection lost";
    }
  }

  const Plan& plan_;
  const Request& request_;
  msglyr::DealerSet clients_;
  std::vector<msglyr::Message> messages_;  // by client
  std::vector<Clock::time_point> started_;
  std::size_t sent_ = 0;
  Result result_;
};

}  // namespace

Result loadRequests(const Plan& plan, const Request& request) {
  return RequestLoad(plan, request).run();
}

Result loadHeartbeats(const Plan& plan) {
  static const Request heartbeat{
      "heartbeat", {"<heartbeatRequest><count>4711</count><timer>30</timer></heartbeatRequest>"}};
  return loadRequests(plan, heartbeat);
}

}  // namespace load
