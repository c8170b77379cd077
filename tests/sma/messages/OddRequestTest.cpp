#include "sma/messages/OddRequest.h"

#include <gtest/gtest.h>

#include <set>

#include "sma/messages/Requests.h"

namespace sma {
namespace {

using std::chrono::seconds;

std::string documentOf(const char* name) {
  return makeOddRequest(*oddRequestByName(name), BladePlatform(1, 3, 2), seconds(5), "1")[4];
}

std::size_t occurrences(const std::string& text, const std::string& piece) {
  std::size_t count = 0;
  for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
    ++count;
  }
  return count;
}

TEST(OddRequest, Each_DiffersFromTheConformingRequest) {
  const BladePlatform platform(1, 3, 2);
  for (const OddRequest& odd : oddRequests()) {
    const OddRequest unchanged{"", odd.base, [](Draft&) {
                               }};
    EXPECT_NE(makeOddRequest(odd, platform, seconds(5), "1").parts(),
              makeOddRequest(unchanged, platform, seconds(5), "1").parts())
        << odd.name;
  }
}

TEST(OddRequest, Each_HasANameOfItsOwn) {
  std::set<std::string_view> names;
  for (const OddRequest& odd : oddRequests()) {
    EXPECT_TRUE(names.insert(odd.name).second) << odd.name;
  }
  EXPECT_EQ(oddRequestByName("platform-two-suns"), nullptr);
}

TEST(OddRequest, BladeWithoutInstances_CanSendAllOfThem) {
  for (const OddRequest& odd : oddRequests()) {
    EXPECT_GE(makeOddRequest(odd, BladePlatform(1, 3, 0), seconds(5), "1").getnumParts(), 4U);
  }
}

TEST(OddRequest, Envelope_DiffersWhereItShould) {
  const BladePlatform platform(1, 3, 2);
  const auto make = [&platform](const char* name) {
    return makeOddRequest(*oddRequestByName(name), platform, seconds(5), "3-1");
  };
  EXPECT_EQ(make("wrong-part-count").getnumParts(), 4U);
  EXPECT_EQ(make("wrong-content-type")[1], "nox-xml:2");
  EXPECT_EQ(make("unknown-command")[0], "serviceOrchAG.selfDestruct");
  EXPECT_EQ(make("foreign-subject")[0], "someOtherService.heartbeat");
  EXPECT_EQ(make("platform-wrong-action")[0], "serviceOrchAG.platformInfo.set");
  EXPECT_EQ(make("failure-with-action")[0], "serviceOrchAG.appFailure.update");
  EXPECT_EQ(make("progress-wrong-action")[0], "serviceOrchAG.commandProgress.get");
  const auto usual = make("platform-two-cpu");
  EXPECT_EQ(usual[0], "serviceOrchAG.platformInfo.update");
  EXPECT_EQ(usual[1], "nox-xml:1");
  EXPECT_EQ(usual[2], "3-1");
  EXPECT_EQ(usual[3], "sma_slot3");
}

TEST(OddRequest, GroupsAndInnerElements_AreMissingOrThereTwice) {
  EXPECT_EQ(occurrences(documentOf("platform-no-cpu"), "<Cpu>"), 0U);
  EXPECT_EQ(occurrences(documentOf("platform-two-cpu"), "<Cpu>"), 2U);
  EXPECT_EQ(occurrences(documentOf("platform-two-disk-inner"), "<DiskFilesystem>"), 1U);
  EXPECT_EQ(occurrences(documentOf("platform-two-disk-inner"), "<minus1><Disk>"), 2U);
  EXPECT_NE(documentOf("platform-no-memory-inner").find("<Memory/>"), std::string::npos);
  EXPECT_EQ(occurrences(documentOf("platform-no-memory-total"), "<MemTotalKB>"), 1U);
  EXPECT_EQ(occurrences(documentOf("platform-no-disks"), "<Disk>"), 0U);
  EXPECT_EQ(occurrences(documentOf("platform-no-applications"), "<application>"), 0U);
}

TEST(OddRequest, Sizes_AreThoseOfTheirNames) {
  EXPECT_GE(occurrences(documentOf("platform-thousand-disks"), "<Disk>"), 1000U);
  EXPECT_GE(occurrences(documentOf("platform-thousand-applications"), "<application>"), 1000U);
  EXPECT_EQ(occurrences(documentOf("platform-nested"), "<level>"), 999U);
  EXPECT_EQ(occurrences(documentOf("platform-nested"), "<level/>"), 1U);
  EXPECT_GT(documentOf("platform-megabyte-hotfixes").size(), 1'000'000U);
  EXPECT_LT(documentOf("platform-megabyte-hotfixes").size(), 1'048'576U);
  EXPECT_LT(documentOf("progress-megabyte-error").size(), 1'048'576U);
  EXPECT_GT(documentOf("oversized-xml").size(), 1'048'576U);
  EXPECT_GT(documentOf("platform-oversized").size(), 1'048'576U);
}

TEST(OddRequest, Texts_AreNoDocumentWhereTheySaySo) {
  EXPECT_EQ(documentOf("progress-empty-document"), "");
  EXPECT_EQ(documentOf("failure-wrong-root"),
            "<somethingElse><appInstanceId>slot3-app1</appInstanceId></somethingElse>");
  EXPECT_EQ(documentOf("failure-blank-id"),
            "<appFailureRequest><appInstanceId> \t"
            "slot3-app1\n </appInstanceId>"
            "</appFailureRequest>");
  EXPECT_EQ(documentOf("truncated-xml"), "<heartbeatRequest><count>1</count>");
}

TEST(OddRequest, Progress_DiffersInOneTag) {
  EXPECT_EQ(documentOf("progress-two-prefixes"),
            "<commandProgressUpdateRequest><appInstanceId>slot3-app1</appInstanceId>"
            "<operCmd>x.y.startApp</operCmd><operProgress>50</operProgress>"
            "<operStatus>running</operStatus><code>100</code><ack>true</ack><errorDesc/>"
            "</commandProgressUpdateRequest>");
}

}  // namespace
}  // namespace sma
