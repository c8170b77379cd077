#include "sma/messages/BladeCounts.h"

namespace sma {
namespace {

void add(const Statuses& from, Statuses& to) {
  for (const auto& [status, count] : from) {
    to[status] += count;
  }
}

}  // namespace

std::uint64_t RequestCounts::replies() const {
  std::uint64_t sum = 0;
  for (const auto& entry : statuses) {
    sum += entry.second;
  }
  return sum;
}

RequestCounts& RequestCounts::operator+=(const RequestCounts& other) {
  sent += other.sent;
  unanswered += other.unanswered;
  add(other.statuses, statuses);
  return *this;
}

std::uint64_t BladeCounts::replies() const {
  std::uint64_t sum = 0;
  for (const RequestCounts& each : requests) {
    sum += each.replies();
  }
  return sum;
}

Statuses BladeCounts::statuses() const {
  Statuses all;
  for (const RequestCounts& each : requests) {
    add(each.statuses, all);
  }
  return all;
}

std::uint64_t BladeCounts::unanswered() const {
  std::uint64_t sum = 0;
  for (const KindName& each : kKindNames) {
    if (each.kind != RequestKind::Odd && each.kind != RequestKind::QuietProgress) {
      sum += of(each.kind).unanswered;
    }
  }
  return sum;
}

BladeCounts& BladeCounts::operator+=(const BladeCounts& other) {
  for (std::size_t i = 0; i < requests.size(); ++i) {
    requests[i] += other.requests[i];
  }
  unsent += other.unsent;
  strays += other.strays;
  return *this;
}

std::optional<std::uint64_t> countByName(const BladeCounts& counts, std::string_view name) {
  for (const CountName& each : kCountNames) {
    if (each.name == name) {
      return each.count(counts);
    }
  }
  return std::nullopt;
}

std::optional<RequestKind> kindByName(std::string_view name) {
  for (const KindName& each : kKindNames) {
    if (each.name == name) {
      return each.kind;
    }
  }
  return std::nullopt;
}

}  // namespace sma
