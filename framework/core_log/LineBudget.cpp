#include "framework/core_log/LineBudget.h"

namespace core_log {

namespace {
constexpr const char* kOthers = "other causes";
}

bool LineBudget::admits(std::string_view cause, std::uint32_t source, TimePoint now) {
  if (!isOver_ && now >= end_) {
    lines_.clear();
  }
  if (lines_.empty()) {
    end_ = now + kPeriod;
  }
  Place place(cause, source);
  if (lines_.size() >= kMostPlaces && !lines_.contains(place)) {
    place = {kOthers, 0};
  }
  const bool isWithin = ++lines_[place] <= kMostLines;
  isOver_ = isOver_ || !isWithin;
  return isWithin;
}

std::optional<LineBudget::TimePoint> LineBudget::deadline() const {
  return isOver_ ? std::optional(end_) : std::nullopt;
}

void LineBudget::endPeriod(TimePoint now, const Tell& tell) {
  if (!isOver_ || now < end_) {
    return;
  }
  for (const auto& [place, lines] : lines_) {
    if (lines > kMostLines) {
      tell(place.first, place.second, lines - kMostLines);
    }
  }
  lines_.clear();
  isOver_ = false;
}

}  // namespace core_log
