#include "framework/utils/TzTimer.h"

#include <ctime>
#include <utility>

#include "framework/core_log/Log.h"

namespace utils {

namespace {

std::string readZone() {
  tzset();
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) {
    return {};
  }
  return std::string(local.tm_zone) + " " + std::to_string(local.tm_gmtoff);
}

}  // namespace

TzTimer& TzTimer::getInstance() {
  static TzTimer& timer = *new TzTimer;
  return timer;
}

void TzTimer::start() {
  refresh();
  submit();
}

bool TzTimer::refresh() {
  std::string zone = readZone();
  {
    const std::lock_guard guard(lock_);
    if (zone == zone_) {
      return false;
    }
    zone_ = zone;
  }
  core_log::logPrintf("refresh", core_log::serviceLevel(), 5, "local time zone is %s",
                      zone.c_str());
  return true;
}

std::string TzTimer::zone() const {
  const std::lock_guard guard(lock_);
  return zone_;
}

}  // namespace utils
