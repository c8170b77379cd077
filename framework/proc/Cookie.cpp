#include "framework/proc/Cookie.h"

#include <sys/random.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace proc {

namespace {

std::uint64_t drawRun() {
  std::uint64_t run = 0;
  while (getrandom(&run, sizeof(run), 0) != static_cast<ssize_t>(sizeof(run))) {
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
  }
  return run;
}

}  // namespace

void makeCookie(base::Buffer& cookie) {
  static const std::uint64_t run = drawRun();
  static std::atomic<std::uint64_t> next{1};
  const std::array<std::uint64_t, 2> words{run, next.fetch_add(1, std::memory_order_relaxed)};
  cookie.allocate(words.data(), sizeof(words));
}

}  // namespace proc
