#include "tests/support/RecordingSvc.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

namespace test_support {
namespace {

constexpr std::chrono::seconds kPatience{30};

}  // namespace

RecordingSvc::RecordingSvc(std::uint32_t serviceId)
    : proc::Svc(serviceId), previous_(std::exchange(proc::Svc::instance, this)) {}

RecordingSvc::~RecordingSvc() {
  proc::Svc::instance = previous_;
}

void RecordingSvc::send(std::unique_ptr<proc::Stimulus> stimulus) {
  base::OBioStream stream;
  stimulus->encode(stream);
  const Sent sent{stimulus->classId(), stimulus->isResponseRequired(), stimulus->priority(),
                  stimulus->cookie(),
                  std::vector<unsigned char>(stream.data(), stream.data() + stream.size())};
  std::function<void(const Sent&)> action;
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    sent_.push_back(sent);
    action = action_;
    arrived_.notify_all();
  }
  if (action) {
    action(sent);
  }
}

void RecordingSvc::txSend(std::unique_ptr<proc::Stimulus> stimulus) {
  send(std::move(stimulus));
}

void RecordingSvc::onSend(std::function<void(const Sent&)> action) {
  const std::lock_guard<std::mutex> guard(mutex_);
  action_ = std::move(action);
}

std::vector<RecordingSvc::Sent> RecordingSvc::sent() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return sent_;
}

std::vector<RecordingSvc::Sent> RecordingSvc::sent(std::uint32_t classId) const {
  std::vector<Sent> found;
  for (Sent& stimulus : sent()) {
    if (stimulus.classId == classId) {
      found.push_back(std::move(stimulus));
    }
  }
  return found;
}

bool RecordingSvc::waitForSent(std::size_t count) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return arrived_.wait_for(lock, kPatience, [this, count] { return sent_.size() >= count; });
}

void RecordingSvc::expectDecoded(bool decoded) {
  EXPECT_TRUE(decoded) << "the arguments do not decode as this method's, or bytes are left over";
}

}  // namespace test_support
