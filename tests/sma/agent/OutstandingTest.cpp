#include "sma/agent/Outstanding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace sma {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const Outstanding::TimePoint kStart = Outstanding::TimePoint() + seconds(1000);

Reply replyTo(const std::string& id, unsigned status = 100) {
  Reply reply;
  reply.messageId = id;
  reply.status = status;
  return reply;
}

std::vector<std::string> idsOf(const std::vector<Outstanding::Request>& requests) {
  std::vector<std::string> ids;
  ids.reserve(requests.size());
  for (const Outstanding::Request& each : requests) {
    ids.push_back(each.id);
  }
  return ids;
}

TEST(Outstanding, Fresh_AwaitsNothing) {
  Outstanding outstanding;
  EXPECT_EQ(outstanding.due(), Outstanding::TimePoint::max());
  EXPECT_THAT(outstanding.takeAll(), IsEmpty());
}

TEST(Outstanding, Reply_TakesItsRequestAndIsCountedByKindAndStatus) {
  Outstanding outstanding;
  outstanding.add({"1", RequestKind::Beat, kStart, {}});
  outstanding.add({"2", RequestKind::Report, kStart, 7});
  const Reply reply = replyTo("2", 505);
  const auto request = outstanding.take(&reply);
  ASSERT_TRUE(request);
  EXPECT_EQ(request->id, "2");
  EXPECT_EQ(request->kind, RequestKind::Report);
  EXPECT_EQ(request->event, 7U);
  EXPECT_THAT(idsOf(outstanding.takeAll()), ElementsAre("1"));
  const BladeCounts& counts = outstanding.counts();
  EXPECT_EQ(counts.sent(RequestKind::Beat), 1U);
  EXPECT_EQ(counts.sent(RequestKind::Report), 1U);
  EXPECT_THAT(counts.of(RequestKind::Report).statuses, ElementsAre(Pair(505, 1)));
  EXPECT_THAT(counts.of(RequestKind::Beat).statuses, IsEmpty());
  EXPECT_EQ(counts.strays, 0U);
}

TEST(Outstanding, SecondReply_IsAStray) {
  Outstanding outstanding;
  outstanding.add({"1", RequestKind::Beat, kStart, {}});
  const Reply reply = replyTo("1");
  EXPECT_TRUE(outstanding.take(&reply));
  EXPECT_FALSE(outstanding.take(&reply));
  EXPECT_EQ(outstanding.counts().strays, 1U);
  EXPECT_EQ(outstanding.counts().replies(), 1U);
}

TEST(Outstanding, WhatCannotBeRead_IsAStrayAndLeavesTheRequestAwaited) {
  Outstanding outstanding;
  outstanding.add({"", RequestKind::Beat, kStart, {}});
  EXPECT_FALSE(outstanding.take(nullptr));
  EXPECT_EQ(outstanding.counts().strays, 1U);
  EXPECT_EQ(outstanding.due(), kStart);
}

TEST(Outstanding, DeadlineThatHasCome_MakesARequestLateInOrderOfSending) {
  Outstanding outstanding;
  outstanding.add({"1", RequestKind::Beat, kStart + seconds(3), {}});
  outstanding.add({"2", RequestKind::Report, kStart + seconds(2), {}});
  outstanding.add({"3", RequestKind::Odd, kStart + seconds(4), {}});
  EXPECT_EQ(outstanding.due(), kStart + seconds(2));
  EXPECT_THAT(outstanding.takeLate(kStart + seconds(1)), IsEmpty());
  EXPECT_THAT(idsOf(outstanding.takeLate(kStart + seconds(3))), ElementsAre("1", "2"));
  EXPECT_EQ(outstanding.due(), kStart + seconds(4));
  const BladeCounts& counts = outstanding.counts();
  EXPECT_EQ(counts.of(RequestKind::Beat).unanswered, 1U);
  EXPECT_EQ(counts.of(RequestKind::Report).unanswered, 1U);
  EXPECT_EQ(counts.of(RequestKind::Odd).unanswered, 0U);
}

TEST(Outstanding, ReplyToALateRequest_IsAStray) {
  Outstanding outstanding;
  outstanding.add({"1", RequestKind::Beat, kStart, {}});
  outstanding.takeLate(kStart);
  const Reply reply = replyTo("1");
  EXPECT_FALSE(outstanding.take(&reply));
  EXPECT_EQ(outstanding.counts().strays, 1U);
}

TEST(Outstanding, Unsent_IsCountedAndNotAwaited) {
  Outstanding outstanding;
  outstanding.countUnsent();
  EXPECT_EQ(outstanding.counts().unsent, 1U);
  EXPECT_THAT(outstanding.takeAll(), IsEmpty());
}

}  // namespace
}  // namespace sma
