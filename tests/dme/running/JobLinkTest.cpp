#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "dme/link/MethodServer.h"
#include "dme/running/Jobs.h"
#include "model/serviceorchapi/Methods.h"
#include "tests/dme/support/Orders.h"
#include "tests/dme/support/ServiceStandIn.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/support/ManualClock.h"

// Commands that the link to the gateway does not take.

namespace dme {
namespace {

using dme_test::forSlot;
using dme_test::ServiceStandIn;
using serviceorchapi::ValidateBladeStateMe;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::uint64_t kPeer = 5;
constexpr std::uint64_t kNow = 1700000000000;
constexpr const char* kTakesNothing = "the link to the gateway takes nothing";

/// The engine's thread is the test's. Slot 3 has a valid blade.
class JobLinkTest : public testing::Test {
 protected:
  JobLinkTest() {
    server_.listen(jobs_.events());
    for (int i = 0; i < 2; ++i) {
      const std::string call = ServiceStandIn::encode<ValidateBladeStateMe>({3, "1.2", ""});
      server_.handle(kPeer, reinterpret_cast<const unsigned char*>(call.data()), call.size(),
                     clock_.now());
    }
  }
  ~JobLinkTest() override { store_->close(); }

  std::uint64_t ordered(JobVerb verb) {
    std::promise<Granted<JobView>> outcome;
    EXPECT_TRUE(jobs_.order(
        forSlot(verb, 3), [&outcome](Granted<JobView> job) { outcome.set_value(std::move(job)); }));
    const Granted<JobView> job = outcome.get_future().get();
    EXPECT_TRUE(job);
    return job ? job->id : 0;
  }
  /// Does what is due until the job is so.
  template <class Predicate>
  JobView waitUntil(std::uint64_t id, Predicate isSo) {
    for (;;) {
      jobs_.tick(clock_.now());
      const std::optional<JobView> job = jobs_.board().find(id);
      if (job && isSo(*job)) {
        return *job;
      }
      const JobBoard::WatchId watch = jobs_.board().watch(
          id, job ? job->revision : 0, [this](const JobView& /*changed*/) { wake(); });
      const bool isWoken = waitForWake();
      jobs_.board().unwatch(watch);
      if (!isWoken) {
        ADD_FAILURE() << "job " << id << " stays as it is";
        return job.value_or(JobView());
      }
    }
  }
  JobView waitForReason(std::uint64_t id, JobReason reason) {
    return waitUntil(id, [reason](const JobView& job) { return job.reason == reason; });
  }
  JobView waitFor(std::uint64_t id, JobState state) {
    return waitUntil(id, [state](const JobView& job) { return job.state == state; });
  }
  bool waitForWake() {
    std::unique_lock lock(mutex_);
    return woken_.wait_for(lock, seconds(30), [this] { return std::exchange(isWoken_, false); });
  }
  void wake() {
    const std::lock_guard lock(mutex_);
    isWoken_ = true;
    woken_.notify_all();
  }
  void setOpen(bool isOpen) {
    const std::lock_guard lock(mutex_);
    isOpen_ = isOpen;
  }
  /// How often the link was given a command.
  std::size_t attempts() {
    const std::lock_guard lock(mutex_);
    return attempts_;
  }

  test_support::ManualClock clock_;
  dme_test::TempDirectory directory_;

  std::mutex mutex_;
  std::condition_variable woken_;
  // Guarded by mutex_.
  bool isWoken_ = false;
  bool isOpen_ = false;
  std::size_t attempts_ = 0;

  std::unique_ptr<ObjectStore> store_ = std::move(*ObjectStore::open(directory_.path()));
  Chassis chassis_{*store_, std::nullopt};
  BladeMonitor monitor_{{seconds(1), 3, seconds(30)}};
  ServiceStandIn service_;
  MethodServer server_{*store_, chassis_, monitor_, service_.receiver(), [] {
                         return kNow;
                       }};
  Jobs jobs_{*store_,
             chassis_,
             server_.instances(),
             monitor_,
             {},
             [] { return kNow; },
             [this](std::uint64_t peer, const base::OBioStream& /*bytes*/, bool isUrgent) {
               EXPECT_EQ(peer, kPeer);
               EXPECT_TRUE(isUrgent);
               const std::lock_guard lock(mutex_);
               ++attempts_;
               return isOpen_;
             },
             [this] {
               wake();
             }};
};

TEST_F(JobLinkTest, LinkTakesNothing_TheJobWaitsAndTellsWhy) {
  const std::uint64_t id = ordered(JobVerb::kLogLevel);
  const JobView job = waitForReason(id, JobReason::kNotDelivered);
  EXPECT_EQ(job.state, JobState::kAccepted);
  EXPECT_EQ(job.cause, kTakesNothing);
  EXPECT_EQ(job.attempts, 0u) << "the blade was certainly not told";
  EXPECT_EQ(job.finishBy, 0u);
  EXPECT_EQ(attempts(), 1u);
}

TEST_F(JobLinkTest, LinkTakesItLater_IsSentAfterAPause) {
  const std::uint64_t id = ordered(JobVerb::kLogLevel);
  waitForReason(id, JobReason::kNotDelivered);
  setOpen(true);
  clock_.advance(seconds(1) - milliseconds(1));
  jobs_.tick(clock_.now());
  EXPECT_EQ(attempts(), 1u);
  clock_.advance(milliseconds(1));
  const JobView job = waitFor(id, JobState::kSending);
  EXPECT_EQ(job.attempts, 1u);
  EXPECT_EQ(job.reason, JobReason::kNone);
}

TEST_F(JobLinkTest, LinkTakesNothingUntilItIsTooLate_FailsAndTellsWhy) {
  const std::uint64_t id = ordered(JobVerb::kLogLevel);
  waitForReason(id, JobReason::kNotDelivered);
  clock_.advance(minutes(5));
  const JobView job = waitFor(id, JobState::kFailed);
  EXPECT_EQ(job.reason, JobReason::kDeliverByPast);
  EXPECT_EQ(job.cause, std::string("it could not be delivered in time: ") + kTakesNothing);
  EXPECT_EQ(attempts(), 1u) << "it is too late to try";
}

TEST_F(JobLinkTest, LinkTakesNothing_TheSlotIsFreeForOtherJobs) {
  const std::uint64_t first = ordered(JobVerb::kLogLevel);
  waitForReason(first, JobReason::kNotDelivered);
  setOpen(true);
  const std::uint64_t second = ordered(JobVerb::kTimeZone);
  waitFor(second, JobState::kSending);
  EXPECT_EQ(jobs_.board().find(first)->state, JobState::kAccepted);
}

}  // namespace
}  // namespace dme
