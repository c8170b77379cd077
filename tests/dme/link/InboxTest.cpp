#include "dme/link/Inbox.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>

#include "tests/support/ManualClock.h"

namespace dme {
namespace {

bool push(Inbox& inbox, std::uint64_t peer, std::string_view bytes) {
  return inbox.push(peer, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

std::string textOf(const StimulusBatch& batch, std::size_t place) {
  const auto bytes = batch.bytesOf(batch.entries()[place]);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(Inbox, SeveralPushed_AreTakenTogetherInOrder) {
  Inbox inbox;
  EXPECT_TRUE(push(inbox, 1, "one"));
  EXPECT_TRUE(push(inbox, 2, ""));
  EXPECT_TRUE(push(inbox, 3, "three"));
  StimulusBatch batch;
  ASSERT_TRUE(inbox.take(batch, std::nullopt));
  ASSERT_EQ(batch.entries().size(), 3u);
  EXPECT_EQ(textOf(batch, 0), "one");
  EXPECT_EQ(textOf(batch, 1), "");
  EXPECT_EQ(textOf(batch, 2), "three");
  EXPECT_EQ(batch.entries()[2].peer, 3u);
  EXPECT_TRUE(push(inbox, 1, "next"));
  ASSERT_TRUE(inbox.take(batch, std::nullopt));
  ASSERT_EQ(batch.entries().size(), 1u);
  EXPECT_EQ(textOf(batch, 0), "next");
}

TEST(Inbox, DeadlineWithoutStimuli_GivesAnEmptyBatch) {
  test_support::ManualClock clock;
  Inbox inbox;
  StimulusBatch batch;
  bool isOpen = false;
  std::thread taker([&] { isOpen = inbox.take(batch, clock.now() + std::chrono::seconds(5)); });
  EXPECT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(5000)));
  clock.advance(std::chrono::milliseconds(5000));
  taker.join();
  EXPECT_TRUE(isOpen);
  EXPECT_TRUE(batch.entries().empty());
}

TEST(Inbox, Closed_WakesTheTakerAndRefusesMore) {
  Inbox inbox;
  StimulusBatch batch;
  std::thread taker([&] {
    while (inbox.take(batch, std::nullopt)) {
    }
  });
  inbox.close();
  taker.join();
  EXPECT_FALSE(push(inbox, 1, "late"));
  EXPECT_EQ(inbox.dropped(), 1u);
}

TEST(Inbox, TooMuchWaiting_IsRefusedAndCounted) {
  Inbox inbox;
  const std::string half(Inbox::kMostBytes / 2, 'x');
  EXPECT_TRUE(push(inbox, 1, half));
  EXPECT_TRUE(push(inbox, 1, half));
  EXPECT_FALSE(push(inbox, 1, "x"));
  EXPECT_EQ(inbox.dropped(), 1u);
  StimulusBatch batch;
  ASSERT_TRUE(inbox.take(batch, std::nullopt));
  EXPECT_EQ(batch.size(), 67108864u);
  EXPECT_TRUE(push(inbox, 1, "x"));
}

TEST(Inbox, ManyThreads_LoseNothing) {
  Inbox inbox;
  std::thread pushers[3];
  for (std::uint64_t peer = 0; peer < 3; ++peer) {
    pushers[peer] = std::thread([&inbox, peer] {
      for (int i = 0; i < 1000; ++i) {
        push(inbox, peer, std::to_string(i));
      }
    });
  }
  int next[3] = {0, 0, 0};
  StimulusBatch batch;
  while (next[0] + next[1] + next[2] < 3000) {
    ASSERT_TRUE(inbox.take(batch, std::nullopt));
    for (std::size_t i = 0; i < batch.entries().size(); ++i) {
      EXPECT_EQ(textOf(batch, i), std::to_string(next[batch.entries()[i].peer]++));
    }
  }
  for (std::thread& pusher : pushers) {
    pusher.join();
  }
}

}  // namespace
}  // namespace dme
