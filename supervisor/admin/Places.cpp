#include "supervisor/admin/Places.h"

#include <utility>

namespace supervisor::admin {

bool Places::makeRoom() {
  if (taken_ < most_) {
    return true;
  }
  if (idle_.empty()) {
    return false;
  }
  Place& longest = *idle_.front();
  longest.leave();
  longest.lose_();
  return true;
}

Places::Place::Place(Places& places, std::function<void()> lose)
    : places_(places), lose_(std::move(lose)) {
  ++places_.taken_;
}

Places::Place::~Place() {
  leave();
}

void Places::Place::setIdle() {
  if (isTaken_ && !idle_) {
    idle_ = places_.idle_.insert(places_.idle_.end(), this);
  }
}

void Places::Place::setBusy() {
  if (idle_) {
    places_.idle_.erase(*std::exchange(idle_, std::nullopt));
  }
}

void Places::Place::leave() {
  setBusy();
  if (std::exchange(isTaken_, false)) {
    --places_.taken_;
  }
}

}  // namespace supervisor::admin
