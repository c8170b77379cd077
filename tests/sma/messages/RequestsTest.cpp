#include "sma/messages/Requests.h"

#include <gtest/gtest.h>

namespace sma {
namespace {

msglyr::Message reply(const std::string& status, const std::string& document) {
  return msglyr::Message(
      std::vector<std::string>{"sma_slot3.register", "nox-xml:1", "3-1", status, document});
}

TEST(Requests, Heartbeat_HasTheFivePartsOfTheProtocol) {
  const auto message = makeRequest("heartbeat", "3-1", 3, heartbeatDocument(7, 5));
  ASSERT_EQ(message.getnumParts(), 5U);
  EXPECT_EQ(message[0], "serviceOrchAG.heartbeat");
  EXPECT_EQ(message[1], "nox-xml:1");
  EXPECT_EQ(message[2], "3-1");
  EXPECT_EQ(message[3], "sma_slot3");
  EXPECT_EQ(message[4], "<heartbeatRequest><count>7</count><timer>5</timer></heartbeatRequest>");
}

TEST(Requests, Register_NamesSlotEndPointTokenAndBothImages) {
  Registration registration;
  registration.slot = 3;
  registration.ip = "127.0.0.1";
  registration.port = 20003;
  registration.token = "a<b";
  const std::string document = toXml(registerDocument(registration));
  for (const char* piece : {"<registerRequest>", "<bladeSlotId>3</bladeSlotId>",
                            "<ip>127.0.0.1</ip>", "<port>20003</port>", "<token>a&lt;b</token>",
                            "<cachePlatformImage>", "<runningPlatformImage>", "<checksum_md5>"}) {
    EXPECT_NE(document.find(piece), std::string::npos) << piece << " in " << document;
  }
}

TEST(Requests, RegisterReply_IsReadWhole) {
  Reply out;
  ASSERT_TRUE(parseReply(reply("100",
                               "<registerResponse><response><code>100</code><message>OK</message>"
                               "</response><token>t1</token><zedPubKey>ssh-rsa A</zedPubKey>"
                               "</registerResponse>"),
                         out));
  EXPECT_EQ(out.status, 100U);
  EXPECT_EQ(out.messageId, "3-1");
  EXPECT_EQ(out.message, "OK");
  EXPECT_TRUE(out.hasToken);
  EXPECT_EQ(out.token, "t1");
  EXPECT_EQ(out.zedPubKey, "ssh-rsa A");
}

TEST(Requests, ReplyWithoutXml_KeepsItsStatus) {
  Reply out;
  ASSERT_TRUE(parseReply(reply("500", "no xml"), out));
  EXPECT_EQ(out.status, 500U);
  EXPECT_EQ(out.message, "");
  EXPECT_FALSE(out.hasToken);
}

TEST(Requests, ReplyOfOtherPartsOrStatus_IsRefused) {
  Reply out;
  EXPECT_FALSE(parseReply(msglyr::Message(4), out));
  EXPECT_FALSE(parseReply(reply("", ""), out));
  EXPECT_FALSE(parseReply(reply("100x", ""), out));
  EXPECT_FALSE(parseReply(reply("-1", ""), out));
}

}  // namespace
}  // namespace sma
