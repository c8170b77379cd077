#include "serviceOrchAG/bridge/SMAClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;
using test_support::RegistryCleaner;
using test_support::ScriptedChannel;
using test_support::throws;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

const ScriptedChannel::Parts kAnswer{"serviceOrchAG.stopApp", "nox-xml:1", "1", "100", "<done/>"};

class SMAClientTest : public testing::Test {
 protected:
  void registerBlade(const std::string& slot, bool status = true) {
    createSMAClient(slot, "10.0.0." + slot, "5560", status);
  }

  std::vector<std::string> sentIds() const {
    std::vector<std::string> ids;
    for (const auto& message : channels_.sent()) {
      ids.push_back(message.parts.at(2));
    }
    return ids;
  }

  ScriptedChannel channels_;
  LogCapture log_;
  const RegistryCleaner cleaner_{};
};

// ----- The exchange -----------------------------------------------------------------------------

TEST_F(SMAClientTest, Command_GoesOutAsFivePartsAndItsAnswerIsAwaitedTenSeconds) {
  registerBlade("3");
  channels_.onReceive(kAnswer);
  EXPECT_EQ(100U, sendMsg("3", "<formatDiskRequest/>", "formatDisk"));
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("sma_slot3.formatDisk", channels_.sent()[0].address);
  EXPECT_THAT(channels_.sent()[0].parts, ElementsAre("sma_slot3.formatDisk", "nox-xml:1", "1",
                                                     "serviceOrchAG", "<formatDiskRequest/>"));
  EXPECT_EQ("receive 10000", channels_.events().back());
}

TEST_F(SMAClientTest, Command_LogsItsWay) {
  registerBlade("3");
  channels_.onReceive(kAnswer);
  log_.clear();
  sendMsg("3", "<stop/>", "stopApp");
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(
          LogLine{1, "sendMsg", "stopApp:: Retrieved slotId: 3 "},
          LogLine{1, "send",
                  "Built serviceAG request subject = sma_slot3.stopApp, Command = "
                  "sma_slot3.stopApp, Content-type = nox-xml:1, Client Identity = serviceOrchAG, "
                  "Message ID = 1, Message = <stop/> "},
          LogLine{5, "send",
                  "Sending servicveAG request Message Id[1], Message[<stop/>] to server at "
                  "tcp://10.0.0.3:5560"},
          LogLine{5, "send",
                  "100 : SMA response [ Message : <done/>] received by serviceAG for request [ "
                  "Message Id = 1, subject = sma_slot3.stopApp, message = <stop/> ]"}));
}

TEST_F(SMAClientTest, Answered_KeepsTheChannelAndCountsOn) {
  registerBlade("3");
  channels_.onReceive(kAnswer);
  channels_.onReceive(kAnswer);
  sendMsg("3", "<a/>", "stopApp");
  sendMsg("3", "<b/>", "startApp");
  EXPECT_THAT(sentIds(), ElementsAre("1", "2"));
  EXPECT_EQ(1U, channels_.alive());
  EXPECT_THAT(channels_.events(), testing::Not(Contains("destroy")));
}

TEST_F(SMAClientTest, EachBlade_CountsByItself) {
  registerBlade("3");
  registerBlade("4");
  channels_.onReceive(kAnswer);
  channels_.onReceive(kAnswer);
  sendMsg("3", "<a/>", "stopApp");
  sendMsg("4", "<a/>", "stopApp");
  EXPECT_THAT(sentIds(), ElementsAre("1", "1"));
}

TEST_F(SMAClientTest, SixPartAnswer_IsAnAnswer) {
  registerBlade("3");
  channels_.onReceive(ScriptedChannel::Parts{"a", "b", "c", "d", "fifth", "f"});
  EXPECT_EQ(100U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(5,
                            "100 : SMA response [ Message : fifth] received by serviceAG for "
                            "request [ Message Id = 1, subject = sma_slot3.stopApp, message = "
                            "<a/> ]"));
}

TEST_F(SMAClientTest, RefusalOfTheBlade_IsAnAnswer) {
  registerBlade("3");
  channels_.onReceive(ScriptedChannel::Parts{"x", "nox-xml:1", "77", "508", "<failed/>"});
  EXPECT_EQ(100U, sendMsg("3", "<a/>", "stopApp"));
}

struct FewParts {
  int result;
  unsigned code;
  const char* text;
};

class TooFewParts : public SMAClientTest, public testing::WithParamInterface<FewParts> {};

TEST_P(TooFewParts, Command_FailsAndGetsAFreshChannel) {
  registerBlade("3");
  channels_.onReceive(GetParam().result);
  channels_.onReceive(kAnswer);
  const std::vector<std::string> before = channels_.events();
  EXPECT_EQ(GetParam().code, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(6, std::to_string(GetParam().code) + " : " + GetParam().text +
                                   " for Message Id[1], subject[sma_slot3.stopApp], "
                                   "message[<a/>]"));
  const std::vector<std::string> events = channels_.events();
  EXPECT_THAT(
      std::vector<std::string>(events.begin() + static_cast<long>(before.size()), events.end()),
      ElementsAre("send sma_slot3.stopApp", "receive 10000", "destroy",
                  "create ZEDServiceOrchAGChannel 4", "server tcp://10.0.0.3:5560"));
  EXPECT_EQ(100U, sendMsg("3", "<b/>", "startApp"));
  EXPECT_THAT(sentIds(), ElementsAre("1", "2"));
}

INSTANTIATE_TEST_SUITE_P(
    All, TooFewParts,
    testing::Values(FewParts{0, 578, "serviceAG received timeout or zero response part from SMA"},
                    FewParts{-1, 579, "No response received or missing message part from SMA"},
                    FewParts{1, 579, "No response received or missing message part from SMA"},
                    FewParts{2, 579, "No response received or missing message part from SMA"},
                    FewParts{3, 579, "No response received or missing message part from SMA"},
                    FewParts{4, 579, "No response received or missing message part from SMA"}));

TEST_F(SMAClientTest, Reset_LogsItsWay) {
  registerBlade("3");
  channels_.onReceive(0);
  log_.clear();
  sendMsg("3", "<a/>", "stopApp");
  const std::vector<LogLine> lines = log_.lines();
  ASSERT_EQ(7U, lines.size());
  EXPECT_THAT(
      std::vector<LogLine>(lines.begin() + 4, lines.end()),
      ElementsAre(
          LogLine{1, "resetClientChannel", "resetting smaClient channel... for slot 3"},
          LogLine{1, "setClientChannel", "Set server end point for slot 3 : tcp://10.0.0.3:5560"},
          LogLine{1, "resetClientChannel",
                  "SMAClient::resetClientChannel() for slot 3 end point: 10.0.0.3:5560"}));
}

// ----- Exceptions of the channel ----------------------------------------------------------------

struct Thrown {
  std::function<int(msglyr::Message&)> action;
  unsigned code;
  const char* caught;
  const char* error;  // null: the outcome line names none
};

class ChannelThrows : public SMAClientTest, public testing::WithParamInterface<Thrown> {};

TEST_P(ChannelThrows, Receive_EndsInACodeAndAFreshChannel) {
  registerBlade("3");
  channels_.onReceive(GetParam().action);
  EXPECT_EQ(GetParam().code, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(8, GetParam().caught));
  if (GetParam().error != nullptr) {
    EXPECT_TRUE(log_.contains(8, std::string("577 : REQ/REP between ServiceAG and SMA failed for "
                                             "Message Id[1], subject[sma_slot3.stopApp], "
                                             "message[<a/>], error[") +
                                     GetParam().error + "]"));
  } else {
    EXPECT_TRUE(log_.contains(6,
                              "579 : No response received or missing message part from SMA for "
                              "Message Id[1], subject[sma_slot3.stopApp], message[<a/>]"));
  }
  EXPECT_THAT(channels_.events(), Contains("destroy"));
  EXPECT_EQ(1U, channels_.alive());
}

INSTANTIATE_TEST_SUITE_P(
    All, ChannelThrows,
    testing::Values(
        Thrown{throws(std::runtime_error("broken pipe")), 577,
               "send::send() caught std exception: broken pipe", "broken pipe"},
        Thrown{throws(std::runtime_error("")), 579, "send::send() caught std exception: ", nullptr},
        Thrown{throws(std::string("text")), 577, "send::send() caught string exception: text",
               "text"},
        Thrown{throws(std::string()), 579, "send::send() caught string exception: ", nullptr},
        Thrown{throws(std::string("%s%n")), 577, "send::send() caught string exception: %s%n",
               "%s%n"},
        Thrown{throws(7), 577, "send::send() caught an unknown exception",
               "caught an unknown exception"}));

TEST_F(SMAClientTest, SendThrows_NothingIsReceived) {
  registerBlade("3");
  channels_.onSend(throws(std::runtime_error("would block")));
  EXPECT_EQ(577U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_THAT(channels_.events(), testing::Not(Contains("receive 10000")));
}

TEST_F(SMAClientTest, ResetThrows_CommandKeepsItsCodeAndTheNextOneFindsNoChannel) {
  registerBlade("3");
  channels_.onReceive(0);
  channels_.onServerEndPoint(throws(std::runtime_error("no descriptors")));
  EXPECT_EQ(578U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(8, "Resetting the channel of slot 3 failed: no descriptors"));
  EXPECT_EQ(0U, channels_.alive());
  EXPECT_TRUE(is_bladeRegistered("3"));

  EXPECT_EQ(576U, sendMsg("3", "<b/>", "startApp"));
  EXPECT_TRUE(log_.contains(6,
                            "576 : SMAClient channel is not initialized for Message Id[2], "
                            "subject[sma_slot3.startApp], message[<b/>] "));
  EXPECT_EQ(1U, channels_.sent().size());

  channels_.onReceive(kAnswer);
  EXPECT_EQ(100U, sendMsg("3", "<c/>", "startApp"));
  EXPECT_THAT(sentIds(), ElementsAre("1", "3"));
}

TEST_F(SMAClientTest, ResetThrowsSomethingElse_IsCaughtToo) {
  registerBlade("3");
  channels_.onReceive(0);
  channels_.onReceive(0);
  channels_.onCreate([] {});
  channels_.onServerEndPoint(throws(7));
  EXPECT_EQ(578U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(8, "Resetting the channel of slot 3 failed"));
  channels_.onCreate(throws(std::string("no channel")));
  EXPECT_EQ(576U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_EQ(0U, channels_.alive());
}

TEST_F(SMAClientTest, WithoutAChannel_SetClientChannelOnlyLogs) {
  registerBlade("3");
  channels_.onReceive(0);
  channels_.onServerEndPoint(throws(std::runtime_error("no descriptors")));
  sendMsg("3", "<a/>", "stopApp");
  log_.clear();
  std::string slot = "3";
  std::string ip = "10.0.0.3";
  ClientMap.at("3")->setClientChannel(slot, ip, 1);
  EXPECT_THAT(log_.lines(), ElementsAre(LogLine{8, "setClientChannel",
                                                "SMAClient:: 3 sma_dealer_client is null"}));
  EXPECT_FALSE(Critical_section_lock.isHeldByCaller());
}

// ----- The blade's state ------------------------------------------------------------------------

TEST_F(SMAClientTest, UnknownSlot_IsRefused) {
  EXPECT_EQ(580U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{6, "sendMsg", "stopApp : SMA is not registered for slot 3"}));
  EXPECT_FALSE(Critical_section_lock.isHeldByCaller());
}

TEST_F(SMAClientTest, InvalidBlade_TakesADiskFormatAndNothingElse) {
  registerBlade("3", false);
  log_.clear();
  EXPECT_EQ(581U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{6, "sendMsg",
                                  "stopApp : Blade is not in valid state for slot 3. Please format "
                                  "the blade."}));
  EXPECT_THAT(channels_.sent(), IsEmpty());
  channels_.onReceive(kAnswer);
  EXPECT_EQ(100U, sendMsg("3", "<a/>", "formatDisk"));
}

TEST_F(SMAClientTest, InvalidBlade_CommandNameIsComparedWholeAndExactly) {
  registerBlade("3", false);
  for (const char* command :
       {"FormatDisk", "formatdisk", "formatDisk.x", "formatDis", "", "x.formatDisk"}) {
    EXPECT_EQ(581U, sendMsg("3", "<a/>", command)) << command;
  }
  EXPECT_THAT(channels_.sent(), IsEmpty());
}

TEST_F(SMAClientTest, RefusedCommand_UsesNoMessageId) {
  registerBlade("3", false);
  sendMsg("3", "<a/>", "stopApp");
  setBladeStatus("3", true);
  channels_.onReceive(kAnswer);
  sendMsg("3", "<a/>", "stopApp");
  EXPECT_THAT(sentIds(), ElementsAre("1"));
}

TEST_F(SMAClientTest, RegisteredAnew_CountsFromOne) {
  registerBlade("3");
  channels_.onReceive(kAnswer);
  channels_.onReceive(kAnswer);
  sendMsg("3", "<a/>", "stopApp");
  removeBladeMapEntry("3");
  registerBlade("3");
  sendMsg("3", "<a/>", "stopApp");
  EXPECT_THAT(sentIds(), ElementsAre("1", "1"));
}

// ----- Hostile texts ----------------------------------------------------------------------------

TEST_F(SMAClientTest, FormatSpecifiers_TravelAndAreLoggedAsTheyAre) {
  registerBlade("3");
  channels_.onReceive(ScriptedChannel::Parts{"", "", "", "", "%s%n\x1b[2J"});
  EXPECT_EQ(100U, sendMsg("3", "<%s%n/>", "%d"));
  EXPECT_THAT(channels_.sent()[0].parts,
              ElementsAre("sma_slot3.%d", "nox-xml:1", "1", "serviceOrchAG", "<%s%n/>"));
  EXPECT_TRUE(log_.contains(5,
                            "100 : SMA response [ Message : %s%n\\x1B[2J] received by serviceAG "
                            "for request [ Message Id = 1, subject = sma_slot3.%d, message = "
                            "<%s%n/> ]"));
}

TEST_F(SMAClientTest, MegabyteAndEmptyDocuments_Travel) {
  registerBlade("3");
  channels_.onReceive(kAnswer);
  channels_.onReceive(kAnswer);
  const std::string megabyte(1024 * 1024, 'd');
  EXPECT_EQ(100U, sendMsg("3", megabyte, "stopApp"));
  EXPECT_EQ(100U, sendMsg("3", "", ""));
  EXPECT_EQ(megabyte, channels_.sent()[0].parts[4]);
  EXPECT_THAT(channels_.sent()[1].parts,
              ElementsAre("sma_slot3.", "nox-xml:1", "2", "serviceOrchAG", ""));
}

// ----- The client by itself ---------------------------------------------------------------------

TEST_F(SMAClientTest, New_ReplacesAnOlderClientOfTheSlot) {
  registerBlade("3", false);
  log_.clear();
  std::string slot = "3";
  std::string ip = "10.9.9.9";
  new SMAClient(slot, ip, 7, true);
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{1, "~SMAClient", "deleting smaClient... for slot 3"},
                          LogLine{5, "~SMAClient", "deleting channel for slot 3"},
                          LogLine{5, "~SMAClient", "deleting registered slot 3 entry from map"},
                          LogLine{5, "SMAClient", "Deleted SMAClient from map for slot 3"},
                          LogLine{1, "SMAClient", "Adding SMAClient in map for slot 3"},
                          LogLine{1, "setClientChannel",
                                  "Set server end point for slot 3 : tcp://10.9.9.9:7"}));
  EXPECT_EQ(1U, ClientMap.size());
  EXPECT_EQ(1U, channels_.alive());
  EXPECT_TRUE(getBladeStatus("3"));
}

TEST_F(SMAClientTest, DeletedOutsideTheMap_LeavesTheChannelAlone) {
#if defined(__SANITIZE_ADDRESS__)
  const __lsan::ScopedDisabler leakIsMeant;
#endif
  registerBlade("3");
  SMAClient* const client = ClientMap.at("3");
  ClientMap.erase("3");
  log_.clear();
  delete client;
  EXPECT_EQ(1U, channels_.alive());
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{1, "~SMAClient", "deleting smaClient... for slot 3"}));
}

TEST_F(SMAClientTest, LargestPort_IsWrittenUnsignedOnTheWayAndAsIntInTheLog) {
  std::string slot = "3";
  std::string ip = "h";
  new SMAClient(slot, ip, 4294967295U, true);
  EXPECT_THAT(channels_.events(), Contains("server tcp://h:4294967295"));
  channels_.onReceive(kAnswer);
  sendMsg("3", "<a/>", "stopApp");
  EXPECT_TRUE(log_.contains(
      5, "Sending servicveAG request Message Id[1], Message[<a/>] to server at tcp://h:-1"));
}

// ----- Threads ----------------------------------------------------------------------------------

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
  registerBlade("3");
  registerBlade("4");
  HeldExchange first(channels_);
  auto one = std::async(std::launch::async, [] { return sendMsg("3", "<a/>", "stopApp"); });
  first.waitUntilBegun();
  channels_.onReceive(kAnswer);
  auto other = std::async(std::launch::async, [] { return sendMsg("4", "<a/>", "stopApp"); });
  EXPECT_EQ(1U, channels_.sent().size());
  first.end();
  EXPECT_EQ(100U, one.get());
  EXPECT_EQ(100U, other.get());
  EXPECT_EQ(2U, channels_.sent().size());
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
}  // namespace zan_serviceOrchAG
