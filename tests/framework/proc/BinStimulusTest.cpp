#include "framework/proc/BinStimulus.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace {

using proc::BinStimulus;
using proc::Stimulus;

void drainPool() {
  while (BinStimulus::POOL.take() != nullptr) {
  }
}

std::vector<unsigned char> built(BinStimulus& stimulus) {
  stimulus.setCookie(base::Buffer("c", 1));
  stimulus.setAddress({26, 1, 26, 0});
  stimulus.serialize(stimulus.stream());
  stimulus.stream().write(std::uint32_t{3});
  base::OBioStream out;
  stimulus.encode(out);
  return {out.data(), out.data() + out.size()};
}

TEST(BinStimulus, PooledAndFresh_GiveTheSameBytes) {
  drainPool();
  const std::vector<unsigned char> fresh = built(*BinStimulus::obtain(398, 0, 0x100000));

  auto used = BinStimulus::obtain(575, 0x10, 0);
  used->setPriority(Stimulus::Priority::kHighest);
  used->setResponseRequired(false);
  used->setDataBit(0, false);
  used->setDataBit(7, true);
  used->setCookie(base::Buffer("left over", 9));
  used->setAddress({9, 9, 9, 9});
  used->reportFailure(1, 2, "left over");
  used->stream().write(std::uint64_t{99});
  const BinStimulus* const kept = used.get();
  BinStimulus::POOL.give(std::move(used));

  const auto pooled = BinStimulus::obtain(398, 0, 0x100000);
  ASSERT_EQ(pooled.get(), kept);
  EXPECT_EQ(pooled->failure(), nullptr);
  EXPECT_EQ(built(*pooled), fresh);
}

TEST(BinStimulus, Fresh_IsAMethodCallThatRequiresAResponse) {
  drainPool();
  const auto stimulus = BinStimulus::obtain(575, 0x10, 0);
  EXPECT_EQ(stimulus->classId(), 575U);
  EXPECT_EQ(stimulus->type(), 0x2000U);
  EXPECT_EQ(stimulus->intent(), 0x10U);
  EXPECT_EQ(stimulus->bulk(), 0U);
  EXPECT_EQ(stimulus->priority(), Stimulus::Priority{4});
  EXPECT_TRUE(stimulus->isResponseRequired());
  EXPECT_TRUE(stimulus->dataBit(0));
  EXPECT_TRUE(stimulus->cookie().empty());
}

TEST(BinStimulusPool, MoreThan256_AreFreed) {
  drainPool();
  for (int i = 0; i < 300; ++i) {
    BinStimulus::POOL.give(
        std::make_unique<BinStimulus>(1, 0x2000, 0, 0, Stimulus::Priority::kDefault, 0, 0));
  }
  EXPECT_EQ(BinStimulus::POOL.idle(), 256U);
  drainPool();
  EXPECT_EQ(BinStimulus::POOL.idle(), 0U);
}

TEST(BinStimulusPool, OneThatGrewLarge_IsFreed) {
  drainPool();
  auto stimulus = BinStimulus::obtain(1, 0, 0);
  const std::vector<unsigned char> large(20000);
  stimulus->stream().loopWrite(large.data(), 20000);
  BinStimulus::POOL.give(std::move(stimulus));
  EXPECT_EQ(BinStimulus::POOL.idle(), 0U);
}

TEST(BinStimulusPool, Null_IsIgnored) {
  drainPool();
  BinStimulus::POOL.give(nullptr);
  EXPECT_EQ(BinStimulus::POOL.idle(), 0U);
}

TEST(BinStimulusPool, FourThreads_NeverShareOne) {
  drainPool();
  std::vector<std::jthread> threads;
  for (std::uint32_t id = 1; id <= 4; ++id) {
    threads.emplace_back([id] {
      for (int i = 0; i < 1000; ++i) {
        auto stimulus = BinStimulus::obtain(id, 0, 0);
        stimulus->serialize(stimulus->stream());
        ASSERT_EQ(stimulus->classId(), id);
        BinStimulus::POOL.give(std::move(stimulus));
      }
    });
  }
  threads.clear();
  EXPECT_LE(BinStimulus::POOL.idle(), 4U);
}

}  // namespace
