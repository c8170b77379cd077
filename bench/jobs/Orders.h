#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "agctl/CurlExchanges.h"
#include "agctl/Json.h"

namespace jobs {

/// What is done to an instance in turns: the verb, and the command that a blade is sent for it.
struct Step {
  const char* verb;
  const char* command;
};
inline constexpr std::array<Step, 4> kCycle{{{"install", "installApp"},
                                             {"start", "startApp"},
                                             {"stop", "stopApp"},
                                             {"uninstall", "uninstallApp"}}};

/// The instance that is operated on in a slot.
std::string appIn(std::uint32_t slot);

/// Orders jobs over the admin interface, one after the other for each instance, all instances at
/// once. Throws std::runtime_error, naming the answer, when an answer is not what it should be.
class Orders {
 public:
  explicit Orders(const std::string& socket) : exchanges_(socket) {}

  /// The document at this path of the interface.
  agctl::Json get(const std::string& path);
  /// Describes an instance in each of the slots 1 to `slots`.
  void createApps(std::uint32_t slots);

  /// From the order of each job to the answer that it has succeeded.
  std::vector<std::uint32_t> run(std::uint32_t slots, unsigned cycles);

 private:
  using Clock = std::chrono::steady_clock;
  /// What is under way for the instance in a slot.
  struct Line {
    unsigned done = 0;
    bool isOrdered = false;
    std::string job;
    Clock::time_point ordered;
  };

  void begin(std::uint32_t slot, Line& line);
  /// False when the line has come to its end.
  bool next(std::uint32_t slot, Line& line, const agctl::Response& response, unsigned wanted);

  agctl::CurlExchanges exchanges_;
  std::vector<std::uint32_t> nanos_;
};

}  // namespace jobs
