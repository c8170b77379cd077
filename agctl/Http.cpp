#include "agctl/Http.h"

#include <optional>

#include "framework/os/Clock.h"

namespace agctl {

Reply Exchanges::exchange(const Request& request, const std::function<unsigned()>& interrupts) {
  const auto now = [] {
    return os::Clock::instance().now();
  };
  const unsigned before = interrupts ? interrupts() : 0;
  std::optional<os::Clock::TimePoint> end;
  clear();
  start(0, request);
  while (true) {
    const auto finished =
        wait(end ? std::chrono::ceil<std::chrono::milliseconds>(*end - now()) : request.within);
    if (!finished.empty()) {
      return finished.front().reply;
    }
    const unsigned came = interrupts ? interrupts() - before : 0;
    if (came > 1 || (end && now() >= *end)) {
      clear();
      return tl::unexpected(TransportError{TransportError::Kind::kNoAnswer, "interrupted"});
    }
    if (came == 1 && !end) {
      end = now() + kAnswerAfterInterrupt;
    }
  }
}

std::string encode(std::string_view text) {
  static constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:";
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char letter : text) {
    if (kPlain.find(letter) != std::string_view::npos) {
      encoded += letter;
    } else {
      const auto byte = static_cast<unsigned char>(letter);
      encoded += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
  }
  return encoded;
}

}  // namespace agctl
