#include "sma/Fault.h"

#include <array>
#include <utility>

namespace sma {
namespace {

constexpr std::array<std::pair<Fault, std::string_view>, 11> kNames{{
    {Fault::WrongToken, "wrong-token"},
    {Fault::EmptyToken, "empty-token"},
    {Fault::Silence, "silence"},
    {Fault::DuplicateBeats, "duplicate-beats"},
    {Fault::MalformedXml, "malformed-xml"},
    {Fault::TruncatedXml, "truncated-xml"},
    {Fault::OversizedXml, "oversized-xml"},
    {Fault::WrongPartCount, "wrong-part-count"},
    {Fault::WrongContentType, "wrong-content-type"},
    {Fault::UnknownCommand, "unknown-command"},
    {Fault::ForeignSubject, "foreign-subject"},
}};

}  // namespace

std::string_view faultName(Fault fault) {
  for (const auto& [value, name] : kNames) {
    if (value == fault) {
      return name;
    }
  }
  return "unknown";
}

std::optional<Fault> faultByName(std::string_view name) {
  for (const auto& [value, known] : kNames) {
    if (known == name) {
      return value;
    }
  }
  return std::nullopt;
}

std::vector<std::string_view> faultNames() {
  std::vector<std::string_view> names;
  names.reserve(kNames.size());
  for (const auto& entry : kNames) {
    names.push_back(entry.second);
  }
  return names;
}

bool isOneRequest(Fault fault) {
  switch (fault) {
    case Fault::WrongToken:
    case Fault::EmptyToken:
    case Fault::Silence:
    case Fault::DuplicateBeats:
      return false;
    default:
      return true;
  }
}

}  // namespace sma
