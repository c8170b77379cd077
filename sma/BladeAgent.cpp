#include "sma/BladeAgent.h"

#include <algorithm>

#include "sma/Requests.h"

namespace sma {
namespace {

constexpr unsigned kStatusOk = 100;
constexpr unsigned kStatusRegisterAgain = 510;
constexpr unsigned kStatusNotRecognised = 511;

std::vector<FaultEvent> inOrder(std::vector<FaultEvent> faults) {
  std::stable_sort(faults.begin(), faults.end(),
                   [](const FaultEvent& a, const FaultEvent& b) { return a.at < b.at; });
  return faults;
}

BladeAgent::Settings ordered(BladeAgent::Settings settings) {
  settings.faults = inOrder(std::move(settings.faults));
  return settings;
}

}  // namespace

const char* stateName(BladeAgent::State state) {
  switch (state) {
    case BladeAgent::State::Unregistered:
      return "unregistered";
    case BladeAgent::State::Registered:
      return "registered";
    case BladeAgent::State::Refused:
      return "refused";
  }
  return "unknown";
}

BladeAgent::BladeAgent(Settings settings, TimePoint start)
    : settings_(ordered(std::move(settings))),
      backoff_(settings_.firstPause, settings_.mostPause, settings_.seed),
      token_(settings_.token),
      start_(start),
      nextSend_(start),
      silentUntil_(start),
      duplicateUntil_(start) {}

BladeAgent::TimePoint BladeAgent::due() const {
  TimePoint due =
      outstanding_ == Kind::None ? std::max(nextSend_, silentUntil_) : outstandingDeadline_;
  if (nextFault_ < settings_.faults.size()) {
    due = std::min(due, start_ + settings_.faults[nextFault_].at);
  }
  for (const Odd& odd : odd_) {
    due = std::min(due, odd.deadline);
  }
  return due;
}

void BladeAgent::onTime(TimePoint now, const Outbox& outbox) {
  expireOdd(now);
  expireOutstanding(now);
  while (nextFault_ < settings_.faults.size() && start_ + settings_.faults[nextFault_].at <= now) {
    startFault(settings_.faults[nextFault_++], now, outbox);
  }
  if (outstanding_ == Kind::None && now >= nextSend_ && now >= silentUntil_) {
    sendDue(now, outbox);
  }
}

void BladeAgent::startFault(const FaultEvent& event, TimePoint now, const Outbox& outbox) {
  switch (event.fault) {
    case Fault::Silence:
      silentUntil_ = now + event.lasts;
      return;
    case Fault::DuplicateBeats:
      duplicateUntil_ = now + event.lasts;
      return;
    case Fault::WrongToken:
    case Fault::EmptyToken:
      token_ = event.fault == Fault::WrongToken ? "foreign-" + std::to_string(settings_.seed) : "";
      state_ = State::Unregistered;
      nextSend_ = now;
      return;
    default:
      for (unsigned i = 0; i < event.times; ++i) {
        sendOdd(event.fault, now, outbox);
      }
  }
}

void BladeAgent::sendOdd(Fault fault, TimePoint now, const Outbox& outbox) {
  const std::string id = nextId();
  if (!outbox(makeFaultyRequest(fault, id, settings_.slot))) {
    ++counts_.unsent;
    return;
  }
  ++counts_.odd;
  odd_.push_back({id, now + settings_.oddWait});
}

void BladeAgent::sendDue(TimePoint now, const Outbox& outbox) {
  if (state_ == State::Registered) {
    sendBeat(now, outbox);
  } else {
    sendRegister(now, outbox);
  }
}

void BladeAgent::sendRegister(TimePoint now, const Outbox& outbox) {
  Registration registration;
  registration.slot = settings_.slot;
  registration.ip = settings_.ip;
  registration.port = settings_.port;
  registration.token = token_;
  registration.osVersion = "2.4.1";
  registration.imageName = "platform-2.4.1.img";
  registration.imageSize = 412'316'860;
  const std::string id = nextId();
  if (!outbox(makeRequest("register", id, settings_.slot, registerDocument(registration)))) {
    ++counts_.unsent;
    nextSend_ = now + backoff_.next();
    return;
  }
  ++counts_.registers;
  outstanding_ = Kind::Register;
  outstandingId_ = id;
  outstandingDeadline_ = now + settings_.registerWait;
}

void BladeAgent::sendBeat(TimePoint now, const Outbox& outbox) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(settings_.beat);
  const std::string document =
      heartbeatDocument(beatCount_ + 1, static_cast<std::uint32_t>(seconds.count()));
  const std::string id = nextId();
  if (!outbox(makeRequest("heartbeat", id, settings_.slot, document))) {
    ++counts_.unsent;
    nextSend_ = now + backoff_.next();
    return;
  }
  ++beatCount_;
  ++counts_.beats;
  outstanding_ = Kind::Beat;
  outstandingId_ = id;
  outstandingDeadline_ = now + settings_.beatWait;
  // From beat to beat, so that the rate does not drift by the time that a reply takes. Beats that
  // a pause swallowed are not made up for.
  nextSend_ += settings_.beat;
  if (nextSend_ < now) {
    nextSend_ = now + settings_.beat;
  }
  if (now < duplicateUntil_) {
    const std::string again = nextId();
    if (outbox(makeRequest("heartbeat", again, settings_.slot, document))) {
      ++counts_.odd;
      odd_.push_back({again, now + settings_.oddWait});
    }
  }
}

void BladeAgent::expireOdd(TimePoint now) {
  counts_.oddUnanswered +=
      std::erase_if(odd_, [now](const Odd& odd) { return odd.deadline <= now; });
}

void BladeAgent::expireOutstanding(TimePoint now) {
  if (outstanding_ == Kind::None || now < outstandingDeadline_) {
    return;
  }
  ++counts_.unanswered;
  outstanding_ = Kind::None;
  nextSend_ = now + backoff_.next();
}

void BladeAgent::onMessage(const msglyr::Message& message, TimePoint now) {
  Reply reply;
  if (!parseReply(message, reply)) {
    ++counts_.strays;
    return;
  }
  const bool awaited = outstanding_ != Kind::None && reply.messageId == outstandingId_;
  if (!awaited && !takeOdd(reply.messageId)) {
    ++counts_.strays;
    return;
  }
  ++counts_.replies;
  ++counts_.statuses[reply.status];
  lastStatus_ = reply.status;
  lastMessage_ = reply.message;
  if (!awaited) {
    return;
  }
  const Kind kind = outstanding_;
  outstanding_ = Kind::None;
  if (kind == Kind::Register) {
    gatewayKey_ = reply.zedPubKey;
    onRegisterReply(reply.status, reply.token, now);
  } else {
    onBeatReply(reply.status, now);
  }
}

bool BladeAgent::takeOdd(const std::string& id) {
  return std::erase_if(odd_, [&id](const Odd& odd) { return odd.id == id; }) != 0;
}

void BladeAgent::onRegisterReply(unsigned status, const std::string& token, TimePoint now) {
  if (status == kStatusOk) {
    state_ = State::Registered;
    token_ = token;
    backoff_.reset();
    // The first beats of blades that registered together are spread over one interval.
    nextSend_ = now + settings_.beat * (1 + settings_.seed % 16) / 16;
    return;
  }
  state_ = status == kStatusNotRecognised ? State::Refused : State::Unregistered;
  nextSend_ = now + backoff_.next();
}

void BladeAgent::onBeatReply(unsigned status, TimePoint now) {
  if (status == kStatusOk) {
    backoff_.reset();
    return;
  }
  if (status == kStatusRegisterAgain || status == kStatusNotRecognised) {
    state_ = status == kStatusRegisterAgain ? State::Unregistered : State::Refused;
    nextSend_ = now + backoff_.next();
  }
}

std::string BladeAgent::nextId() {
  return std::to_string(settings_.slot) + "-" + std::to_string(++sequence_);
}

}  // namespace sma
