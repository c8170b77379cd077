#include "sma/platform/Platform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "sma/base/Random.h"

namespace sma {
namespace {

constexpr std::uint64_t kMbKb = 1024;
constexpr std::uint64_t kGbKb = 1024 * kMbKb;

/// What is drawn; each has numbers of its own.
enum Purpose : unsigned {
  kCores,
  kDemand,
  kUpTime,
  kMemory,
  kReserved,
  kSystemShare,
  kDisks,
  kWave = 100,
  kDisk = 200,
  kApp = 1000,
};

constexpr unsigned kWaves = 3;

struct DiskKind {
  std::string_view name;
  std::string_view mountPoint;
  std::uint64_t totalKb;
};

constexpr std::array<DiskKind, 4> kDiskKinds{{
    {"sda1", "/", 31'439'872},
    {"sda2", "/var", 115'312'640},
    {"sdb1", "/data", 937'684'992},
    {"sdc1", "/data2", 1'875'374'080},
}};

std::uint64_t hashed(const std::string& text) {
  std::uint64_t hash = text.size();
  for (const char character : text) {
    hash = mixed(hash + static_cast<unsigned char>(character));
  }
  return hash;
}

double secondsOf(BladePlatform::Duration time) {
  return std::chrono::duration<double>(time).count();
}

std::uint64_t part(std::uint64_t whole, double share) {
  return static_cast<std::uint64_t>(static_cast<double>(whole) * share);
}

template <class Value>
void take(const std::optional<Value>& from, std::optional<Value>& to) {
  if (from) {
    to = from;
  }
}

void apply(const AppChange& change, AppInstance& app) {
  app.version = change.version.value_or(app.version);
  app.enabled = change.enabled.value_or(app.enabled);
  app.running = change.running.value_or(app.running);
  app.external = change.external.value_or(app.external);
  app.hotfixes = change.hotfixes.value_or(app.hotfixes);
}

}  // namespace

/// A swing of the demand around its mean.
struct BladePlatform::Wave {
  double amplitude;
  double radiansPerSecond;
  double phase;

  double at(double seconds) const {
    return amplitude * std::sin(radiansPerSecond * seconds + phase);
  }
  /// What is left of the wave after exponential damping over `window` seconds: the response of a
  /// first-order low-pass filter, smaller and later.
  double damped(double window, double seconds) const {
    const double lag = radiansPerSecond * window;
    return amplitude / std::sqrt(1 + lag * lag) *
           std::sin(radiansPerSecond * seconds + phase - std::atan(lag));
  }
};

std::string appId(std::uint32_t slot, unsigned number) {
  return "slot" + std::to_string(slot) + "-app" + std::to_string(number);
}

BladePlatform::BladePlatform(std::uint64_t seed, std::uint32_t slot, unsigned apps)
    : seed_(mixed(mixed(seed) + slot)), slot_(slot), ownApps_(apps) {}

double BladePlatform::draw(std::uint64_t purpose) const {
  return asShare(mixed(seed_ + purpose));
}

double BladePlatform::draw(std::uint64_t purpose, double least, double most) const {
  return least + draw(purpose) * (most - least);
}

BladePlatform::Duration BladePlatform::upTime(Duration time) const {
  const auto before = std::chrono::seconds(static_cast<std::int64_t>(draw(kUpTime, 3600, 8e6)));
  return before + time;
}

double BladePlatform::baseDemand() const {
  const double cores = draw(kCores) < 0.5 ? 8 : 16;
  return cores * draw(kDemand, 0.1, 0.6);
}

// A quick, a middling and a slow swing. Their amplitudes add up to less than the mean, so the
// demand stays above zero.
BladePlatform::Wave BladePlatform::wave(unsigned number) const {
  static constexpr std::array<double, kWaves> kShares{0.25, 0.3, 0.3};
  static constexpr std::array<double, kWaves> kPeriods{60, 500, 4000};
  const double period = kPeriods[number] * draw(kWave + 2 * number, 0.7, 1.4);
  return {baseDemand() * kShares[number], 2 * std::numbers::pi / period,
          draw(kWave + 2 * number + 1, 0, 2 * std::numbers::pi)};
}

double BladePlatform::demand(Duration time) const {
  double sum = baseDemand();
  for (unsigned number = 0; number < kWaves; ++number) {
    sum += wave(number).at(secondsOf(time));
  }
  return sum;
}

double BladePlatform::averaged(double windowSeconds, Duration time) const {
  double sum = baseDemand();
  for (unsigned number = 0; number < kWaves; ++number) {
    sum += wave(number).damped(windowSeconds, secondsOf(time));
  }
  return sum;
}

LoadAverages BladePlatform::load(Duration time) const {
  return {averaged(60, time), averaged(300, time), averaged(900, time)};
}

std::uint64_t BladePlatform::totalMemoryKb() const {
  // Less than the modules hold: firmware and kernel have taken theirs.
  static constexpr std::array<std::uint64_t, 3> kSizes{32 * kGbKb, 64 * kGbKb, 128 * kGbKb};
  const auto size = kSizes[static_cast<std::size_t>(draw(kMemory) * kSizes.size())];
  return size - size / 64 - part(kGbKb, draw(kReserved));
}

std::uint64_t BladePlatform::appsMemoryKb(Duration time) const {
  // They breathe with the load, and leave room for the system.
  const double breath = 0.9 + 0.1 * demand(time) / baseDemand();
  std::uint64_t sum = 0;
  for (const AppInstance& app : apps()) {
    if (app.running) {
      sum += part(kMbKb, draw(kApp + hashed(app.id), 256, 1800) * breath);
    }
  }
  return std::min(sum, part(totalMemoryKb(), 0.75));
}

MemoryUse BladePlatform::memory(Duration time) const {
  MemoryUse memory;
  memory.totalKb = totalMemoryKb();
  const double breath = 0.9 + 0.1 * demand(time) / baseDemand();
  memory.usedKb = part(memory.totalKb, draw(kSystemShare, 0.06, 0.2) * breath) + appsMemoryKb(time);
  memory.freeKb = memory.totalKb - memory.usedKb;
  return memory;
}

std::vector<DiskUse> BladePlatform::disks(Duration time) const {
  const auto count = 2 + static_cast<unsigned>(draw(kDisks) * (kDiskKinds.size() - 1));
  std::vector<DiskUse> disks;
  for (unsigned number = 0; number < count; ++number) {
    const DiskKind& kind = kDiskKinds[number];
    const unsigned purpose = kDisk + 2 * number;
    const double growthKb = draw(purpose + 1, 2, 80) * secondsOf(time);
    DiskUse disk;
    disk.name = kind.name;
    disk.mountPoint = kind.mountPoint;
    disk.totalKb = kind.totalKb;
    disk.usedKb = std::min(kind.totalKb, part(kind.totalKb, draw(purpose, 0.15, 0.7)) +
                                             static_cast<std::uint64_t>(growthKb));
    disk.freeKb = disk.totalKb - disk.usedKb;
    disks.push_back(std::move(disk));
  }
  return disks;
}

AppInstance BladePlatform::ownApp(unsigned number) const {
  AppInstance app;
  app.id = appId(slot_, number);
  app.version = "1." + std::to_string(number);
  app.external = number % 3 == 0;
  return app;
}

std::vector<AppInstance> BladePlatform::apps() const {
  std::vector<AppInstance> apps;
  apps.reserve(ownApps_ + changes_.size());
  for (unsigned number = 1; number <= ownApps_; ++number) {
    apps.push_back(ownApp(number));
  }
  for (const AppChange& change : changes_) {
    auto app = std::find_if(apps.begin(), apps.end(),
                            [&change](const AppInstance& each) { return each.id == change.id; });
    if (!change.installed.value_or(true)) {
      if (app != apps.end()) {
        apps.erase(app);
      }
      continue;
    }
    if (app == apps.end()) {
      app = apps.insert(apps.end(), AppInstance{change.id, "1.0", true, true, false, ""});
    }
    apply(change, *app);
  }
  return apps;
}

void BladePlatform::removeApps() {
  ownApps_ = 0;
  changes_.clear();
}

bool BladePlatform::isOwn(const std::string& id) const {
  for (unsigned number = 1; number <= ownApps_; ++number) {
    if (appId(slot_, number) == id) {
      return true;
    }
  }
  return false;
}

void BladePlatform::change(const AppChange& change) {
  auto known = std::find_if(changes_.begin(), changes_.end(),
                            [&change](const AppChange& each) { return each.id == change.id; });
  // Of an instance that came and went, nothing is left.
  if (!change.installed.value_or(true) && !isOwn(change.id)) {
    if (known != changes_.end()) {
      changes_.erase(known);
    }
    return;
  }
  if (known == changes_.end()) {
    changes_.push_back(change);
    return;
  }
  take(change.version, known->version);
  take(change.enabled, known->enabled);
  take(change.running, known->running);
  take(change.external, known->external);
  take(change.hotfixes, known->hotfixes);
  take(change.installed, known->installed);
}

}  // namespace sma
