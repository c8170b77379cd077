#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/serviceOrchAG/bridge/SMAClientHarness.h"

// Exchanges that fail, and the fresh channel after them.

namespace zan_serviceOrchAG::sma_client_test {
namespace {

using testing::Contains;
using testing::ElementsAre;

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

TEST_F(SMAClientTest, SendTakesNothing_TheAnswerIsAwaitedAllTheSame) {
  registerBlade("3");
  channels_.onSend([](const msglyr::Message& /*message*/) { return -1; });
  EXPECT_EQ(578U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_THAT(channels_.events(), Contains("receive 10000"));
}

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

}  // namespace
}  // namespace zan_serviceOrchAG::sma_client_test
