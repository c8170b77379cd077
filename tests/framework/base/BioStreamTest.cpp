#include "framework/base/BioStream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using base::Buffer;
using base::IBioStream;
using base::OBioStream;
using base::String;

IBioStream reader(const OBioStream& out) {
  return IBioStream(out.data(), out.size());
}

TEST(BioStream, EveryType_ComesBackInOrder) {
  OBioStream out;
  out.write(std::uint8_t{200});
  out.write(std::uint16_t{65000});
  out.write(std::uint32_t{4000000000u});
  out.write(std::uint64_t{18000000000000000000u});
  out.write(std::int32_t{-7});
  out.write(std::numeric_limits<std::int64_t>::min());
  out.write(true);
  out.write(1.5f);
  out.write(-0.1);
  out.write(String("blade"));
  out.write(Buffer("\0\1", 2));

  IBioStream in = reader(out);
  std::uint8_t u8 = 0;
  std::uint16_t u16 = 0;
  std::uint32_t u32 = 0;
  std::uint64_t u64 = 0;
  std::int32_t i32 = 0;
  std::int64_t i64 = 0;
  bool flag = false;
  float f = 0;
  double d = 0;
  String text;
  Buffer bytes;
  EXPECT_TRUE(in.read(u8) && in.read(u16) && in.read(u32) && in.read(u64) && in.read(i32) &&
              in.read(i64) && in.read(flag) && in.read(f) && in.read(d) && in.read(text) &&
              in.read(bytes));
  EXPECT_EQ(u8, 200);
  EXPECT_EQ(u16, 65000);
  EXPECT_EQ(u32, 4000000000u);
  EXPECT_EQ(u64, 18000000000000000000u);
  EXPECT_EQ(i32, -7);
  EXPECT_EQ(i64, std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(flag);
  EXPECT_EQ(f, 1.5f);
  EXPECT_EQ(d, -0.1);
  EXPECT_EQ(text, "blade");
  EXPECT_EQ(bytes, Buffer("\0\1", 2));
  EXPECT_EQ(in.remaining(), 0u);
  EXPECT_FALSE(in.failed());
}

TEST(BioStream, Widths_AreTheDeclaredOnes) {
  OBioStream out;
  out.write(true);
  EXPECT_EQ(out.size(), 1u);
  out.write(static_cast<unsigned char>(1));
  EXPECT_EQ(out.size(), 2u);
  out.write(1u);
  EXPECT_EQ(out.size(), 6u);
  out.write(1ul);
  EXPECT_EQ(out.size(), 14u);
}

TEST(BioStream, String_IsLengthInHostOrderThenCharacters) {
  OBioStream out;
  out.write(String("abc"));
  ASSERT_EQ(out.size(), 7u);
  const std::uint32_t length = 3;
  EXPECT_EQ(std::memcmp(out.data(), &length, 4), 0);
  EXPECT_EQ(std::memcmp(out.data() + 4, "abc", 3), 0);
}

TEST(BioStream, EmptyStringAndBuffer_AreFourZeroBytes) {
  OBioStream out;
  out.write(String());
  out.write(Buffer());
  ASSERT_EQ(out.size(), 8u);
  String text = "old";
  Buffer bytes("old", 3);
  IBioStream in = reader(out);
  EXPECT_TRUE(in.read(text));
  EXPECT_TRUE(in.read(bytes));
  EXPECT_TRUE(text.empty());
  EXPECT_TRUE(bytes.empty());
}

TEST(BioStream, StringWithNul_ComesBackWhole) {
  OBioStream out;
  out.write(String(std::string("a\0b", 3)));
  IBioStream in = reader(out);
  String text;
  EXPECT_TRUE(in.read(text));
  EXPECT_EQ(text.str(), std::string("a\0b", 3));
}

TEST(BioStream, LoopWrite_AppendsWithoutALength) {
  OBioStream out;
  const unsigned char bytes[] = {1, 2, 3};
  out.loopWrite(bytes, 3);
  out.loopWrite(bytes, 0);
  out.loopWrite(nullptr, 0);
  ASSERT_EQ(out.size(), 3u);
  unsigned char back[3] = {};
  IBioStream in = reader(out);
  EXPECT_TRUE(in.loopRead(back, 3));
  EXPECT_EQ(std::memcmp(back, bytes, 3), 0);
}

TEST(BioStream, Clear_StartsAgain) {
  OBioStream out;
  out.write(1u);
  out.clear();
  EXPECT_EQ(out.size(), 0u);
  out.write(true);
  EXPECT_EQ(out.size(), 1u);
}

TEST(BioStream, ManyValues_KeepTheirBytesWhileTheMemoryGrows) {
  OBioStream out;
  std::vector<unsigned char> expected;
  for (unsigned i = 0; i < 5000; ++i) {
    const auto byte = static_cast<std::uint8_t>(i * 7);
    out.write(byte);
    expected.push_back(byte);
    ASSERT_EQ(out.size(), expected.size());
  }
  const std::vector<unsigned char> large(100000, 0xab);
  out.loopWrite(large.data(), static_cast<unsigned>(large.size()));
  expected.insert(expected.end(), large.begin(), large.end());
  EXPECT_EQ(std::vector<unsigned char>(out.data(), out.data() + out.size()), expected);
}

TEST(BioStream, Moved_TakesTheContentAlong) {
  OBioStream from;
  from.write(std::uint8_t{7});
  OBioStream to(std::move(from));
  ASSERT_EQ(to.size(), 1u);
  EXPECT_EQ(to.data()[0], 7);
  OBioStream third;
  third.write(std::uint32_t{1});
  third = std::move(to);
  ASSERT_EQ(third.size(), 1u);
  EXPECT_EQ(third.data()[0], 7);
}

TEST(BioStream, Underrun_FailsAndLeavesTheValue) {
  const unsigned char bytes[] = {1, 2, 3};
  IBioStream in(bytes, sizeof(bytes));
  std::uint32_t value = 77;
  EXPECT_FALSE(in.read(value));
  EXPECT_EQ(value, 77u);
  EXPECT_TRUE(in.failed());
}

TEST(BioStream, FirstFailure_IsSticky) {
  const unsigned char bytes[] = {1, 2, 3};
  IBioStream in(bytes, sizeof(bytes));
  std::uint32_t wide = 0;
  std::uint8_t narrow = 77;
  EXPECT_FALSE(in.read(wide));
  EXPECT_FALSE(in.read(narrow));
  EXPECT_EQ(narrow, 77);
}

TEST(BioStream, LengthBeyondTheRest_FailsWithoutAllocating) {
  OBioStream out;
  out.write(std::uint32_t{0xffffffffu});
  out.write(std::uint8_t{1});
  String text = "old";
  IBioStream in = reader(out);
  EXPECT_FALSE(in.read(text));
  EXPECT_EQ(text, "old");
  Buffer bytes("old", 3);
  IBioStream again = reader(out);
  EXPECT_FALSE(again.read(bytes));
  EXPECT_EQ(bytes, Buffer("old", 3));
}

TEST(BioStream, LengthOneBeyondTheRest_FailsAndExactOneDoesNot) {
  OBioStream out;
  out.write(String("abc"));
  String text;
  IBioStream tooShort(out.data(), out.size() - 1);
  EXPECT_FALSE(tooShort.read(text));
  IBioStream exact = reader(out);
  EXPECT_TRUE(exact.read(text));
}

TEST(BioStream, BoolThatIsNeither_Fails) {
  const unsigned char bytes[] = {2};
  IBioStream in(bytes, 1);
  bool flag = true;
  EXPECT_FALSE(in.read(flag));
  EXPECT_TRUE(flag);
  EXPECT_TRUE(in.failed());
}

TEST(BioStream, NullInput_IsEmpty) {
  IBioStream in(nullptr, 10);
  EXPECT_EQ(in.remaining(), 0u);
  std::uint8_t value = 0;
  EXPECT_FALSE(in.read(value));
}

TEST(BioStream, EveryTruncation_FailsSomewhere) {
  OBioStream out;
  out.write(7u);
  out.write(String("blade"));
  out.write(Buffer("cookie", 6));
  for (std::size_t size = 0; size < out.size(); ++size) {
    const std::vector<unsigned char> cut(out.data(), out.data() + size);
    IBioStream in(cut.data(), cut.size());
    std::uint32_t number = 0;
    String text;
    Buffer bytes;
    EXPECT_FALSE(in.read(number) && in.read(text) && in.read(bytes)) << size;
    EXPECT_TRUE(in.failed()) << size;
  }
}

}  // namespace
