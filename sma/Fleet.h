#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <queue>
#include <string>
#include <vector>

#include "framework/msglyr/DealerSet.h"
#include "sma/StateFile.h"
#include "sma/agent/BladeAgent.h"
#include "sma/scenario/Scenario.h"

namespace sma {

/// Many blades in one process, each with its own connection to the gateway, driven by the thread
/// that calls run().
class Fleet {
 public:
  struct Settings {
    std::vector<std::uint32_t> slots;  ///< in order, each once
    std::string gateway;               ///< end point
    std::chrono::milliseconds beat{5000};
    std::chrono::milliseconds runFor{0};  ///< 0: until stop()
    std::uint64_t seed = 1;
    std::chrono::milliseconds report{0};  ///< between platform reports; 0: none
    unsigned apps = 0;                    ///< instances on each blade
    double failChance = 0;                ///< with each report, that an instance fails
    double workChance = 0;                ///< with each report, that an instance gets a hot fix
    std::string ip = "127.0.0.1";         ///< where the blades say that they listen
    std::uint32_t listenBase = 0;         ///< blade N listens on this port plus N; 0: not at all
    CommandDesk::Settings commands;       ///< how blades carry commands out; each has its own seed
    StateFile* state = nullptr;           ///< borrowed; null: nothing outlasts the fleet
  };

  /// Connects every blade. Throws std::runtime_error naming what cannot be opened and the cause.
  Fleet(const Settings& settings, const Scenario& scenario);
  ~Fleet();

  /// Called about once a second from run().
  using Progress = std::function<void(const Fleet&)>;
  void run(const Progress& progress);
  /// Ends run(). From any thread or a signal handler.
  void stop();
  /// Has the thread of run() carry out a task, and waits for that. From any other thread. False,
  /// and nothing was done, when run() has ended.
  bool onLoop(std::function<void()> task);

  // --- on the thread of run(), or before it

  std::vector<const BladeAgent*> blades() const;
  std::vector<std::uint32_t> slots() const { return settings_.slots; }
  /// Null when there is none in that slot.
  const BladeAgent* blade(std::uint32_t slot) const;
  // These do nothing where there is no blade.
  void addFault(std::uint32_t slot, const CommandFault& fault);
  void clearFaults(std::uint32_t slot);
  void die(std::uint32_t slot, BladeAgent::Duration lasts);

  std::chrono::milliseconds elapsed() const;
  /// Commands that arrived at the blades' own end points.
  std::uint64_t commands() const;

 private:
  struct Due {
    BladeAgent::TimePoint time;
    std::size_t blade;
    bool operator>(const Due& other) const { return time > other.time; }
  };
  /// A blade and its sockets, which it has not while it is dead.
  struct Seat {
    std::unique_ptr<BladeAgent> agent;
    std::string endPoint;  // that it listens at; empty if it does not
    std::optional<msglyr::DealerSet::Index> socket = {};
    std::optional<msglyr::DealerSet::Index> listener = {};
    BladeAgent::TimePoint scheduled = {};  // the entry in due_ that counts
    unsigned attempts = 0;                 // to listen again that failed in a row
  };
  /// Whose a socket is, and what for.
  struct Use {
    std::size_t blade = 0;
    bool listens = false;
  };

  BladeAgent::Duration spread(std::uint64_t seed, BladeAgent::Duration interval) const;
  Reporter::Settings reportsOf(std::uint64_t seed) const;
  void addBlade(std::uint32_t slot, const Scenario& scenario);
  void serveDue(BladeAgent::TimePoint now);
  void schedule(std::size_t blade);
  void onMessage(msglyr::DealerSet::Index index, const std::string& routing,
                 msglyr::Message& message);
  void use(msglyr::DealerSet::Index index, const Use& use);
  void connect(std::size_t blade);
  bool reconnect(std::size_t blade, BladeAgent::TimePoint now);
  void disconnect(std::size_t blade);
  void serve(std::size_t blade, BladeAgent::TimePoint now);
  void sendReplies(std::size_t blade, BladeAgent::TimePoint now);
  std::optional<std::size_t> seatOf(std::uint32_t slot) const;
  void loop(const Progress& progress);
  void doTasks();
  void endTasks();

  const Settings settings_;
  const BladeAgent::TimePoint start_;
  msglyr::DealerSet sockets_;
  std::vector<Seat> seats_;
  std::vector<Use> useOf_;  // by socket
  std::priority_queue<Due, std::vector<Due>, std::greater<>> due_;
  std::atomic<bool> stopped_{false};
  std::mutex tasksLock_;
  std::vector<std::packaged_task<void()>> tasks_;  // under tasksLock_
  bool takesTasks_ = true;                         // under tasksLock_
};

}  // namespace sma
