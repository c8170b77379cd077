#include "sma/agent/Membership.h"

#include <utility>

#include "sma/platform/Platform.h"

namespace sma {
namespace {

constexpr unsigned kStatusOk = 100;
constexpr unsigned kStatusRegisterAgain = 510;
constexpr unsigned kStatusNotRecognised = 511;

}  // namespace

const char* stateName(Membership::State state) {
  switch (state) {
    case Membership::State::Unregistered:
      return "unregistered";
    case Membership::State::Registered:
      return "registered";
    case Membership::State::Refused:
      return "refused";
  }
  return "unknown";
}

Membership::Membership(Settings settings, std::uint32_t slot, std::uint64_t seed, TimePoint start)
    : settings_(std::move(settings)),
      slot_(slot),
      seed_(seed),
      backoff_(settings_.firstPause, settings_.mostPause, seed),
      token_(settings_.token),
      next_(start) {}

// --- what it sends

Membership::Request Membership::request() const {
  if (isRegistered()) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(settings_.beat);
    return {RequestKind::Beat,
            heartbeatDocument(beats_ + 1, static_cast<std::uint32_t>(seconds.count())),
            settings_.beatWait};
  }
  Registration registration;
  registration.slot = slot_;
  registration.ip = settings_.ip;
  registration.port = settings_.port;
  registration.token = token_;
  registration.osVersion = kPlatformRelease;
  registration.imageName = "platform-" + registration.osVersion + ".img";
  registration.imageSize = 412'316'860;
  return {RequestKind::Register, registerDocument(registration), settings_.registerWait};
}

void Membership::onSent(TimePoint now) {
  isUnderWay_ = true;
  if (!isRegistered()) {
    registeredWith_ = token_;
    return;
  }
  ++beats_;
  // From beat to beat, so that the rate does not drift by the time that a reply takes. Beats that
  // a pause swallowed are not made up for.
  next_ += settings_.beat;
  if (next_ < now) {
    next_ = now + settings_.beat;
  }
}

void Membership::onFailure(TimePoint now) {
  isUnderWay_ = false;
  backOff(now);
}

// --- what comes back

bool Membership::onRegisterReply(const Reply& reply, TimePoint now) {
  isUnderWay_ = false;
  gatewayKey_ = reply.zedPubKey;
  if (registeredWith_ != token_) {  // the verdict is on a token that the blade no longer holds
    next_ = now;
    return false;
  }
  if (reply.status == kStatusOk) {
    state_ = State::Registered;
    backoff_.reset();
    // The first beats of blades that registered together are spread over one interval.
    next_ = now + settings_.beat * (1 + seed_ % 16) / 16;
    return true;
  }
  state_ = reply.status == kStatusNotRecognised ? State::Refused : State::Unregistered;
  backOff(now);
  return false;
}

void Membership::onBeatReply(unsigned status, TimePoint now) {
  isUnderWay_ = false;
  onOtherReply(status, now);
}

void Membership::onOtherReply(unsigned status, TimePoint now) {
  if (status == kStatusOk) {
    backoff_.reset();
    return;
  }
  if (!isRegistered()) {
    return;
  }
  if (status == kStatusRegisterAgain || status == kStatusNotRecognised) {
    state_ = status == kStatusRegisterAgain ? State::Unregistered : State::Refused;
    backOff(now);
  }
}

void Membership::restart(TimePoint at) {
  state_ = State::Unregistered;
  next_ = at;
}

void Membership::forget(TimePoint at) {
  isUnderWay_ = false;
  backoff_.reset();
  restart(at);
}

}  // namespace sma
