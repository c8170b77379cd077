#include "agctl/Http.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "tests/support/ManualClock.h"

namespace agctl {
namespace {

using std::chrono::milliseconds;

TEST(Encode, LeavesOnlyWhatMeansItself) {
  EXPECT_EQ(encode("fw-1.a_b:c~"), "fw-1.a_b:c~");
  EXPECT_EQ(encode("a/b?c=d&e#f%g h"), "a%2Fb%3Fc%3Dd%26e%23f%25g%20h");
  EXPECT_EQ(encode("ü\n"), "%C3%BC%0A");
  EXPECT_EQ(encode(""), "");
}

/// Never answers, or after some time; the user interrupts at given times.
class SlowExchanges final : public Exchanges {
 public:
  std::optional<milliseconds> answersAfter;
  std::vector<milliseconds> interruptsAt;
  bool isUnderWay = false;

  void start(std::size_t /*key*/, const Request& /*request*/) override { isUnderWay = true; }
  std::vector<Finished> wait(milliseconds most) override {
    auto until = clock_.now() + most;
    for (const auto at : interruptsAt) {
      until = started_ + at > clock_.now() ? std::min(until, started_ + at) : until;
    }
    if (answersAfter) {
      until = std::min(until, started_ + *answersAfter);
    }
    clock_.advance(std::chrono::ceil<milliseconds>(until - clock_.now()));
    if (answersAfter && passed() >= *answersAfter) {
      return {{0, Response{200, "{}"}}};
    }
    return {};
  }
  void clear() override { isUnderWay = false; }

  unsigned interrupts() const {
    return static_cast<unsigned>(std::count_if(interruptsAt.begin(), interruptsAt.end(),
                                               [this](auto at) { return at <= passed(); }));
  }
  milliseconds passed() const {
    return std::chrono::duration_cast<milliseconds>(clock_.now() - started_);
  }
  Reply ask() {
    return exchange({}, [this] { return interrupts(); });
  }

 private:
  test_support::ManualClock clock_;
  const os::Clock::TimePoint started_ = clock_.now();
};

TEST(Exchange, InterruptGivesTheAnswerAMoment) {
  SlowExchanges exchanges;
  exchanges.interruptsAt = {milliseconds(500)};
  exchanges.answersAfter = milliseconds(2400);
  EXPECT_EQ(exchanges.ask()->status, 200);
}

TEST(Exchange, InterruptEndsAnExchangeWithoutAnswer) {
  SlowExchanges exchanges;
  exchanges.interruptsAt = {milliseconds(500)};
  const Reply reply = exchanges.ask();
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error().kind, TransportError::Kind::kNoAnswer);
  EXPECT_EQ(exchanges.passed(), milliseconds(500) + kAnswerAfterInterrupt);
  EXPECT_FALSE(exchanges.isUnderWay);
}

TEST(Exchange, SecondInterruptEndsAnExchangeAtOnce) {
  SlowExchanges exchanges;
  exchanges.interruptsAt = {milliseconds(500), milliseconds(700)};
  EXPECT_FALSE(exchanges.ask());
  EXPECT_EQ(exchanges.passed(), milliseconds(700));
}

TEST(Exchange, InterruptOfAnEarlierOneDoesNotCount) {
  SlowExchanges exchanges;
  exchanges.interruptsAt = {milliseconds(-1)};
  exchanges.answersAfter = milliseconds(20'000);
  EXPECT_TRUE(exchanges.ask());
}

}  // namespace
}  // namespace agctl
