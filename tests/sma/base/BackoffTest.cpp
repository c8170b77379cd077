#include "sma/base/Backoff.h"

#include <gtest/gtest.h>

namespace sma {
namespace {

using std::chrono::milliseconds;

TEST(Backoff, RepeatedFailures_PausesGrowToTheMost) {
  Backoff backoff(milliseconds(100), milliseconds(800), 1);
  for (const int span : {100, 200, 400, 800, 800, 800}) {
    const auto pause = backoff.next();
    EXPECT_GE(pause, milliseconds(span / 2));
    EXPECT_LE(pause, milliseconds(span));
  }
}

TEST(Backoff, AfterReset_StartsFromTheFirstPause) {
  Backoff backoff(milliseconds(100), milliseconds(100'000), 1);
  for (int i = 0; i < 8; ++i) {
    backoff.next();
  }
  backoff.reset();
  EXPECT_LE(backoff.next(), milliseconds(100));
}

TEST(Backoff, DifferentSeeds_PausesDiffer) {
  Backoff one(milliseconds(100'000), milliseconds(100'000), 1);
  Backoff same(milliseconds(100'000), milliseconds(100'000), 1);
  Backoff other(milliseconds(100'000), milliseconds(100'000), 2);
  const auto pause = one.next();
  EXPECT_EQ(pause, same.next());
  EXPECT_NE(pause, other.next());
}

}  // namespace
}  // namespace sma
