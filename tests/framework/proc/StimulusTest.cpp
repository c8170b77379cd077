#include "framework/proc/Stimulus.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using proc::Stimulus;
using proc::StimulusHeader;

Stimulus call() {
  return Stimulus(398, 0x2000, 0, 0x100000, Stimulus::Priority::kDefault, 0x200000, 0);
}

std::vector<unsigned char> bytesOf(const Stimulus& stimulus) {
  base::OBioStream out;
  stimulus.serialize(out);
  return {out.data(), out.data() + out.size()};
}

bool read(const std::vector<unsigned char>& bytes, Stimulus& stimulus) {
  base::IBioStream in(bytes.data(), bytes.size());
  return stimulus.deserialize(in);
}

TEST(Stimulus, Header_HasThisLayout) {
  Stimulus stimulus = call();
  stimulus.setDataBit(0, true);
  stimulus.setAddress({26, 1, 26, 0});
  stimulus.setCookie(base::Buffer("\x11\x22", 2));
  const std::vector<unsigned char> expected{
      0x01, 0x00, 0x53, 0x5A,  // layout
      0x8E, 0x01, 0x00, 0x00,  // class id 398
      0x00, 0x20, 0x00, 0x00,  // type
      0x00, 0x00, 0x00, 0x00,  // intent
      0x00, 0x00, 0x10, 0x00,  // bulk
      0x04, 0x00, 0x00, 0x00,  // priority
      0x00, 0x00, 0x20, 0x00,  // response required
      0x00, 0x00, 0x00, 0x00,  // reserved
      0x01, 0x00, 0x00, 0x00,  // data bits
      0x1A, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
      0x1A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // address
      0x02, 0x00, 0x00, 0x00, 0x11, 0x22,              // cookie
  };
  EXPECT_EQ(bytesOf(stimulus), expected);
}

TEST(Stimulus, Header_ComesBackEqual) {
  Stimulus stimulus = call();
  stimulus.setDataBit(31, true);
  stimulus.setPriority(Stimulus::Priority::kHighest);
  stimulus.setResponseRequired(false);
  stimulus.setAddress({1, 2, 3, 4});
  stimulus.setCookie(base::Buffer("abc", 3));
  StimulusHeader back;
  ASSERT_TRUE(read(bytesOf(stimulus), back));
  EXPECT_EQ(bytesOf(back), bytesOf(stimulus));
  EXPECT_EQ(back.priority(), Stimulus::Priority::kHighest);
  EXPECT_FALSE(back.isResponseRequired());
  EXPECT_TRUE(back.dataBit(31));
  EXPECT_FALSE(back.dataBit(0));
  EXPECT_EQ(back.cookie(), base::Buffer("abc", 3));
}

TEST(Stimulus, HeaderCutAnywhere_IsRefused) {
  Stimulus stimulus = call();
  stimulus.setCookie(base::Buffer("abcdefgh", 8));
  const std::vector<unsigned char> whole = bytesOf(stimulus);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    StimulusHeader back;
    base::IBioStream in(whole.data(), size);
    EXPECT_FALSE(back.deserialize(in)) << size;
  }
}

TEST(Stimulus, OtherLayout_IsRefused) {
  std::vector<unsigned char> bytes = bytesOf(call());
  bytes[0] = 2;
  StimulusHeader back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Stimulus, PriorityNobodyWrites_IsRefused) {
  std::vector<unsigned char> bytes = bytesOf(call());
  bytes[20] = 8;
  StimulusHeader back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Stimulus, ResponseRequiredWordNobodyWrites_IsRefused) {
  std::vector<unsigned char> bytes = bytesOf(call());
  bytes[24] = 1;
  StimulusHeader back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Stimulus, CookieOf64Bytes_IsReadAnd65Refused) {
  Stimulus stimulus = call();
  stimulus.setCookie(base::Buffer(std::string(64, 'x').data(), 64));
  StimulusHeader back;
  EXPECT_TRUE(read(bytesOf(stimulus), back));
  stimulus.setCookie(base::Buffer(std::string(65, 'x').data(), 65));
  EXPECT_FALSE(read(bytesOf(stimulus), back));
}

TEST(Stimulus, Answer_KeepsClassAndCookieAndTurnsTheAddress) {
  Stimulus stimulus = call();
  stimulus.setAddress({26, 1, 99, 7});
  stimulus.setCookie(base::Buffer("abc", 3));
  base::OBioStream out;
  stimulus.serializeAnswer(out);
  base::IBioStream in(out.data(), out.size());
  StimulusHeader answer;
  ASSERT_TRUE(answer.deserialize(in));
  EXPECT_EQ(answer.type(), 0x4000U);
  EXPECT_EQ(answer.classId(), 398U);
  EXPECT_EQ(answer.cookie(), base::Buffer("abc", 3));
  EXPECT_FALSE(answer.isResponseRequired());
  EXPECT_EQ(answer.address().service, 99U);
  EXPECT_EQ(answer.address().instance, 7U);
  EXPECT_EQ(answer.address().sender, 26U);
  EXPECT_EQ(answer.address().senderInstance, 1U);
}

TEST(Stimulus, SecondFailure_DoesNotReplaceTheFirst) {
  Stimulus stimulus = call();
  EXPECT_EQ(stimulus.failure(), nullptr);
  stimulus.reportFailure(0, 0, "first");
  stimulus.reportFailure(8, 506, "second");
  ASSERT_NE(stimulus.failure(), nullptr);
  EXPECT_EQ(stimulus.failure()->bits, 0U);
  EXPECT_EQ(stimulus.failure()->text, "first");
}

TEST(Stimulus, DataBitBeyondTheWord_IsNeverSet) {
  Stimulus stimulus = call();
  stimulus.setDataBit(32, true);
  EXPECT_FALSE(stimulus.dataBit(32));
  EXPECT_FALSE(stimulus.dataBit(0));
}

}  // namespace
