#include "sma/agent/ReplyJudge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sma {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Event reportAt(milliseconds at, std::optional<ExpectedReply> expected) {
  return {at, SendReport{}, std::move(expected)};
}

Event oddAt(milliseconds at, unsigned times, std::optional<ExpectedReply> expected) {
  return {at, SendOdd{oddRequestByName("progress-no-ack"), times}, std::move(expected)};
}

Reply replyOf(unsigned status) {
  Reply reply;
  reply.status = status;
  return reply;
}

const ExpectedReply kOk{.none = false, .status = 100, .message = {}};
const ExpectedReply kNone{.none = true, .status = {}, .message = {}};

TEST(ReplyJudge, RequestOfNoEvent_IsPassedOver) {
  const std::vector<Event> events{reportAt(milliseconds(0), kOk)};
  ReplyJudge judge(events);
  const Reply reply = replyOf(500);
  judge.judge(std::nullopt, &reply);
  judge.judgeUnsent(std::nullopt);
  EXPECT_FALSE(judge.wantsReply(std::nullopt));
  EXPECT_FALSE(judge.isDone());
  EXPECT_THAT(judge.disappointments(),
              ElementsAre("report at 0 s had 0 of 1 replies judged when the run ended"));
}

TEST(ReplyJudge, EventThatExpectsNothing_IsDoneAndNeverDisappointed) {
  const std::vector<Event> events{reportAt(milliseconds(0), std::nullopt)};
  ReplyJudge judge(events);
  EXPECT_TRUE(judge.isDone());
  EXPECT_FALSE(judge.wantsReply(0));
  judge.judge(0, nullptr);
  judge.judgeUnsent(0);
  EXPECT_THAT(judge.disappointments(), IsEmpty());
}

TEST(ReplyJudge, WantsReply_UnlessNoneIsExpected) {
  const std::vector<Event> events{reportAt(milliseconds(0), kOk), reportAt(milliseconds(1), kNone)};
  const ReplyJudge judge(events);
  EXPECT_TRUE(judge.wantsReply(0));
  EXPECT_FALSE(judge.wantsReply(1));
}

TEST(ReplyJudge, EventOfSeveralRequests_IsDoneWithTheLast) {
  const std::vector<Event> events{oddAt(milliseconds(1250), 3, kOk)};
  ReplyJudge judge(events);
  const Reply reply = replyOf(100);
  judge.judge(0, &reply);
  judge.judge(0, &reply);
  EXPECT_FALSE(judge.isDone());
  EXPECT_THAT(
      judge.disappointments(),
      ElementsAre("progress-no-ack at 1.25 s had 2 of 3 replies judged when the run ended"));
  judge.judge(0, &reply);
  EXPECT_TRUE(judge.isDone());
  EXPECT_THAT(judge.disappointments(), IsEmpty());
}

TEST(ReplyJudge, OneOfTwoEvents_KeepsTheJudgeWaiting) {
  const std::vector<Event> events{reportAt(milliseconds(0), kOk), reportAt(milliseconds(10), kOk)};
  const Reply reply = replyOf(100);
  for (const std::size_t first : {0U, 1U}) {
    ReplyJudge judge(events);
    judge.judge(first, &reply);
    EXPECT_FALSE(judge.isDone()) << first;
    judge.judge(1 - first, &reply);
    EXPECT_TRUE(judge.isDone()) << first;
  }
}

TEST(ReplyJudge, WhatDiffers_IsToldInTheOrderInWhichItCame) {
  const std::vector<Event> events{reportAt(milliseconds(2000), kOk),
                                  oddAt(milliseconds(10), 1, kNone),
                                  reportAt(milliseconds(3000), kNone)};
  ReplyJudge judge(events);
  const Reply reply = replyOf(505);
  judge.judge(1, &reply);
  judge.judge(0, nullptr);
  judge.judgeUnsent(2);
  EXPECT_TRUE(judge.isDone());
  EXPECT_THAT(
      judge.disappointments(),
      ElementsAre("progress-no-ack at 0.01 s got 505 \"\", expected no reply",
                  "report at 2 s got no reply, expected 100", "report at 3 s could not be sent"));
}

TEST(ReplyJudge, EndlessTrouble_IsToldTwentyTimes) {
  const std::vector<Event> events{oddAt(milliseconds(0), 1000, kOk)};
  ReplyJudge judge(events);
  for (int i = 0; i < 1000; ++i) {
    judge.judge(0, nullptr);
  }
  EXPECT_TRUE(judge.isDone());
  EXPECT_THAT(judge.disappointments(), SizeIs(20));
}

}  // namespace
}  // namespace sma
