#include <gtest/gtest.h>

#include "dme/jobs/JobTable.h"
#include "tests/dme/support/Orders.h"
#include "tests/dme/support/TempDirectory.h"

// How many jobs an engine takes that are not over.

namespace dme {
namespace {

TEST(JobBound, OneMoreOpenJob_IsRefusedUntilOneIsOver) {
  const dme_test::TempDirectory directory;
  std::string chassis = "[chassis]\n";
  for (std::size_t slot = 1; slot <= JobTable::kMostOpen + 1; ++slot) {
    chassis += "[[slot]]\nnumber = " + std::to_string(slot) + "\n";
  }
  dme_test::writeBytes(directory.file("chassis.toml"), chassis);
  auto opened = Engine::open({directory.file("state"),
                              directory.file("chassis.toml"),
                              "ipc://" + directory.file("engine.ipc"),
                              {std::chrono::hours(1), 3, std::chrono::hours(1)}});
  ASSERT_TRUE(opened) << opened.error().text;
  Engine& engine = **opened;
  const auto level = [](std::size_t slot) {
    return dme_test::forSlot(JobVerb::kLogLevel, static_cast<std::uint32_t>(slot));
  };
  for (std::size_t slot = 1; slot < JobTable::kMostOpen; ++slot) {
    engine.order(level(slot), {});
  }
  const auto last = dme_test::order(engine, level(JobTable::kMostOpen));
  ASSERT_TRUE(last) << dme_test::refusalOf(last);
  const JobOrder surplus = level(JobTable::kMostOpen + 1);
  EXPECT_EQ(dme_test::refusalOf(dme_test::order(engine, surplus)),
            "tooMany: 4096 jobs are not over yet");
  EXPECT_EQ(dme_test::refusalOf(engine.wouldOrder(surplus)), "tooMany: 4096 jobs are not over yet");
  ASSERT_TRUE(dme_test::cancel(engine, last->id));
  EXPECT_EQ(dme_test::refusalOf(dme_test::order(engine, surplus)), "granted");
}

}  // namespace
}  // namespace dme
