#include "sma/base/Listening.h"

#include <gtest/gtest.h>

namespace sma {
namespace {

TEST(Listening, RoomForAll_GivesNoReasonAgainstIt) {
  EXPECT_EQ(whyNotListening({1, 2, 3}, 20000, {.firstEphemeral = 32768, .descriptors = 1024}), "");
  EXPECT_EQ(whyNotListening({}, 20000, {}), "");
}

TEST(Listening, PortThatTheSystemMayGiveAway_IsRefusedByName) {
  const ListenRoom room{.firstEphemeral = 32768, .descriptors = 1'000'000};
  EXPECT_EQ(whyNotListening({12767}, 20000, room), "");
  const std::string why = whyNotListening({1, 12768}, 20000, room);
  EXPECT_NE(why.find("slot 12768"), std::string::npos) << why;
  EXPECT_NE(why.find("port 32768"), std::string::npos) << why;
  EXPECT_NE(why.find("--listen-base"), std::string::npos) << why;
}

TEST(Listening, TooFewDescriptors_AreNamed) {
  const std::string why =
      whyNotListening(std::vector<std::uint32_t>(5000, 7), 20000, {.descriptors = 20000});
  EXPECT_NE(why.find("25064 file descriptors"), std::string::npos) << why;
  EXPECT_NE(why.find("--no-listen"), std::string::npos) << why;
}

TEST(Listening, SystemsRoom_IsReadable) {
  const ListenRoom room = ListenRoom::ofSystem();
  EXPECT_GT(room.firstEphemeral, 1023U);
  EXPECT_GT(room.descriptors, 64U);
}

}  // namespace
}  // namespace sma
