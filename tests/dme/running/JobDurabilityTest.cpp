#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <string>

#include "dme/store/ObjectStore.h"
#include "model/sd/JobMo.h"
#include "tests/dme/support/Acknowledged.h"
#include "tests/dme/support/KilledChild.h"
#include "tests/dme/support/TempDirectory.h"

// However often and whenever the engine's process is killed: no job that was granted is lost, and
// no command goes to the gateway twice.

namespace dme {
namespace {

using dme_test::JobRecord;

/// Rounds of the test; ZAN_JOB_KILLS asks for more.
std::uint32_t rounds() {
  const char* const wanted = std::getenv("ZAN_JOB_KILLS");
  return wanted != nullptr ? static_cast<std::uint32_t>(std::stoul(wanted)) : 24;
}

class JobDurability : public testing::Test {
 protected:
  void note(const JobRecord& record) {
    if (record.kind == JobRecord::kOrdered) {
      EXPECT_TRUE(ordered_.insert(record.job).second) << "job " << record.job << " twice";
    } else {
      ++(record.kind == JobRecord::kGiven ? given_ : notDelivered_)[record.job];
    }
  }

  /// Lets what is left come to its end.
  void finish() {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const pid_t child = dme_test::spawnBeside("dme_job_child", directory_.path(), 0, ends[1]);
    ::close(ends[1]);
    ASSERT_GT(child, 0);
    JobRecord record;
    while (::read(ends[0], &record, sizeof record) == sizeof record) {
      note(record);
    }
    ::close(ends[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0) << "the last child failed";
  }

  void expectAllEnded() {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    for (const std::uint32_t id : ordered_) {
      const Object* const job = (*store)->find(mo::Dn("sys/job-" + std::to_string(id)));
      ASSERT_NE(job, nullptr) << "job " << id << " is lost";
      const std::string state = job->get(sd::JobMo::kState).str();
      ++states_[state];
      EXPECT_TRUE(state == "succeeded" || state == "failed" || state == "unknown")
          << "job " << id << " is " << state;
      if (state == "unknown" || state == "failed") {
        EXPECT_FALSE(job->get(sd::JobMo::kReason).empty()) << "job " << id;
      }
      EXPECT_TRUE(state != "succeeded" || given_.contains(id)) << "job " << id;
    }
  }

  dme_test::TempDirectory directory_;
  std::set<std::uint32_t> ordered_;
  std::map<std::uint32_t, unsigned> given_;
  std::map<std::uint32_t, unsigned> notDelivered_;
  std::map<std::string, unsigned> states_;
};

TEST_F(JobDurability, KilledAtAnyMoment_NoJobIsLostAndNoneGivenTwice) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (std::uint32_t round = 1; round <= rounds(); ++round) {
    dme_test::runAndKill<JobRecord>("dme_job_child", directory_.path(), round, 1 + random() % 60,
                                    [this](const JobRecord& record) { note(record); });
  }
  finish();
  expectAllEnded();
  for (const auto& [id, times] : given_) {
    EXPECT_LE(times, 1 + notDelivered_[id]) << "job " << id << " was given to the gateway twice";
  }
  EXPECT_GT(ordered_.size(), rounds());
  RecordProperty("jobs", static_cast<int>(ordered_.size()));
  for (const auto& [state, count] : states_) {
    RecordProperty(state, static_cast<int>(count));
    EXPECT_GT(count, 0u);
  }
  EXPECT_TRUE(states_.contains("succeeded") && states_.contains("unknown"));
}

}  // namespace
}  // namespace dme
