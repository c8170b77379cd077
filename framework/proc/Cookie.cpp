#include "framework/proc/Cookie.h"

#include <endian.h>
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
  // The high byte first, so that cookies sort in the order of the calls: who keeps them in a map
  // works at its end, and not all over it.
  const std::array<std::uint64_t, 2> words{run,
                                           htobe64(next.fetch_add(1, std::memory_order_relaxed))};
  cookie.allocate(words.data(), sizeof(words));
}

}  // namespace proc
