#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sma {

/// Runnable processes, averaged over the last 1, 5 and 15 minutes as a kernel does: each average
/// is damped exponentially, so that older load counts less.
struct LoadAverages {
  double minus1 = 0;
  double minus5 = 0;
  double minus15 = 0;
};

/// Sizes in KB (1024 bytes); free and used make up the total.
struct MemoryUse {
  std::uint64_t totalKb = 0;
  std::uint64_t freeKb = 0;
  std::uint64_t usedKb = 0;
};

/// A mounted file system; sizes as in MemoryUse.
struct DiskUse {
  std::string name;
  std::string mountPoint;
  std::uint64_t totalKb = 0;
  std::uint64_t freeKb = 0;
  std::uint64_t usedKb = 0;
};

struct AppInstance {
  std::string id;
  std::string version;
  bool enabled = true;    ///< as its administrator wants it
  bool running = true;    ///< as it is
  bool external = false;  ///< its software is managed by somebody else
  std::string hotfixes;   ///< names with commas between them, or empty
};

/// What becomes different of one application instance; what is not set stays.
struct AppChange {
  std::string id;
  std::optional<std::string> version = {};
  std::optional<bool> enabled = {};
  std::optional<bool> running = {};
  std::optional<bool> external = {};
  std::optional<std::string> hotfixes = {};
  std::optional<bool> installed = {};
};

/// The release of the platform image that simulated blades run.
inline constexpr std::string_view kPlatformRelease = "2.4.1";

/// "slot<slot>-app<number>", the number from 1: how a blade's own instances are called.
std::string appId(std::uint32_t slot, unsigned number);

/// A blade's machine and what is installed on it. Everything but the instances is a function of the
/// seed, the slot and the time that the caller names, so equal blades are equal at equal times,
/// however often anybody looked; a blade at rest costs some fifty bytes. One thread.
///
/// Instance number n has the version "1.<n>", is enabled and runs; every third is managed
/// externally. They change by change() only.
class BladePlatform {
 public:
  using Duration = std::chrono::milliseconds;

  BladePlatform(std::uint64_t seed, std::uint32_t slot, unsigned apps);

  /// The times are those since the start of the run.
  Duration upTime(Duration time) const;
  LoadAverages load(Duration time) const;
  /// What load() averages: how many processes want to run at that moment.
  double demand(Duration time) const;
  MemoryUse memory(Duration time) const;
  /// Part of the used memory: that of the instances that run.
  std::uint64_t appsMemoryKb(Duration time) const;
  /// One or more, filling slowly.
  std::vector<DiskUse> disks(Duration time) const;

  /// The blade's own instances by number, then those that change() added.
  std::vector<AppInstance> apps() const;
  /// Changes an instance, installs the one of an unknown id, or removes one.
  void change(const AppChange& change);
  /// Removes all instances, as a format of the disk does.
  void removeApps();

  std::uint32_t slot() const { return slot_; }

 private:
  struct Wave;

  double draw(std::uint64_t purpose) const;
  double draw(std::uint64_t purpose, double least, double most) const;
  double baseDemand() const;
  Wave wave(unsigned number) const;
  double averaged(double windowSeconds, Duration time) const;
  std::uint64_t totalMemoryKb() const;
  AppInstance ownApp(unsigned number) const;
  bool isOwn(const std::string& id) const;

  const std::uint64_t seed_;
  const std::uint32_t slot_;
  unsigned ownApps_;
  std::vector<AppChange> changes_;  // one for an id
};

}  // namespace sma
