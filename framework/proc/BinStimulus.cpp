#include "framework/proc/BinStimulus.h"

#include <utility>

namespace proc {

BinStimulus::Pool& BinStimulus::POOL = *new BinStimulus::Pool;

std::unique_ptr<BinStimulus> BinStimulus::Pool::take() {
  const std::lock_guard guard(lock_);
  if (idle_.empty()) {
    return nullptr;
  }
  std::unique_ptr<BinStimulus> stimulus = std::move(idle_.back());
  idle_.pop_back();
  return stimulus;
}

void BinStimulus::Pool::give(std::unique_ptr<BinStimulus> stimulus) {
  if (stimulus == nullptr || stimulus->stream().size() > kMostKeptBytes) {
    return;
  }
  const std::lock_guard guard(lock_);
  if (idle_.size() < kMostIdle) {
    idle_.push_back(std::move(stimulus));
  }
}

std::size_t BinStimulus::Pool::idle() const {
  const std::lock_guard guard(lock_);
  return idle_.size();
}

std::unique_ptr<BinStimulus> BinStimulus::obtain(std::uint32_t classId, std::uint32_t intent,
                                                 std::uint32_t bulk) {
  std::unique_ptr<BinStimulus> stimulus = POOL.take();
  if (stimulus == nullptr) {
    return std::make_unique<BinStimulus>(classId, kTypeMethod, intent, bulk, Priority::kDefault,
                                         kResponseRequired, 0);
  }
  stimulus->reinitialize(classId, kTypeMethod, intent, bulk, Priority::kDefault, kResponseRequired,
                         0);
  return stimulus;
}

BinStimulus::BinStimulus(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                         std::uint32_t bulk, Priority priority, std::uint32_t responseRequired,
                         std::uint32_t reserved)
    : Stimulus(classId, type, intent, bulk, priority, responseRequired, reserved) {
  setDataBit(0, true);
}

void BinStimulus::reinitialize(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                               std::uint32_t bulk, Priority priority,
                               std::uint32_t responseRequired, std::uint32_t reserved) {
  reset(classId, type, intent, bulk, priority, responseRequired, reserved);
  setDataBit(0, true);
  stream_.clear();
}

void BinStimulus::encode(base::OBioStream& stream) const {
  stream.loopWrite(stream_.data(), static_cast<unsigned>(stream_.size()));
}

}  // namespace proc
