#pragma once

#include <mutex>
#include <string>

#include "framework/base/String.h"

namespace utils {

/// A zone's rules for daylight saving time, in the form of POSIX's variable TZ:
/// "CET-1CEST,M3.5.0,M10.5.0/3" of "Europe/Berlin". Empty when the system has no file of its name,
/// or the zone follows no such rules. Reads the file. Thread-safe.
base::String posixRulesOf(const std::string& zone);

/// The chassis' time zone, and what the system's zone files say of it. Thread-safe.
///
/// lock() and unlock() are for a caller whose steps belong together; the operations do not need
/// them. The system keeps its zone files in /usr/share/zoneinfo.
class TimeZoneCache {
 public:
  /// The process's one.
  static TimeZoneCache& getInstance();

  void lock() { callers_.lock(); }
  void unlock() { callers_.unlock(); }

  /// Stores the name of a zone, as "Europe/Berlin".
  void setTimeZoneData(base::String zone);
  /// posixRulesOf() the stored zone; empty when none is stored.
  base::String getTimeZoneInPosix() const;

 private:
  TimeZoneCache() = default;

  std::mutex callers_;
  mutable std::mutex lock_;
  std::string zone_;  // guarded by lock_
};

}  // namespace utils
