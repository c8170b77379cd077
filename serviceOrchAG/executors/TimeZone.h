#pragma once

namespace comm {
class DateTimeMo;
}

namespace zan_serviceOrchAG {

/// Makes the chassis' time zone the one of the process's cache: the text before the first blank of
/// what the administrator set, "UTC" when that is empty. `settings` is not null.
void updateTimeZoneCache(const comm::DateTimeMo* settings);

}  // namespace zan_serviceOrchAG
