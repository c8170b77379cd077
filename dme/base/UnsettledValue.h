#pragma once

#include <deque>
#include <optional>
#include <utility>

namespace dme {

/// Of a value whose changes show at once and are stored later, which one is stored. So what could
/// not be stored can be taken back, also when several changes are on their way.
template <class T>
class UnsettledValue {
 public:
  /// The value is changed, from what it shows now.
  void change(const T& before, T wanted) {
    stored_ = isSettled() ? before : std::move(stored_);
    wanted_.push_back(std::move(wanted));
  }
  /// The earliest change that is on its way was stored, or not: the value to go back to, if there
  /// is one. While others are on their way it is theirs to say.
  std::optional<T> settle(bool isStored) {
    if (isStored) {
      stored_ = std::move(wanted_.front());
    }
    wanted_.pop_front();
    return !isStored && isSettled() ? std::optional<T>(stored_) : std::nullopt;
  }
  bool isSettled() const { return wanted_.empty(); }

 private:
  T stored_{};
  std::deque<T> wanted_;
};

}  // namespace dme
