#include "serviceOrchAG/bridge/SMAClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "tests/serviceOrchAG/bridge/SMAClientHarness.h"

namespace zan_serviceOrchAG::sma_client_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(SMAClientTest, AnswerWithFewerPartsThanTheChannelTells_HasNoDocument) {
  registerBlade("3");
  channels_.onReceive([](msglyr::Message& message) {
    message.parts().resize(4);
    return 5;
  });
  EXPECT_EQ(100U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_TRUE(log_.contains(5,
                            "100 : SMA response [ Message : ] received by serviceAG for request [ "
                            "Message Id = 1, subject = sma_slot3.stopApp, message = <a/> ]"));
}

TEST_F(SMAClientTest, RefusalOfTheBlade_IsAnAnswer) {
  registerBlade("3");
  channels_.onReceive(ScriptedChannel::Parts{"x", "nox-xml:1", "77", "508", "<failed/>"});
  EXPECT_EQ(100U, sendMsg("3", "<a/>", "stopApp"));
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

}  // namespace
}  // namespace zan_serviceOrchAG::sma_client_test
