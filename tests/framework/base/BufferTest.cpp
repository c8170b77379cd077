#include "framework/base/Buffer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using base::Buffer;

TEST(Buffer, Allocate_Copies) {
  unsigned char bytes[] = {1, 2, 3};
  Buffer buffer;
  buffer.allocate(bytes, sizeof(bytes));
  bytes[0] = 9;
  ASSERT_EQ(buffer.size(), 3u);
  EXPECT_EQ(buffer.data()[0], 1);
  EXPECT_EQ(buffer.data()[2], 3);
}

TEST(Buffer, AllocateNullOrNothing_IsEmpty) {
  Buffer buffer("abc", 3);
  buffer.allocate(nullptr, 5);
  EXPECT_TRUE(buffer.empty());
  buffer.allocate("abc", 3);
  buffer.allocate("abc", 0);
  EXPECT_TRUE(buffer.empty());
}

TEST(Buffer, AllocateFromItself_KeepsThatPart) {
  Buffer buffer("abcdef", 6);
  buffer.allocate(buffer.data() + 2, 3);
  EXPECT_EQ(buffer, Buffer("cde", 3));
}

TEST(Buffer, Clear_MakesItEmpty) {
  Buffer buffer("abc", 3);
  buffer.clear();
  EXPECT_TRUE(buffer.empty());
  EXPECT_EQ(buffer, Buffer());
}

TEST(Buffer, Compare_BytesComeBeforeLength) {
  EXPECT_LT(Buffer("10", 2).compare(Buffer("9", 1)), 0);
  EXPECT_GT(Buffer("b", 1).compare(Buffer("aaaa", 4)), 0);
  EXPECT_GT(Buffer("\xff", 1).compare(Buffer("a", 1)), 0);
}

TEST(Buffer, Compare_PrefixComesFirst) {
  EXPECT_LT(Buffer("ab", 2).compare(Buffer("abc", 3)), 0);
  EXPECT_GT(Buffer("abc", 3).compare(Buffer("ab", 2)), 0);
  EXPECT_EQ(Buffer("abc", 3).compare(Buffer("abc", 3)), 0);
}

TEST(Buffer, Compare_EmptyComesBeforeEveryOther) {
  EXPECT_LT(Buffer().compare(Buffer("\0", 1)), 0);
  EXPECT_GT(Buffer("\0", 1).compare(Buffer()), 0);
  EXPECT_EQ(Buffer().compare(Buffer()), 0);
  EXPECT_TRUE(Buffer() < Buffer("\0", 1));
}

TEST(Buffer, Compare_NulIsAByteLikeAnyOther) {
  EXPECT_LT(Buffer("a\0b", 3).compare(Buffer("a\0c", 3)), 0);
  EXPECT_NE(Buffer("a\0b", 3), Buffer("a", 1));
}

TEST(Buffer, Printed_IsHexadecimal) {
  std::ostringstream out;
  out << Buffer("\x00\x1f\xff", 3);
  EXPECT_EQ(out.str(), "001fff");
}

}  // namespace
