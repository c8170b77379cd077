#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace sma {

/// What a blade sent and got, for the table at the end.
struct BladeCounts {
  std::uint64_t registers = 0;
  std::uint64_t beats = 0;
  std::uint64_t odd = 0;  ///< requests sent on purpose wrong
  std::uint64_t replies = 0;
  std::uint64_t unanswered = 0;     ///< conforming requests whose reply did not come in time
  std::uint64_t oddUnanswered = 0;  ///< odd requests that got no reply, as most of them should
  std::uint64_t unsent = 0;         ///< requests that the connection did not take
  std::uint64_t strays = 0;         ///< replies to nothing that is outstanding
  std::map<unsigned, std::uint64_t> statuses;  ///< replies by status code
};

/// A count and the name that scenarios and --json give it.
struct CountName {
  std::string_view name;
  std::uint64_t BladeCounts::*count;
};

inline constexpr std::array<CountName, 8> kCountNames{{
    {"registers", &BladeCounts::registers},
    {"beats", &BladeCounts::beats},
    {"odd", &BladeCounts::odd},
    {"replies", &BladeCounts::replies},
    {"unanswered", &BladeCounts::unanswered},
    {"odd_unanswered", &BladeCounts::oddUnanswered},
    {"unsent", &BladeCounts::unsent},
    {"strays", &BladeCounts::strays},
}};

/// The count of that name, or nothing when there is none.
inline std::optional<std::uint64_t> countByName(const BladeCounts& counts, std::string_view name) {
  for (const CountName& each : kCountNames) {
    if (each.name == name) {
      return counts.*each.count;
    }
  }
  return std::nullopt;
}

}  // namespace sma
