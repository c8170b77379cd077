#include "agctl/Times.h"

#include <array>
#include <ctime>

namespace agctl {
namespace {

constexpr int kLastYear = 9999;

}  // namespace

std::string timeText(std::uint64_t milliseconds) {
  if (milliseconds == 0) {
    return "";
  }
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  std::array<char, 32> text{};
  if (gmtime_r(&seconds, &parts) == nullptr || parts.tm_year > kLastYear - 1900 ||
      std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%SZ", &parts) == 0) {
    return std::to_string(milliseconds);
  }
  return text.data();
}

}  // namespace agctl
