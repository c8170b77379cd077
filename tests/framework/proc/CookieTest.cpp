#include "framework/proc/Cookie.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace {

TEST(Cookie, MadeByFourThreads_AreAllDifferent) {
  std::mutex lock;
  std::set<base::Buffer> cookies;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&] {
        for (int i = 0; i < 500; ++i) {
          base::Buffer cookie;
          proc::makeCookie(cookie);
          const std::lock_guard guard(lock);
          cookies.insert(cookie);
        }
      });
    }
  }
  EXPECT_EQ(cookies.size(), 2000U);
}

TEST(Cookie, HasSixteenBytes) {
  base::Buffer cookie("old content that is longer", 26);
  proc::makeCookie(cookie);
  EXPECT_EQ(cookie.size(), 16U);
}

}  // namespace
