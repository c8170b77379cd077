#include "dme/chassis/TimeSetting.h"

#include <optional>

#include "framework/utils/TimeZoneCache.h"
#include "model/comm/DateTimeMo.h"

namespace dme {

namespace {

using comm::DateTimeMo;

const mo::Dn kName("sys/dateTime");
constexpr const char* kUnset = "UTC";

}  // namespace

const mo::Dn& TimeSetting::name() {
  return kName;
}

std::string TimeSetting::zone() const {
  const Object* const setting = store_.find(kName);
  return setting != nullptr && setting->has(DateTimeMo::kTimeZone)
             ? setting->get(DateTimeMo::kTimeZone).str()
             : kUnset;
}

void TimeSetting::setZone(const std::string& zone) {
  unsettled_.change(this->zone(), zone);
  write(zone);
}

void TimeSetting::settle(bool isStored) {
  if (const std::optional<std::string> stored = unsettled_.settle(isStored)) {
    write(*stored);
  }
}

void TimeSetting::write(const std::string& zone) {
  store_.set(store_.create<DateTimeMo>(kName), DateTimeMo::kTimeZone, base::String(zone));
}

method::Config TimeSetting::snapshot(const std::string& zone) const {
  DateTimeMo setting(kName);
  setting.set(DateTimeMo::kTimeZone, base::String(zone));
  return setting.toConfig();
}

bool TimeSetting::isZone(const std::string& zone) {
  return !utils::posixRulesOf(zone).empty();
}

}  // namespace dme
