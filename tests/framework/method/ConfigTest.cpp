#include "framework/method/Config.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using method::Config;
using method::ConfigSet;
using method::Value;

Config everyKind() {
  Config config(77, mo::Dn("sys/slot-3"), 0x2000);
  config.set(1, Value());
  config.set(2, true);
  config.set(3, std::uint8_t{4});
  config.set(4, std::int32_t{-5});
  config.set(5, std::uint32_t{4000000000U});
  config.set(6, std::uint64_t{1} << 40);
  config.set(7, 2.5F);
  config.set(8, base::String("fifty five"));
  config.addChild(Config(78, mo::Dn("sys/slot-3/app-1"))).set(1, base::String("x"));
  return config;
}

std::vector<unsigned char> bytesOf(const auto& value) {
  base::OBioStream out;
  value.serialize(out);
  return {out.data(), out.data() + out.size()};
}

template <class T>
bool read(const std::vector<unsigned char>& bytes, T& value) {
  base::IBioStream in(bytes.data(), bytes.size());
  return value.deserialize(in) && in.remaining() == 0;
}

Config nested(unsigned depth) {
  Config config(1, mo::Dn("d"));
  if (depth > 1) {
    config.addChild(nested(depth - 1));
  }
  return config;
}

TEST(Config, EveryKindOfValue_ComesBackEqual) {
  Config back;
  ASSERT_TRUE(read(bytesOf(everyKind()), back));
  EXPECT_EQ(back, everyKind());
}

TEST(Config, OneByteProperty_HasThisLayout) {
  Config config(0x01020304, mo::Dn("ab"), 0x2000);
  config.set(9, std::uint8_t{7});
  const std::vector<unsigned char> expected{
      0x04, 0x03, 0x02, 0x01,              // class id
      0x00, 0x20, 0x00, 0x00,              // flags
      0x02, 0x00, 0x00, 0x00, 'a',  'b',   // name
      0x01, 0x00, 0x00, 0x00,              // one value:
      0x09, 0x00, 0x00, 0x00, 0x02, 0x07,  // property, tag of an 8-bit number, value
      0x00, 0x00, 0x00, 0x00,              // no children
  };
  EXPECT_EQ(bytesOf(config), expected);
}

TEST(Config, CutAnywhere_IsRefusedAndEmpty) {
  const std::vector<unsigned char> whole = bytesOf(everyKind());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Config back(5, mo::Dn("old"));
    base::IBioStream in(whole.data(), size);
    EXPECT_FALSE(back.deserialize(in)) << size;
    EXPECT_EQ(back, Config()) << size;
  }
}

TEST(Config, UnknownTag_IsRefused) {
  Config config(1, mo::Dn(), 0);
  config.set(9, Value());
  std::vector<unsigned char> bytes = bytesOf(config);
  bytes[20] = 8;  // after class id, flags, name length, count and property
  Config back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Config, PropertiesOutOfOrder_AreRefused) {
  Config config(1, mo::Dn(), 0);
  config.set(1, Value());
  config.set(2, Value());
  std::vector<unsigned char> bytes = bytesOf(config);
  bytes[16] = 2;  // the first property, equal to the second now
  Config back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Config, EightDeep_IsReadAndNineDeepRefused) {
  Config back;
  EXPECT_TRUE(read(bytesOf(nested(8)), back));
  EXPECT_EQ(back, nested(8));
  EXPECT_FALSE(read(bytesOf(nested(9)), back));
}

TEST(Config, CountBeyondTheBytes_IsRefused) {
  std::vector<unsigned char> bytes = bytesOf(Config(1, mo::Dn(), 0));
  bytes[12] = 0xFF;  // values
  bytes[13] = 0x03;
  Config back;
  EXPECT_FALSE(read(bytes, back));
}

TEST(Config, MoreThan1024Values_AreRefused) {
  Config config(1, mo::Dn(), 0);
  for (std::uint32_t i = 0; i < 1025; ++i) {
    config.set(i, Value());
  }
  Config back;
  EXPECT_FALSE(read(bytesOf(config), back));
}

TEST(ConfigSet, InOrder_ComesBackEqual) {
  ConfigSet set;
  set.append(Config(2, mo::Dn("b")));
  set.append(everyKind());
  ConfigSet back;
  ASSERT_TRUE(read(bytesOf(set), back));
  EXPECT_EQ(back, set);
}

TEST(ConfigSet, CutAnywhere_IsRefusedAndEmpty) {
  ConfigSet set;
  set.append(everyKind());
  set.append(everyKind());
  const std::vector<unsigned char> whole = bytesOf(set);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    ConfigSet back;
    base::IBioStream in(whole.data(), size);
    EXPECT_FALSE(back.deserialize(in)) << size;
    EXPECT_EQ(back.size(), 0U) << size;
  }
}

TEST(ConfigSet, EveryByteFlipped_NeverReadsBeyondTheEnd) {
  ConfigSet set;
  set.append(everyKind());
  const std::vector<unsigned char> whole = bytesOf(set);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned mask : {0x01U, 0x80U, 0xFFU}) {
      std::vector<unsigned char> bytes = whole;
      bytes[at] = static_cast<unsigned char>(bytes[at] ^ mask);
      ConfigSet back;
      if (read(bytes, back)) {
        EXPECT_EQ(bytesOf(back).size(), bytes.size()) << at;
      }
    }
  }
}

}  // namespace
