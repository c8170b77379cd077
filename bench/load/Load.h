#pragma once

#include <time.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace load {

/// How a load is offered: so many connections, each with so many requests under way.
struct Shape {
  unsigned clients;
  unsigned outstanding;
};

struct Plan {
  std::string endPoint;
  Shape shape;
  std::chrono::milliseconds warmUp;
  std::chrono::milliseconds measured;
  clockid_t serverClock;  ///< CPU time of the server's process
};

/// What the blades ask for.
struct Request {
  std::string command;                 ///< as in the subject, with its action if it has one
  std::vector<std::string> documents;  ///< taken in turns
};

struct Result {
  std::uint64_t requests = 0;
  std::uint64_t refused = 0;  ///< of these, replies with another status than 100
  double seconds = 0;
  double serverCpuMicros = 0;        ///< per request
  std::vector<std::uint32_t> nanos;  ///< round-trip time of each request
  std::string failure;               ///< empty, or why the figures are void

  double rate() const { return static_cast<double>(requests) / seconds; }
};

/// CPU time of a process so far, in microseconds.
inline double cpuMicros(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

/// Slots of the blades that loads speak for: 1 to this number, in turns.
inline constexpr unsigned kLoadSlots = 16;

/// A closed loop of requests over ZeroMQ. Each reply must be of five parts and carry the message id
/// of its request.
Result loadRequests(const Plan& plan, const Request& request);

/// The same of heartbeats.
Result loadHeartbeats(const Plan& plan);

}  // namespace load
