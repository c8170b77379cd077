#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/serviceOrchAG/bridge/SMAClientHarness.h"

// Commands that meet others, queries and removals.

namespace zan_serviceOrchAG::sma_client_test {
namespace {

using testing::ElementsAre;

/// An exchange that the test ends.
class HeldExchange {
 public:
  explicit HeldExchange(ScriptedChannel& channels, int result = 5) {
    channels.onReceive([this, result](msglyr::Message& message) {
      begun_.set_value();
      end_.get_future().wait();
      message.parts() = kAnswer;
      return result;
    });
  }
  void waitUntilBegun() { begun_.get_future().wait(); }
  void end() { end_.set_value(); }

 private:
  std::promise<void> begun_;
  std::promise<void> end_;
};

void waitForWaiters(std::size_t count) {
  while (Critical_section_lock.waiterCount() < count) {
    std::this_thread::yield();
  }
}

TEST_F(SMAClientTest, RemovedDuringAnExchange_TheClientLivesUntilItsEnd) {
  registerBlade("3");
  HeldExchange exchange(channels_);
  auto command = std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); });
  exchange.waitUntilBegun();
  auto removal = std::async(std::launch::async, [] { return removeBladeMapEntry("3"); });
  waitForWaiters(1);
  EXPECT_EQ(1U, channels_.alive());
  exchange.end();
  EXPECT_EQ(100U, command.get());
  EXPECT_TRUE(removal.get());
  EXPECT_EQ(0U, channels_.alive());
  EXPECT_EQ(580U, sendMsg("3", "<a/>", "stopApp"));
}

TEST_F(SMAClientTest, RemovedDuringAFailingExchange_TheChannelIsReplacedFirst) {
  registerBlade("3");
  HeldExchange exchange(channels_, 0);
  auto command = std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); });
  exchange.waitUntilBegun();
  auto removal = std::async(std::launch::async, [] { return removeBladeMapEntry("3"); });
  waitForWaiters(1);
  exchange.end();
  EXPECT_EQ(578U, command.get());
  EXPECT_TRUE(removal.get());
  const std::vector<std::string> events = channels_.events();
  ASSERT_EQ(8U, events.size());
  EXPECT_THAT(std::vector<std::string>(events.begin() + 4, events.end()),
              ElementsAre("destroy", "create ZEDServiceOrchAGChannel 4",
                          "server tcp://10.0.0.3:5560", "destroy"));
}

TEST_F(SMAClientTest, RegisteredAgainDuringAnExchange_WaitsAndKeepsTheClient) {
  registerBlade("3");
  HeldExchange exchange(channels_);
  auto command = std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); });
  exchange.waitUntilBegun();
  auto registration =
      std::async(std::launch::async, [] { createSMAClient("3", "10.9.9.9", "1", false); });
  waitForWaiters(1);
  exchange.end();
  EXPECT_EQ(100U, command.get());
  registration.get();
  EXPECT_FALSE(getBladeStatus("3"));
  EXPECT_EQ(1U, channels_.alive());
}

TEST_F(SMAClientTest, CommandsOfTwoBlades_GoOutOneAfterTheOther) {
  constexpr int kCommands = 50;
  registerBlade("3");
  registerBlade("4");
  std::atomic<int> underWay = 0;
  for (int command = 0; command < 2 * kCommands; ++command) {
    channels_.onReceive([&underWay](msglyr::Message& message) {
      EXPECT_EQ(1, ++underWay);
      std::this_thread::yield();  // to whoever does not wait for this exchange
      --underWay;
      message.parts() = kAnswer;
      return 5;
    });
  }
  std::vector<std::future<void>> senders;
  for (const char* slot : {"3", "4"}) {
    senders.push_back(std::async(std::launch::async, [slot] {
      for (int command = 0; command < kCommands; ++command) {
        EXPECT_EQ(100U, sendMsg(slot, "<a/>", "stopApp"));
      }
    }));
  }
  for (std::future<void>& sender : senders) {
    sender.get();
  }
  EXPECT_EQ(2U * kCommands, channels_.sent().size());
}

TEST_F(SMAClientTest, QueryBehindManyCommands_WaitsForTheOneUnderWayOnly) {
  registerBlade("3");
  std::atomic<int> exchanges = 0;
  HeldExchange first(channels_);
  for (int command = 0; command < 4; ++command) {
    channels_.onReceive([&exchanges](msglyr::Message& message) {
      ++exchanges;
      message.parts() = kAnswer;
      return 5;
    });
  }
  std::vector<std::future<unsigned>> commands;
  commands.push_back(
      std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); }));
  first.waitUntilBegun();
  for (int command = 0; command < 4; ++command) {
    commands.push_back(
        std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); }));
  }
  int exchangesBeforeTheQuery = -1;
  auto query = std::async(std::launch::async, [&] {
    const os::CriticalSection::Guard guard(Critical_section_lock);
    exchangesBeforeTheQuery = exchanges;
    return getBladeStatus("3");
  });
  waitForWaiters(1);
  first.end();
  EXPECT_TRUE(query.get());
  EXPECT_EQ(0, exchangesBeforeTheQuery);
  for (auto& command : commands) {
    EXPECT_EQ(100U, command.get());
  }
}

TEST_F(SMAClientTest, HolderOfTheRegistryLock_DoesNotQueueBehindACommandThatWaitsForIt) {
  registerBlade("3");
  HeldExchange exchange(channels_);
  channels_.onReceive(kAnswer);
  channels_.onReceive(kAnswer);
  const auto stop = [] {
    return sendMsg("3", "<a/>", "stopApp");
  };
  auto first = std::async(std::launch::async, stop);
  exchange.waitUntilBegun();
  auto holder = std::async(std::launch::async, [] {
    const os::CriticalSection::Guard guard(Critical_section_lock);
    waitForWaiters(1);
    return sendMsg("3", "<b/>", "startApp");
  });
  waitForWaiters(1);
  auto second = std::async(std::launch::async, stop);
  exchange.end();
  EXPECT_EQ(100U, first.get());
  EXPECT_EQ(100U, holder.get());
  EXPECT_EQ(100U, second.get());
}

TEST_F(SMAClientTest, CommandsQueriesAndRemovalsRace_EveryCommandGetsACode) {
  constexpr int kRounds = 100;
  for (int round = 0; round < 2 * kRounds; ++round) {
    channels_.onReceive(kAnswer);
  }
  std::vector<std::thread> threads;
  for (int sender = 0; sender < 2; ++sender) {
    threads.emplace_back([] {
      for (int round = 0; round < kRounds; ++round) {
        const unsigned code = sendMsg("3", "<a/>", "stopApp");
        EXPECT_TRUE(code == 100U || code == 580U || code == 581U) << code;
      }
    });
  }
  threads.emplace_back([] {
    for (int round = 0; round < kRounds; ++round) {
      createSMAClient("3", "10.0.0.3", "1", round % 3 != 0);
      if (round % 2 == 0) {
        removeBladeMapEntry("3");
      }
    }
  });
  threads.emplace_back([] {
    for (int round = 0; round < kRounds; ++round) {
      is_bladeRegistered("3");
      getBladeStatus("3");
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG::sma_client_test
