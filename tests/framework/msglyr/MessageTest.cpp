#include "framework/msglyr/Message.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "framework/msglyr/Bounds.h"

namespace msglyr {
namespace {

TEST(Message, MadeWithParts_HasThatManyEmptyOnes) {
  Message message(5);
  EXPECT_EQ(message.getnumParts(), 5U);
  EXPECT_EQ(message[4], "");
  EXPECT_EQ(Message().getnumParts(), 0U);
}

TEST(Message, IndexBeyondTheEnd_Throws) {
  Message message(2);
  EXPECT_THROW(message[2], std::out_of_range);
}

TEST(Message, Part_KeepsNulBytes) {
  Message message(1);
  message[0] = std::string("a\0b", 3);
  EXPECT_EQ(message[0].size(), 3U);
}

TEST(Bounds, NotPositive_RefusedNamingItAndNothingChanged) {
  Bounds wrong = bounds();
  wrong.maxParts = 0;
  wrong.receiveHwm = 7;
  try {
    setBounds(wrong);
    FAIL() << "nothing thrown";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "message layer: maxParts must be positive");
  }
  EXPECT_EQ(bounds().receiveHwm, 1000);
}

}  // namespace
}  // namespace msglyr
