#include "framework/net/ChannelBank.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using net::ChannelBank;

TEST(ChannelBank, NewChannel_IsDown) {
  ChannelBank bank;
  bank.add("dme", "inproc://dme");
  EXPECT_EQ(bank.find("dme"), (ChannelBank::Channel{"inproc://dme", false, 0}));
  EXPECT_EQ(bank.find("other"), std::nullopt);
}

TEST(ChannelBank, ComingUpAgain_IsCounted) {
  ChannelBank bank;
  bank.add("dme", "inproc://dme");
  bank.setUp("dme", true);
  bank.setUp("dme", true);
  bank.setUp("dme", false);
  bank.setUp("dme", true);
  EXPECT_EQ(bank.find("dme"), (ChannelBank::Channel{"inproc://dme", true, 2}));
}

TEST(ChannelBank, UnknownName_HasNoEffect) {
  ChannelBank bank;
  bank.setUp("dme", true);
  EXPECT_TRUE(bank.channels().empty());
}

TEST(ChannelBank, AddedAgain_StartsOver) {
  ChannelBank bank;
  bank.add("dme", "inproc://dme");
  bank.setUp("dme", true);
  bank.add("dme", "ipc:///run/dme");
  EXPECT_EQ(bank.find("dme"), (ChannelBank::Channel{"ipc:///run/dme", false, 0}));
}

TEST(ChannelBank, TwoThreads_KeepTheCount) {
  ChannelBank bank;
  bank.add("dme", "inproc://dme");
  {
    std::jthread other([&] {
      for (int i = 0; i < 500; ++i) {
        bank.setUp("dme", true);
      }
    });
    for (int i = 0; i < 500; ++i) {
      bank.setUp("dme", true);
    }
  }
  EXPECT_EQ(bank.find("dme")->timesUp, 1U);
}

}  // namespace
