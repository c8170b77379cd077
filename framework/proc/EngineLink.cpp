#include "framework/proc/EngineLink.h"

#include <exception>
#include <span>
#include <utility>

#include "framework/base/Buffer.h"
#include "framework/core_log/Log.h"
#include "framework/msglyr/Link.h"
#include "framework/proc/Cookie.h"
#include "framework/proc/Stimulus.h"

namespace proc {

namespace {

base::OBioStream makeGreeting() {
  Stimulus greeting(0, Stimulus::kTypeGreeting, Stimulus::kIntentNone, Stimulus::kNoBulk,
                    Stimulus::Priority::kDefault, 0, 0);
  base::Buffer identity;
  makeCookie(identity);
  greeting.setCookie(identity);
  base::OBioStream bytes;
  greeting.serialize(bytes);
  return bytes;
}

bool isHello(const unsigned char* bytes, std::size_t size) {
  base::IBioStream stream(bytes, size);
  StimulusHeader header;
  return header.deserialize(stream) && header.type() == Stimulus::kTypeHello;
}

}  // namespace

EngineLink::EngineLink(const std::string& endPoint) : greeting_(makeGreeting()) {
  link_ = std::make_unique<msglyr::Link>(
      msglyr::Link::Side::Bind, endPoint,
      [this](msglyr::Link::PeerId peer, std::span<const std::string_view> messages) {
        gate_.wait(Gate::kShut);
        if (gate_ == Gate::kClosed) {
          return;
        }
        for (const std::string_view message : messages) {
          take(peer, message);
        }
      });
}

EngineLink::~EngineLink() {
  close();
}

void EngineLink::start(Receiver receiver) {
  receiver_ = std::move(receiver);
  gate_ = Gate::kOpen;
  gate_.notify_all();
  // For a service that is connected or connects soon: it need not ask first.
  send(kLatestPeer, greeting_, true);
}

bool EngineLink::send(PeerId peer, const base::OBioStream& bytes, bool urgent) {
  return link_->sendTo(peer, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                       urgent ? msglyr::Urgency::AtOnce : msglyr::Urgency::Batched);
}

void EngineLink::close() {
  link_->stop();
}

const std::string& EngineLink::endPoint() const {
  return link_->endPoint();
}

std::uint64_t EngineLink::dropped() const {
  return link_->counters().dropped;
}

void EngineLink::take(PeerId peer, std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  try {
    if (isHello(data, bytes.size())) {
      send(peer, greeting_, true);
    } else {
      receiver_(peer, data, bytes.size());
    }
  } catch (const std::exception& error) {
    core_log::logPrintf("take", core_log::serviceLevel(), 8, "stimulus of %zu bytes dropped: %s",
                        bytes.size(), error.what());
  }
}

}  // namespace proc
