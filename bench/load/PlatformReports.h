#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "bench/load/Load.h"
#include "framework/msglyr/DealerSet.h"

namespace load {

/// Platform reports of a blade's usual machine with so many application instances that a document
/// has some 8 KB. The documents are those of different moments.
Request platformReports(std::uint32_t slot, std::size_t documents);

/// Reports of the blades in slots 1 to `blades`, each at a fixed interval and none at the same
/// time, from a thread of its own while the object lives.
class ReportTraffic {
 public:
  /// Returns when every blade has been answered once. Throws std::runtime_error if one is not, or
  /// is refused.
  ReportTraffic(const std::string& endPoint, unsigned blades, std::chrono::milliseconds interval);
  ~ReportTraffic();
  ReportTraffic(const ReportTraffic&) = delete;
  ReportTraffic& operator=(const ReportTraffic&) = delete;

  struct Figures {
    std::size_t refused = 0;
    std::size_t late = 0;              ///< not sent in time: the one before was not answered yet
    std::vector<std::uint32_t> nanos;  ///< round-trip time of each report that was answered
  };
  /// Ends the traffic.
  Figures stop();

 private:
  using Clock = std::chrono::steady_clock;
  struct Blade {
    Request request;
    Clock::time_point due;
    Clock::time_point sent;
    bool isWaiting = false;
    std::size_t answers = 0;
  };

  void run(std::stop_token stop);
  void sendDue(Clock::time_point now);
  void send(std::size_t blade, Clock::time_point now);
  void poll(Clock::time_point until);
  Clock::time_point nextDue() const;
  bool allAnswered() const;

  const std::chrono::milliseconds interval_;
  // The thread's once it runs; before and after, the caller's.
  msglyr::DealerSet sockets_;
  std::vector<Blade> blades_;
  Figures figures_;
  std::jthread thread_;
};

}  // namespace load
