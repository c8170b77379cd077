#include "framework/proc/DmeLink.h"

#include <exception>
#include <span>
#include <utility>

#include "framework/core_log/Log.h"
#include "framework/msglyr/Link.h"
#include "framework/proc/Stimulus.h"

namespace proc {

namespace {

std::string_view textOf(const base::OBioStream& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

msglyr::Urgency urgencyOf(bool urgent) {
  return urgent ? msglyr::Urgency::AtOnce : msglyr::Urgency::Batched;
}

}  // namespace

DmeLink::DmeLink() = default;

DmeLink::~DmeLink() {
  close();
}

void DmeLink::open(const std::string& endPoint, Receiver receiver, Activity activity) {
  {
    const std::lock_guard guard(lock_);
    if (link_ != nullptr || isClosed_) {
      return;
    }
    receiver_ = std::move(receiver);
    activity_ = std::move(activity);
    link_ = std::make_unique<msglyr::Link>(
        msglyr::Link::Side::Connect, endPoint,
        [this](msglyr::Link::PeerId, std::span<const std::string_view> messages) {
          for (const std::string_view message : messages) {
            take(message);
          }
        });
    for (const Waiting& message : std::exchange(waiting_, {})) {
      if (!link_->send(message.bytes, urgencyOf(message.urgent))) {
        dropped_.fetch_add(1, std::memory_order_relaxed);
      }
    }
    open_.store(link_.get(), std::memory_order_release);
  }
  probe();
}

void DmeLink::close() {
  msglyr::Link* link = nullptr;
  {
    const std::lock_guard guard(lock_);
    isClosed_ = true;
    waiting_.clear();
    link = link_.get();
  }
  if (link != nullptr) {
    link->stop();
  }
}

bool DmeLink::send(const base::OBioStream& bytes, bool urgent) {
  msglyr::Link* const link = open_.load(std::memory_order_acquire);
  const bool isTaken = link != nullptr ? link->send(textOf(bytes), urgencyOf(urgent))
                                       : keepOrDrop(textOf(bytes), urgent);
  if (!isTaken) {
    dropped_.fetch_add(1, std::memory_order_relaxed);
  }
  return isTaken;
}

bool DmeLink::keepOrDrop(std::string_view bytes, bool urgent) {
  const std::lock_guard guard(lock_);
  if (link_ != nullptr) {
    return link_->send(bytes, urgencyOf(urgent));
  }
  if (isClosed_ || waiting_.size() >= kMostWaiting) {
    return false;
  }
  waiting_.push_back({std::string(bytes), urgent});
  return true;
}

void DmeLink::probe() {
  bool isLost = false;
  {
    const std::lock_guard guard(activityLock_);
    if (++unanswered_ > kMostUnanswered) {
      unanswered_ = kMostUnanswered;
      isLost = !engine_.empty();
      engine_.clear();
    }
  }
  if (isLost) {
    tell(false);
  }
  const Stimulus hello(0, Stimulus::kTypeHello, Stimulus::kIntentNone, Stimulus::kNoBulk,
                       Stimulus::Priority::kDefault, 0, 0);
  base::OBioStream bytes;
  hello.serialize(bytes);
  send(bytes, false);
}

bool DmeLink::isUp() const {
  const std::lock_guard guard(activityLock_);
  return !engine_.empty();
}

void DmeLink::take(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  try {
    if (!takeGreeting(data, bytes.size())) {
      receiver_(data, bytes.size());
    }
  } catch (const std::exception& error) {
    core_log::logPrintf("take", core_log::serviceLevel(), 8, "stimulus of %zu bytes dropped: %s",
                        bytes.size(), error.what());
  }
}

bool DmeLink::takeGreeting(const unsigned char* bytes, std::size_t size) {
  base::IBioStream stream(bytes, size);
  StimulusHeader stimulus;
  if (!stimulus.deserialize(stream) || stimulus.type() != Stimulus::kTypeGreeting) {
    return false;
  }
  greeted(stimulus.cookie());
  return true;
}

void DmeLink::greeted(const base::Buffer& engine) {
  bool isNew = false;
  bool isReplaced = false;
  {
    const std::lock_guard guard(activityLock_);
    unanswered_ = 0;
    isNew = engine_ != engine;
    isReplaced = isNew && !engine_.empty();
    engine_ = engine;
  }
  if (isReplaced) {
    tell(false);
  }
  if (isNew) {
    tell(true);
  }
}

void DmeLink::tell(bool up) const {
  if (activity_) {
    activity_(up);
  }
}

}  // namespace proc
