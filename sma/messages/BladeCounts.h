#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace sma {

/// What blades send.
enum class RequestKind {
  Register,
  Beat,
  Report,         ///< of the platform
  Failure,        ///< of an application instance
  Progress,       ///< of a command, with a wish for a reply
  QuietProgress,  ///< of a command, without
  Odd,            ///< anything that is wrong on purpose
};

struct KindName {
  RequestKind kind;
  std::string_view name;
};

/// The names by which tables, scenarios and --json call the kinds.
inline constexpr std::array<KindName, 7> kKindNames{{
    {RequestKind::Register, "registers"},
    {RequestKind::Beat, "beats"},
    {RequestKind::Report, "reports"},
    {RequestKind::Failure, "failures"},
    {RequestKind::Progress, "progress"},
    {RequestKind::QuietProgress, "quiet_progress"},
    {RequestKind::Odd, "odd"},
}};

using Statuses = std::map<unsigned, std::uint64_t>;  ///< replies by status code

/// Requests of one kind and what came of them.
struct RequestCounts {
  std::uint64_t sent = 0;
  std::uint64_t unanswered = 0;  ///< whose reply did not come in time, or not at all
  Statuses statuses;

  std::uint64_t replies() const;
  RequestCounts& operator+=(const RequestCounts& other);
};

/// What a blade sent and got, for the table at the end.
struct BladeCounts {
  std::array<RequestCounts, kKindNames.size()> requests;
  std::uint64_t unsent = 0;  ///< requests that the connection did not take
  std::uint64_t strays = 0;  ///< replies to nothing that is outstanding

  RequestCounts& of(RequestKind kind) { return requests[static_cast<std::size_t>(kind)]; }
  const RequestCounts& of(RequestKind kind) const {
    return requests[static_cast<std::size_t>(kind)];
  }
  std::uint64_t sent(RequestKind kind) const { return of(kind).sent; }
  std::uint64_t replies() const;
  Statuses statuses() const;
  /// Conforming requests, of all kinds that want a reply, that got none in time.
  std::uint64_t unanswered() const;
  BladeCounts& operator+=(const BladeCounts& other);
};

/// A count and the name that scenarios and --json give it.
struct CountName {
  std::string_view name;
  std::uint64_t (*count)(const BladeCounts&);
};

inline constexpr std::array<CountName, 13> kCountNames{{
    {"registers",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Register);
     }},
    {"beats",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Beat);
     }},
    {"reports",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Report);
     }},
    {"failures",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Failure);
     }},
    {"progress",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Progress);
     }},
    {"quiet_progress",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::QuietProgress);
     }},
    {"odd",
     [](const BladeCounts& counts) {
       return counts.sent(RequestKind::Odd);
     }},
    {"replies",
     [](const BladeCounts& counts) {
       return counts.replies();
     }},
    {"unanswered",
     [](const BladeCounts& counts) {
       return counts.unanswered();
     }},
    {"reports_unanswered",
     [](const BladeCounts& counts) {
       return counts.of(RequestKind::Report).unanswered;
     }},
    {"odd_unanswered",
     [](const BladeCounts& counts) {
       return counts.of(RequestKind::Odd).unanswered;
     }},
    {"unsent",
     [](const BladeCounts& counts) {
       return counts.unsent;
     }},
    {"strays",
     [](const BladeCounts& counts) {
       return counts.strays;
     }},
}};

/// The count of that name, or nothing when there is none.
std::optional<std::uint64_t> countByName(const BladeCounts& counts, std::string_view name);
std::optional<RequestKind> kindByName(std::string_view name);

}  // namespace sma
