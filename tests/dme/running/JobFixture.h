#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>

#include "tests/dme/support/Orders.h"
#include "tests/dme/support/ScriptedGateway.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/support/ManualClock.h"

namespace dme_test {

/// An engine with a gateway that does what the test says, and time that passes as the test says.
/// Slots 1 to 8 are there; blades are not until the gateway admits them.
class JobFixture : public testing::Test {
 protected:
  using Command = ScriptedGateway;
  static constexpr std::uint64_t kNow = 1700000000000;

  void SetUp() override { open(); }
  void TearDown() override {
    gateway_.reset();
    engine_.reset();
  }

  /// Opens the engine, at first or anew, and connects the gateway.
  void open() {
    gateway_.reset();
    engine_.reset();
    auto engine = dme::Engine::open(config());
    ASSERT_TRUE(engine) << engine.error().text;
    engine_ = std::move(*engine);
    ASSERT_TRUE(engine_->start());
    gateway_ = std::make_unique<ScriptedGateway>(engine_->endPoint());
  }

  dme::EngineConfig config() {
    std::string chassis = "[chassis]\nserial = \"C1\"\n";
    for (int slot = 1; slot <= 8; ++slot) {
      chassis += "[[slot]]\nnumber = " + std::to_string(slot) + "\nserial = \"B" +
                 std::to_string(slot) + "\"\n";
    }
    writeBytes(directory_.file("chassis.toml"), chassis);
    dme::EngineConfig config{directory_.file("state"),
                             directory_.file("chassis.toml"),
                             "ipc://" + directory_.file("engine.ipc"),
                             {std::chrono::hours(1), 3, std::chrono::hours(1)}};
    config.wallClock = [this] {
      return timeOfDay();
    };
    return config;
  }

  std::uint64_t timeOfDay() const {
    const auto since = clock_.now() - start_;
    return kNow + static_cast<std::uint64_t>(
                      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
  }

  /// Describes an instance in the slot, whose blade is admitted, and brings it to its phase.
  void describe(const std::string& id, std::uint32_t slot) {
    ASSERT_TRUE(create(*engine_, slot, instance(id)));
  }
  std::uint64_t ordered(const dme::JobOrder& wish) {
    const auto job = order(*engine_, wish);
    EXPECT_TRUE(job) << refusalOf(job);
    return job ? job->id : 0;
  }

  /// Waits until the job is so.
  template <class Predicate>
  dme::JobView waitUntil(std::uint64_t id, Predicate isSo) {
    std::optional<dme::JobView> job = engine_->job(id);
    while (job && !isSo(*job)) {
      auto changed = std::make_shared<std::promise<dme::JobView>>();
      auto future = changed->get_future();
      const auto watch = engine_->watchJob(
          id, job->revision, [changed](const dme::JobView& view) { changed->set_value(view); });
      if (future.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        engine_->unwatchJob(watch);
        ADD_FAILURE() << "job " << id << " stays " << nameOf(job->state) << ' '
                      << nameOf(job->reason) << ' ' << job->cause;
        return *job;
      }
      job = future.get();
    }
    EXPECT_TRUE(job) << "no job " << id;
    return job.value_or(dme::JobView());
  }
  dme::JobView waitFor(std::uint64_t id, dme::JobState state) {
    return waitUntil(id, [state](const dme::JobView& job) { return job.state == state; });
  }
  dme::JobView waitForReason(std::uint64_t id, dme::JobReason reason) {
    return waitUntil(id, [reason](const dme::JobView& job) { return job.reason == reason; });
  }

  /// Lets time pass; what is due by then has been done in memory on return.
  void pass(std::chrono::milliseconds time) {
    // The engine must have seen what was done before, or it would wait from a later moment.
    settle();
    clock_.advance(time);
    settle();
  }
  /// Lets time pass until it is so. The disk is tried again every second.
  template <class Predicate>
  void passUntil(Predicate isSo) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isSo() && std::chrono::steady_clock::now() < giveUp) {
      pass(std::chrono::seconds(1));
    }
    EXPECT_TRUE(isSo());
  }
  void settle() {
    for (int i = 0; i < 2; ++i) {
      gateway_->settle();
      engine_->status();  // after the work on the batch that the call came in
    }
  }

  test_support::ManualClock clock_;
  const os::Clock::TimePoint start_ = clock_.now();
  TempDirectory directory_;
  std::unique_ptr<dme::Engine> engine_;
  std::unique_ptr<ScriptedGateway> gateway_;
};

}  // namespace dme_test
