#include "framework/utils/TimeZoneCache.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

namespace utils {

namespace {

constexpr std::size_t kMostFileBytes = 65536;
constexpr std::string_view kMagic = "TZif";

bool isLetterDigitOrSign(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-' || c == '+' || c == '/';
}

/// A relative path below the folder of zones. Dots, and so steps upwards, are in no zone's name.
bool isZoneName(const std::string& zone) {
  return !zone.empty() && zone.front() != '/' &&
         std::all_of(zone.begin(), zone.end(), isLetterDigitOrSign);
}

std::string readZoneFile(const std::string& zone) {
  std::ifstream file("/usr/share/zoneinfo/" + zone, std::ios::binary);
  std::string bytes(kMostFileBytes, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return bytes;
}

/// The footer of a zone file of version 2 or later (RFC 8536, section 3.3): the text between the
/// last two line feeds, which end the file.
std::string footerOf(const std::string& file) {
  if (!file.starts_with(kMagic) || file.back() != '\n') {
    return "";
  }
  const std::size_t end = file.size() - 1;
  const std::size_t begin = file.rfind('\n', end - 1);
  return begin == std::string::npos ? "" : file.substr(begin + 1, end - begin - 1);
}

}  // namespace

base::String posixRulesOf(const std::string& zone) {
  return isZoneName(zone) ? footerOf(readZoneFile(zone)) : "";
}

TimeZoneCache& TimeZoneCache::getInstance() {
  static TimeZoneCache& cache = *new TimeZoneCache;
  return cache;
}

void TimeZoneCache::setTimeZoneData(base::String zone) {
  const std::lock_guard guard(lock_);
  zone_ = zone.str();
}

base::String TimeZoneCache::getTimeZoneInPosix() const {
  std::string zone;
  {
    const std::lock_guard guard(lock_);
    zone = zone_;
  }
  return posixRulesOf(zone);
}

}  // namespace utils
