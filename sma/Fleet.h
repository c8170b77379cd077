#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <queue>
#include <string>
#include <vector>

#include "framework/msglyr/DealerSet.h"
#include "sma/BladeAgent.h"
#include "sma/Scenario.h"

namespace sma {

/// Many blades in one process, each with its own connection to the gateway, driven by the thread
/// that calls run().
class Fleet {
 public:
  struct Settings {
    std::vector<std::uint32_t> slots;
    std::string gateway;  ///< end point
    std::chrono::milliseconds beat{5000};
    std::chrono::milliseconds runFor{0};  ///< 0: until stop()
    std::uint64_t seed = 1;
    std::chrono::milliseconds report{0};  ///< between platform reports; 0: none
    unsigned apps = 0;                    ///< instances on each blade
    double failChance = 0;                ///< with each report, that an instance fails
    double workChance = 0;                ///< with each report, that an instance gets a hot fix
    std::string ip = "127.0.0.1";         ///< where the blades say that they listen
    std::uint32_t listenBase = 0;         ///< blade N listens on this port plus N; 0: not at all
  };

  /// Connects every blade. Throws std::runtime_error naming what cannot be opened and the cause.
  Fleet(const Settings& settings, const Scenario& scenario);
  ~Fleet();

  /// Called about once a second from run().
  using Progress = std::function<void(const Fleet&)>;
  void run(const Progress& progress);
  /// Ends run(). From any thread or a signal handler.
  void stop();

  std::vector<const BladeAgent*> blades() const;
  std::chrono::milliseconds elapsed() const;
  /// Commands that arrived at the blades' own end points.
  std::uint64_t commands() const { return commands_; }

 private:
  struct Due {
    BladeAgent::TimePoint time;
    std::size_t blade;
    bool operator>(const Due& other) const { return time > other.time; }
  };

  BladeAgent::Duration spread(std::uint64_t seed, BladeAgent::Duration interval) const;
  Reporter::Settings reportsOf(std::uint64_t seed) const;
  void addBlade(std::uint32_t slot, const Scenario& scenario);
  void serveDue(BladeAgent::TimePoint now);
  void schedule(std::size_t blade);
  void onMessage(msglyr::DealerSet::Index index, const std::string& routing,
                 msglyr::Message& message);
  void refuseCommand(msglyr::DealerSet::Index index, const std::string& routing,
                     msglyr::Message& message);

  const Settings settings_;
  const BladeAgent::TimePoint start_;
  msglyr::DealerSet sockets_;
  std::vector<std::unique_ptr<BladeAgent>> blades_;
  std::vector<msglyr::DealerSet::Index> socketOf_;  // by blade
  std::vector<std::size_t> bladeOf_;                // by socket; kListener for listeners
  std::vector<BladeAgent::TimePoint> scheduled_;    // by blade: the entry that counts
  std::priority_queue<Due, std::vector<Due>, std::greater<>> due_;
  std::atomic<bool> stopped_{false};
  std::uint64_t commands_ = 0;
};

}  // namespace sma
