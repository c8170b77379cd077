#include "framework/proc/Svc.h"

#include <optional>
#include <utility>

#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"
#include "framework/net/ChannelBank.h"
#include "framework/os/TimerTask.h"
#include "framework/proc/Answer.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Cookie.h"
#include "framework/proc/DmeLink.h"
#include "framework/proc/InboundItem.h"
#include "framework/proc/MethodTable.h"
#include "framework/proc/StateRequest.h"

namespace proc {

namespace {

constexpr unsigned kProbeInterval = 5000;  // ms

/// Calls the service's begin and end callbacks around a scope.
class Processing {
 public:
  explicit Processing(Svc& svc) : svc_(svc) { svc.procBeginCb(); }
  ~Processing() { svc_.procEndCb(); }
  Processing(const Processing&) = delete;
  Processing& operator=(const Processing&) = delete;

 private:
  Svc& svc_;
};

void count(std::atomic<std::uint64_t>& cell) {
  cell.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

class Svc::ProbeTimer final : public os::TimerTask {
 public:
  explicit ProbeTimer(DmeLink& link) : TimerTask(kProbeInterval), link_(link) {}
  ~ProbeTimer() override { cancel(); }

 protected:
  void onTimer() override { link_.probe(); }

 private:
  DmeLink& link_;
};

Svc* Svc::instance = nullptr;
os::CriticalSection& Svc::cs = *new os::CriticalSection;
std::set<const meta::Autoconfig*>* Svc::AUTOCONFIG_SET = nullptr;

Svc::Svc(std::uint32_t serviceId) : serviceId_(serviceId), link_(std::make_unique<DmeLink>()) {}

Svc::~Svc() {
  link_->close();
}

void Svc::operator()(const unsigned char* bytes, std::size_t size) {
  auto item = std::make_unique<InboundItem>(*this, bytes, size);
  os::ReactiveQueue* const queue = queue_;
  if (queue == nullptr || !item->isReadable()) {
    item->run();
  } else if (!queue->submit(item.release())) {
    count(overflow_);
  }
}

void Svc::send(std::unique_ptr<Stimulus> stimulus) {
  const bool isUrgent = stimulus->isResponseRequired();
  auto* const built = dynamic_cast<BinStimulus*>(stimulus.get());
  if (built != nullptr) {
    link_->send(built->stream(), isUrgent);
    stimulus.release();
    BinStimulus::POOL.give(std::unique_ptr<BinStimulus>(built));
    return;
  }
  base::OBioStream bytes;
  stimulus->encode(bytes);
  link_->send(bytes, isUrgent);
}

void Svc::txSend(std::unique_ptr<Stimulus> stimulus) {
  send(std::move(stimulus));
}

void Svc::procBeginCb() {}
void Svc::procEndCb() {}
void Svc::optionalPause() {}
void Svc::invokeCallHome() {}
void Svc::sendSyslogMessage() {}
void Svc::invokeSendSnmpNotification() {}

void Svc::initSvcCb() {
  probeTimer_ = std::make_unique<ProbeTimer>(*link_);
  probeTimer_->submit();
}

void Svc::generateCookie(base::Buffer& cookie) {
  makeCookie(cookie);
}

void Svc::initChannels() {
  endPoint_ = base::SvcConfigParams::getInstance().getDmeEndpoint().str();
  if (bank_ != nullptr) {
    bank_->add(kEngineChannel, endPoint_);
  }
  link_->open(
      endPoint_, [this](const unsigned char* bytes, std::size_t size) { (*this)(bytes, size); },
      [this](bool up) { channelActivity(up); });
}

void Svc::channelActivity(bool up) {
  core_log::logPrintf("channelActivity", core_log::serviceLevel(), 5, "channel %s to %s is %s",
                      kEngineChannel, endPoint_.c_str(), up ? "up" : "down");
  if (bank_ != nullptr) {
    bank_->setUp(kEngineChannel, up);
  }
  if (up) {
    StateRequest::get().channelUp();
  }
  if (bootstrapCb_ != nullptr) {
    bootstrapCb_(up);
  }
}

bool Svc::handle(const unsigned char* bytes, std::size_t size) {
  const Processing processing(*this);
  base::IBioStream stream(bytes, size);
  StimulusHeader header;
  if (header.deserialize(stream)) {
    if (header.type() == Stimulus::kTypeMethod) {
      return handleCall(header, bytes, size);
    }
    if (header.type() == Stimulus::kTypeAnswer) {
      return handleAnswer(bytes, size);
    }
  }
  core_log::logPrintf("handle", core_log::serviceLevel(), 6, "%zu bytes dropped: no stimulus",
                      size);
  count(undecodable_);
  return false;
}

bool Svc::handleCall(StimulusHeader& header, const unsigned char* bytes, std::size_t size) {
  InboundCall call(bytes, size, [this](base::OBioStream&& answer) { link_->send(answer, true); });
  const auto refuse = [&](std::atomic<std::uint64_t>& cell, std::uint32_t code, const char* cause) {
    core_log::logPrintf("handleCall", core_log::serviceLevel(), 6, "method class %u refused: %s",
                        header.classId(), cause);
    count(cell);
    header.reportFailure(kFrameworkBits, code, cause);
    call.answer(header, [](base::OBioStream&) {});
    return false;
  };
  const MethodHandler* const handler = MethodTable::instance().find(header.classId());
  if (handler == nullptr || !handler->isExecutable()) {
    return refuse(unhandled_, kNoHandlerCode, "nothing carries it out here");
  }
  bool isDecoded = false;
  const std::optional<base::String> thrown =
      runCallback(header.classId(), [&] { isDecoded = handler->execute(call); });
  if (thrown.has_value()) {
    return refuse(undecodable_, kExceptionCode, thrown->c_str());
  }
  return isDecoded ? !call.hasFailed()
                   : refuse(undecodable_, kUndecodableCode, "arguments undecodable");
}

bool Svc::handleAnswer(const unsigned char* bytes, std::size_t size) {
  InboundAnswer answer(bytes, size);
  const auto refuse = [&](std::atomic<std::uint64_t>& cell, const char* cause) {
    core_log::logPrintf("handleAnswer", core_log::serviceLevel(), 6,
                        "answer of class %u dropped: %s", answer.classId(), cause);
    count(cell);
    return false;
  };
  if (!answer.parse()) {
    return refuse(undecodable_, "no outcome");
  }
  const MethodHandler* const handler = MethodTable::instance().find(answer.classId());
  if (handler == nullptr) {
    return refuse(unhandled_, "nobody asks for it here");
  }
  bool isDecoded = false;
  const bool hasThrown =
      runCallback(answer.classId(), [&] {
        isDecoded = answer.isFailure() ? handler->failed(answer) : handler->succeeded(answer);
      }).has_value();
  return !hasThrown && (isDecoded || refuse(undecodable_, "results undecodable"));
}

Svc::Refused Svc::refused() const {
  return {undecodable_.load(std::memory_order_relaxed), unhandled_.load(std::memory_order_relaxed),
          overflow_.load(std::memory_order_relaxed)};
}

}  // namespace proc
