#include "dme/running/GatewayCalls.h"

#include <utility>

#include "framework/proc/Cookie.h"

namespace dme {

namespace {

std::string keyOf(const base::Buffer& cookie) {
  return {reinterpret_cast<const char*>(cookie.data()), cookie.size()};
}

}  // namespace

GatewayCalls::GatewayCalls(ObjectStore& store, const Chassis& chassis, const TimeSetting& time,
                           Send send)
    : stages_(store, chassis, time), send_(std::move(send)) {}

bool GatewayCalls::heard(PeerId peer, const proc::Address& from) {
  if (gateway_ && gateway_->peer == peer) {
    return false;
  }
  gateway_ = {peer, {from.sender, from.senderInstance, from.service, from.instance}};
  return true;
}

std::shared_ptr<const GatewayCalls::Call> GatewayCalls::make(Job& job) {
  proc::makeCookie(job.cookie);
  byCookie_.emplace(keyOf(job.cookie), job.view.id);
  return std::make_shared<const Call>(
      Call{gateway_->peer, stages_.encode(job, gateway_->address, job.cookie)});
}

std::optional<std::uint64_t> GatewayCalls::jobOf(const base::Buffer& cookie) const {
  const auto found = byCookie_.find(keyOf(cookie));
  return found != byCookie_.end() ? std::optional(found->second) : std::nullopt;
}

void GatewayCalls::forget(Job& job) {
  byCookie_.erase(keyOf(job.cookie));
  job.cookie = base::Buffer();
}

}  // namespace dme
