#include "sma/agent/BladeAgent.h"

#include <algorithm>
#include <utility>

#include "serviceOrchAG/svc/Vocabulary.h"
#include "sma/base/Overloaded.h"
#include "sma/messages/Requests.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;

BladeAgent::Settings ordered(BladeAgent::Settings settings) {
  std::stable_sort(settings.events.begin(), settings.events.end(),
                   [](const Event& a, const Event& b) { return a.at < b.at; });
  return settings;
}

const std::string& commandOf(RequestKind kind) {
  switch (kind) {
    case RequestKind::Register:
      return words().registerKey;
    case RequestKind::Beat:
      return words().heartbeatKey;
    case RequestKind::Report:
      return words().platformInfoUpdateKey;
    case RequestKind::Failure:
      return words().appFailureKey;
    default:
      return words().commandProgressUpdateKey;
  }
}

}  // namespace

BladeAgent::BladeAgent(Settings settings, TimePoint start)
    : settings_(ordered(std::move(settings))),
      platform_(settings_.seed, settings_.slot, settings_.apps),
      start_(start),
      membership_(settings_.membership, settings_.slot, settings_.seed, start),
      reporter_(settings_.reports, platform_, start),
      desk_(settings_.commands, platform_, reporter_, settings_.journal),
      silentUntil_(start),
      duplicateUntil_(start),
      judge_(settings_.events) {
  for (const AppChange& change : settings_.appChanges) {
    platform_.change(change);
  }
  reporter_.onEnd([this](const Operation& operation, TimePoint now) {
    if (operation.plan().succeeds) {
      onWorkEnd(operation, now);
    }
  });
}

// --- what it does not forget

void BladeAgent::note(const Memory& memory) {
  if (settings_.journal) {
    settings_.journal(memory);
  }
  recall(memory);
}

void BladeAgent::recall(const Memory& memory) {
  std::visit(Overloaded{
                 [this](const TokenKept& kept) { membership_.keep(kept.token); },
                 [this](const AppChanged& changed) { platform_.change(changed.change); },
                 [this](const DiskFormatted& formatted) {
                   platform_.removeApps();
                   membership_.keep(formatted.token);
                 },
                 [this](const auto& other) { desk_.recall(other); },
             },
             memory);
}

BladeAgent::TimePoint BladeAgent::due() const {
  TimePoint due = std::min(desk_.due(), outstanding_.due());
  due = std::min(due, std::max(membership_.due(), silentUntil_));
  const bool registered = membership_.isRegistered();
  due = std::min(due, std::max(reporter_.due(registered), silentUntil_));
  if (registered && !held_.empty()) {
    due = TimePoint::min();
  }
  if (nextEvent_ < settings_.events.size()) {
    due = std::min(due, start_ + settings_.events[nextEvent_].at);
  }
  return due;
}

void BladeAgent::onTime(TimePoint now, const Outbox& outbox) {
  if (const auto lasts = desk_.death(now)) {
    die(now, *lasts);
  }
  for (const Outstanding::Request& late : outstanding_.takeLate(now)) {
    giveUp(late, now);
  }
  while (nextEvent_ < settings_.events.size() && start_ + settings_.events[nextEvent_].at <= now) {
    start(nextEvent_++, now, outbox);
  }
  if (maySend(now) && now >= membership_.due()) {
    registerOrBeat(now, outbox);
  }
  for (const std::size_t event : std::exchange(held_, {})) {
    start(event, now, outbox);
  }
  if (maySend(now)) {
    sendReports(now, outbox);
  }
}

// --- what happens to the blade

void BladeAgent::start(std::size_t event, TimePoint now, const Outbox& outbox) {
  std::visit([&](const auto& what) { begin(what, event, now, outbox); },
             settings_.events[event].what);
}

void BladeAgent::begin(const ChangeToken& what, std::size_t /*event*/, TimePoint now,
                       const Outbox& /*outbox*/) {
  membership_.keep(what.empty ? "" : "foreign-" + std::to_string(settings_.seed));
  membership_.restart(now);
}

void BladeAgent::begin(const Silence& what, std::size_t /*event*/, TimePoint now,
                       const Outbox& /*outbox*/) {
  silentUntil_ = now + what.lasts;
}

void BladeAgent::begin(const DuplicateBeats& what, std::size_t /*event*/, TimePoint now,
                       const Outbox& /*outbox*/) {
  duplicateUntil_ = now + what.lasts;
}

void BladeAgent::begin(const SendOdd& what, std::size_t event, TimePoint now,
                       const Outbox& outbox) {
  // A register that was sent shows that there is a connection.
  const bool ready =
      what.early ? counts().sent(RequestKind::Register) > 0 : membership_.isRegistered();
  if (!ready) {
    held_.push_back(event);
    return;
  }
  const auto time = std::chrono::duration_cast<Duration>(now - start_);
  for (unsigned i = 0; i < what.times; ++i) {
    post(RequestKind::Odd, makeOddRequest(*what.request, platform_, time, nextId()),
         now + oddWait(event), event, outbox);
  }
}

void BladeAgent::begin(const SendReport& /*what*/, std::size_t event, TimePoint /*now*/,
                       const Outbox& /*outbox*/) {
  reporter_.report(event);
}

void BladeAgent::begin(const FailApp& what, std::size_t event, TimePoint now,
                       const Outbox& /*outbox*/) {
  reporter_.failApp(what.app.in(settings_.slot), what.lasts, now, event);
}

void BladeAgent::begin(const RunOperation& what, std::size_t event, TimePoint now,
                       const Outbox& /*outbox*/) {
  OperationPlan plan = what.plan;
  plan.app = what.app.in(settings_.slot);
  reporter_.run(plan, now, event);
}

// --- sending

bool BladeAgent::post(RequestKind kind, const msglyr::Message& message, TimePoint deadline,
                      EventIndex event, const Outbox& outbox) {
  if (!outbox(message)) {
    outstanding_.countUnsent();
    judge_.judgeUnsent(event);
    return false;
  }
  outstanding_.add({message[2], kind, deadline, event});
  return true;
}

void BladeAgent::registerOrBeat(TimePoint now, const Outbox& outbox) {
  const Membership::Request request = membership_.request();
  const auto message = [&] {
    return makeRequest(commandOf(request.kind), nextId(), settings_.slot, request.document);
  };
  if (!post(request.kind, message(), now + request.wait, std::nullopt, outbox)) {
    membership_.onFailure(now);
    return;
  }
  membership_.onSent(now);
  if (request.kind == RequestKind::Beat && now < duplicateUntil_) {
    post(RequestKind::Odd, message(), now + settings_.oddWait, std::nullopt, outbox);
  }
}

void BladeAgent::sendReports(TimePoint now, const Outbox& outbox) {
  while (auto request = reporter_.next(now, membership_.isRegistered())) {
    sendReport(*request, now, outbox);
  }
}

void BladeAgent::sendReport(const Reporter::Request& request, TimePoint now, const Outbox& outbox) {
  const auto message =
      makeRequest(commandOf(request.kind), nextId(), settings_.slot, request.document);
  const auto wait =
      request.kind == RequestKind::QuietProgress ? oddWait(request.event) : settings_.reportWait;
  const bool sent = post(request.kind, message, now + wait, request.event, outbox);
  if (!sent && request.kind == RequestKind::Report) {
    reporter_.onReportEnd();
  }
}

// Where no reply is to come, it is not waited for as long as where one is.
BladeAgent::Duration BladeAgent::oddWait(EventIndex event) const {
  return judge_.wantsReply(event) ? settings_.reportWait : settings_.oddWait;
}

// --- what comes back, or does not

void BladeAgent::giveUp(const Outstanding::Request& request, TimePoint now) {
  if (request.kind == RequestKind::Register || request.kind == RequestKind::Beat) {
    membership_.onFailure(now);
  } else if (request.kind == RequestKind::Report) {
    reporter_.onReportEnd();
  }
  judge_.judge(request.event, nullptr);
}

void BladeAgent::onMessage(const msglyr::Message& message, TimePoint now) {
  Reply reply;
  const bool readable = parseReply(message, reply);
  const auto request = outstanding_.take(readable ? &reply : nullptr);
  if (!request) {
    return;
  }
  lastStatus_ = reply.status;
  lastMessage_ = reply.message;
  judge_.judge(request->event, &reply);
  onReply(request->kind, reply, now);
}

void BladeAgent::onReply(RequestKind kind, const Reply& reply, TimePoint now) {
  switch (kind) {
    case RequestKind::Register:
      onRegisterReply(reply, now);
      return;
    case RequestKind::Beat:
      membership_.onBeatReply(reply.status, now);
      return;
    case RequestKind::Odd:
      return;
    case RequestKind::Report:
      reporter_.onReportEnd();
      [[fallthrough]];
    default:
      membership_.onOtherReply(reply.status, now);
  }
}

void BladeAgent::onRegisterReply(const Reply& reply, TimePoint now) {
  if (!membership_.onRegisterReply(reply, now)) {
    return;
  }
  if (token() != reply.token) {
    note(TokenKept{reply.token});
  }
  reporter_.start(now);
}

void BladeAgent::onCommand(const std::string& peer, const msglyr::Message& message, TimePoint now) {
  if (!isDead(now)) {
    desk_.take(peer, message, now);
  }
}

void BladeAgent::die(TimePoint now, Duration lasts) {
  for (const Outstanding::Request& each : outstanding_.takeAll()) {
    giveUp(each, now);
  }
  reporter_.forget();
  desk_.forget();
  deadUntil_ = now + lasts;
  silentUntil_ = std::max(silentUntil_, deadUntil_);
  membership_.forget(deadUntil_);
}

// What a command changed shows in the next report, which comes at once. A format of the disk makes
// it another blade, with the token that came with the command.
void BladeAgent::onWorkEnd(const Operation& operation, TimePoint now) {
  if (const auto effect = operation.effect()) {
    note(AppChanged{*effect});
  }
  if (operation.plan().token) {
    note(DiskFormatted{*operation.plan().token});
    membership_.restart(now);
  }
  if (settings_.reports.every.count() > 0) {
    reporter_.report(std::nullopt);
  }
}

std::string BladeAgent::nextId() {
  return std::to_string(settings_.slot) + "-" + std::to_string(++sequence_);
}

}  // namespace sma
