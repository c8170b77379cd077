#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"

namespace zan_serviceOrchAG::platform_info_test {
namespace {

struct Kilobytes {
  const char* sent;
  std::uint32_t down;
  std::uint32_t up;
};

class KilobyteValues : public PlatformInfo, public testing::WithParamInterface<Kilobytes> {};

TEST_P(KilobyteValues, TotalAndFree_AreRoundedDownUsedUp) {
  const auto tag = [](const std::string& name) {
    return "<" + name + ">" + GetParam().sent + "</" + name + ">";
  };
  const Report report = reported(reportOf(
      "<Memory><minus1>" + tag("MemTotalKB") + tag("MemFreeKB") + tag("MemUsedKB") +
      "</minus1></Memory><AppsMemory><CurrentSnapshot>" + tag("MemTotalKB") +
      "</CurrentSnapshot></AppsMemory>" +
      disksOf("<Disk>" + tag("DiskTotalKB") + tag("DiskFreeKB") + tag("DiskUsedKB") + "</Disk>")));
  const Value down = number(GetParam().down);
  const Value up = number(GetParam().up);
  EXPECT_EQ(
      (Values{{0x836, count(1)}, {0x2811, down}, {0x2812, down}, {0x2813, up}, {0x2814, down}}),
      valuesOf(report.monitor));
  EXPECT_EQ((Values{{0x2815, down}, {0x2816, down}, {0x2817, up}}), valuesOf(report.disks.at(0)));
  for (const LogLine& line : complaints()) {
    EXPECT_LT(line.level, 6) << line.text << ": no number is not worth a line";
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, KilobyteValues,
    testing::Values(Kilobytes{"0", 0, 0}, Kilobytes{"1", 0, 1}, Kilobytes{"1023", 0, 1},
                    Kilobytes{"1024", 1, 1}, Kilobytes{"1025", 1, 2}, Kilobytes{"2047", 1, 2},
                    Kilobytes{"2048", 2, 2}, Kilobytes{"00001025", 1, 2},
                    Kilobytes{"4294966272", 4194303, 4194303},
                    Kilobytes{"4294967295", 4194303, 4194304}, Kilobytes{"4294967296", 0, 0},
                    Kilobytes{"-1", 0, 0}, Kilobytes{"+1025", 0, 0}, Kilobytes{"1025KB", 0, 0},
                    Kilobytes{"1 025", 0, 0}, Kilobytes{"1025.0", 0, 0}, Kilobytes{"", 0, 0},
                    Kilobytes{"abc", 0, 0}, Kilobytes{"%s%n", 0, 0}));

struct Load {
  const char* sent;
  float forwarded;
};

class Loads : public PlatformInfo, public testing::WithParamInterface<Load> {};

TEST_P(Loads, Text_BecomesAFloat) {
  const std::string value = GetParam().sent;
  const Report report = reported(reportOf("<Cpu><minus1>" + value + "</minus1><minus5>" + value +
                                          "</minus5><minus15>" + value + "</minus15></Cpu>"));
  const Value expected = load(GetParam().forwarded);
  EXPECT_EQ((Values{{0x830, expected}, {0x831, expected}, {0x832, expected}}),
            valuesOf(report.monitor));
}

INSTANTIATE_TEST_SUITE_P(All, Loads,
                         testing::Values(Load{"0", 0.0F}, Load{"0.1", 0.1F}, Load{"12.75", 12.75F},
                                         Load{"-1.5", -1.5F}, Load{"1e2", 100.0F},
                                         Load{"2.5%", 2.5F}, Load{"", 0.0F}, Load{"high", 0.0F},
                                         Load{"0,5", 0.0F}, Load{"16777217", 16777216.0F},
                                         Load{"1e400", std::numeric_limits<float>::infinity()}));

}  // namespace
}  // namespace zan_serviceOrchAG::platform_info_test
