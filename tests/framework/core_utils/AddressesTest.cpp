#include "framework/core_utils/Addresses.h"

#include <gtest/gtest.h>

namespace {

using core_utils::ipV4ToString;

TEST(IpV4ToString, MostSignificantByte_StandsFirst) {
  EXPECT_EQ(ipV4ToString(0xc0000201), "192.0.2.1");
  EXPECT_EQ(ipV4ToString(0x01020304), "1.2.3.4");
}

TEST(IpV4ToString, Limits_AreWritten) {
  EXPECT_EQ(ipV4ToString(0), "0.0.0.0");
  EXPECT_EQ(ipV4ToString(0xffffffff), "255.255.255.255");
}

}  // namespace
