#include "agctl/Follow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <sstream>

#include "tests/support/ManualClock.h"

namespace agctl {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::HasSubstr;

/// Answers each question after as much time as its script says, and lets that time pass.
class ScriptedExchanges final : public Exchanges {
 public:
  struct Step {
    milliseconds after;
    Reply reply;
  };

  explicit ScriptedExchanges(test_support::ManualClock& clock) : clock_(clock) {}

  void script(std::uint64_t job, Step step) {
    steps_["/api/v1/jobs/" + std::to_string(job)].push_back(std::move(step));
  }

  void start(std::size_t key, const Request& request) override {
    asked.push_back(request.target);
    const std::string path = request.target.substr(0, request.target.find('?'));
    auto& steps = steps_[path];
    if (steps.empty()) {
      under_.push_back({key, clock_.now() + request.within, lost()});
      return;
    }
    under_.push_back({key, clock_.now() + steps.front().after, steps.front().reply});
    steps.pop_front();
  }
  std::vector<Finished> wait(milliseconds most) override {
    auto until = clock_.now() + most;
    for (const Under& each : under_) {
      until = std::min(until, each.due);
    }
    clock_.advance(std::chrono::ceil<milliseconds>(until - clock_.now()));
    std::vector<Finished> finished;
    for (auto each = under_.begin(); each != under_.end();) {
      if (each->due <= clock_.now()) {
        finished.push_back({each->key, each->reply});
        each = under_.erase(each);
      } else {
        ++each;
      }
    }
    return finished;
  }
  void clear() override { under_.clear(); }

  static Reply lost() {
    return tl::unexpected(TransportError{TransportError::Kind::kNotConnected, "nobody is there"});
  }

  std::vector<std::string> asked;

 private:
  struct Under {
    std::size_t key;
    os::Clock::TimePoint due;
    Reply reply;
  };

  test_support::ManualClock& clock_;
  std::map<std::string, std::deque<Step>> steps_;
  std::vector<Under> under_;
};

Json document(std::uint64_t id, const char* state, std::uint64_t revision) {
  return {{"id", id}, {"verb", "start"}, {"app", "a"}, {"state", state}, {"revision", revision}};
}

class FollowTest : public testing::Test {
 protected:
  Session session(Options options = {}) {
    return {std::move(options), Console{out_, err_, in_}, Server(exchanges_, "socket", seconds(30)),
            [this] {
              return interrupts_;
            }};
  }
  void answer(std::uint64_t id, milliseconds after, const char* state, std::uint64_t revision) {
    exchanges_.script(id, {after, Response{200, document(id, state, revision).dump()}});
  }
  static std::vector<Job> jobs(std::initializer_list<std::uint64_t> ids) {
    std::vector<Job> jobs;
    for (const std::uint64_t id : ids) {
      jobs.push_back(*Job::read(document(id, "accepted", 1)));
    }
    return jobs;
  }
  seconds passed() const { return std::chrono::duration_cast<seconds>(clock_.now() - started_); }

  test_support::ManualClock clock_;
  const os::Clock::TimePoint started_ = clock_.now();
  ScriptedExchanges exchanges_{clock_};
  std::ostringstream out_;
  std::ostringstream err_;
  std::istringstream in_;
  unsigned interrupts_ = 0;
};

TEST_F(FollowTest, JobIsAskedForWithTheRevisionThatWasSeen) {
  answer(7, seconds(20), "running", 2);
  answer(7, seconds(60), "running", 2);
  answer(7, seconds(1), "succeeded", 5);
  Session asking = session();
  const auto followed = follow(asking, jobs({7}));
  ASSERT_EQ(followed.size(), 1U);
  EXPECT_EQ(followed[0].end, Followed::End::kOver);
  EXPECT_EQ(followed[0].job.state, "succeeded");
  EXPECT_THAT(exchanges_.asked, testing::ElementsAre("/api/v1/jobs/7?waitMs=60000&revision=1",
                                                     "/api/v1/jobs/7?waitMs=60000&revision=2",
                                                     "/api/v1/jobs/7?waitMs=60000&revision=2"));
}

TEST_F(FollowTest, UnknownOutcomeIsAnEnd) {
  answer(7, seconds(1), "unknown", 2);
  Session asking = session();
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kOver);
  EXPECT_EQ(followed[0].job.state, "unknown");
}

TEST_F(FollowTest, TimeOutCutsALongWait) {
  Options options;
  options.timeout = 5.0;
  answer(7, seconds(60), "running", 2);
  Session asking = session(options);
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kTimedOut);
  EXPECT_EQ(followed[0].job.state, "accepted");
  EXPECT_EQ(exchanges_.asked.front(), "/api/v1/jobs/7?waitMs=5000&revision=1");
  EXPECT_EQ(passed(), seconds(5));
}

TEST_F(FollowTest, SupervisorThatComesBackIsAskedOn) {
  exchanges_.script(7, {seconds(0), ScriptedExchanges::lost()});
  exchanges_.script(7, {seconds(0), ScriptedExchanges::lost()});
  answer(7, seconds(1), "succeeded", 2);
  Session asking = session();
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kOver);
  EXPECT_FALSE(followed[0].failure);
  EXPECT_EQ(passed(), seconds(3));
  EXPECT_THAT(err_.str(), HasSubstr("nobody is there; asking again"));
}

TEST_F(FollowTest, SupervisorThatStaysAwayIsGivenUpAfterAMinute) {
  for (int i = 0; i < 200; ++i) {
    exchanges_.script(7, {seconds(0), ScriptedExchanges::lost()});
  }
  Session asking = session();
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kLost);
  EXPECT_EQ(followed[0].failure->exitCode, ExitCode::kUnreachable);
  EXPECT_EQ(passed(), seconds(kComesBackWithin));
}

TEST_F(FollowTest, SupervisorThatIsAwayAtTheTimeOutIsLost) {
  Options options;
  options.timeout = 90.0;
  for (int i = 0; i < 200; ++i) {
    exchanges_.script(7, {seconds(0), ScriptedExchanges::lost()});
  }
  Session asking = session(options);
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kLost);
  EXPECT_EQ(passed(), seconds(90));
}

Reply refusal(const char* type) {
  return Response{503, Json{{"type", type}, {"title", "No room"}}.dump()};
}

TEST_F(FollowTest, JobThatCannotBeWaitedForIsAskedForNowAndThen) {
  exchanges_.script(7, {seconds(0), refusal("/problems/too-many-waits")});
  exchanges_.script(8, {seconds(0), refusal("/problems/too-many-waits")});
  for (int i = 0; i < 4; ++i) {
    answer(7, seconds(0), "accepted", 1);
  }
  answer(7, seconds(0), "succeeded", 2);
  answer(8, seconds(0), "succeeded", 2);
  Session asking = session();
  const auto followed = follow(asking, jobs({7, 8}));
  EXPECT_EQ(followed[0].job.state, "succeeded");
  EXPECT_EQ(followed[1].job.state, "succeeded");
  EXPECT_FALSE(followed[0].failure);
  EXPECT_EQ(passed(), seconds(1 + 2 + 4 + 8 + 10));
  EXPECT_EQ(exchanges_.asked[0], "/api/v1/jobs/7?waitMs=60000&revision=1");
  EXPECT_THAT(std::vector(exchanges_.asked.begin() + 2, exchanges_.asked.end()),
              testing::Each(testing::Not(HasSubstr("waitMs"))));
  EXPECT_EQ(err_.str().find("No room; asking now and then"), err_.str().rfind("No room"));
}

TEST_F(FollowTest, SupervisorWithoutRoomIsAskedUntilTheTimeOut) {
  Options options;
  options.timeout = 300.0;
  exchanges_.script(7, {seconds(0), ScriptedExchanges::lost()});
  for (int i = 0; i < 100; ++i) {
    exchanges_.script(7, {seconds(0), refusal("/problems/too-many-connections")});
  }
  Session asking = session(options);
  const auto followed = follow(asking, jobs({7}));
  EXPECT_EQ(followed[0].end, Followed::End::kTimedOut);
  EXPECT_FALSE(followed[0].failure);
  EXPECT_EQ(passed(), seconds(300));
  EXPECT_LT(exchanges_.asked.size(), 40U);
}

TEST_F(FollowTest, InterruptEndsTheWaitAndNotTheJob) {
  interrupts_ = 1;
  Session asking = session();
  const auto followed = follow(asking, jobs({7, 8}));
  EXPECT_EQ(followed[0].end, Followed::End::kInterrupted);
  EXPECT_EQ(followed[1].end, Followed::End::kInterrupted);
  EXPECT_TRUE(exchanges_.asked.empty());
}

TEST_F(FollowTest, FailureOfOneJobDoesNotEndTheOthers) {
  exchanges_.script(7, {seconds(1), Response{404, R"({"type":"/problems/unknown-job"})"}});
  answer(8, seconds(100), "succeeded", 2);
  Session asking = session();
  const auto followed = follow(asking, jobs({7, 8}));
  EXPECT_EQ(followed[0].end, Followed::End::kLost);
  EXPECT_EQ(followed[0].failure->exitCode, ExitCode::kNotFound);
  EXPECT_EQ(followed[1].job.state, "succeeded");
}

TEST_F(FollowTest, AnswersThatSayNothingNewAreNotAskedForWithoutPause) {
  for (int i = 0; i < 1000; ++i) {
    answer(7, milliseconds(0), "running", 1);
  }
  Options options;
  options.timeout = 10.0;
  Session asking = session(options);
  follow(asking, jobs({7}));
  EXPECT_LE(exchanges_.asked.size(), 51U);
}

TEST_F(FollowTest, MoreJobsThanConnectionsTakeTurns) {
  std::vector<Job> many;
  for (std::uint64_t id = 1; id <= 100; ++id) {
    many.push_back(*Job::read(document(id, "accepted", 1)));
    answer(id, milliseconds(1), "running", 2);
    answer(id, milliseconds(1), "succeeded", 3);
  }
  Session asking = session();
  const auto followed = follow(asking, many);
  for (std::size_t i = 0; i < followed.size(); ++i) {
    EXPECT_EQ(followed[i].job.id, i + 1);
    EXPECT_EQ(followed[i].job.state, "succeeded");
  }
  EXPECT_EQ(exchanges_.asked.size(), 200U);
  EXPECT_EQ(exchanges_.asked.front(), "/api/v1/jobs/1");
  EXPECT_LE(passed(), seconds(3));
}

}  // namespace
}  // namespace agctl
