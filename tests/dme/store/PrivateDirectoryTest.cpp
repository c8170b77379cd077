#include "dme/store/PrivateDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <optional>
#include <vector>

#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

class PrivateDirectoryFixture : public testing::Test {
 protected:
  PrivateDirectoryFixture() {
    ::setenv("TMPDIR", temporary_.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe): one thread
  }
  ~PrivateDirectoryFixture() override {
    ::unsetenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe)
  }

  std::size_t entries() const {
    const std::filesystem::directory_iterator all(temporary_.path());
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  const dme_test::TempDirectory temporary_;
};

TEST_F(PrivateDirectoryFixture, Made_IsForItsOwnerOnlyAndGoesWithAllThatIsInIt) {
  {
    const auto directory = PrivateDirectory::make();
    ASSERT_TRUE(directory) << directory.error().text;
    const auto mode = std::filesystem::status(directory->path()).permissions();
    EXPECT_EQ(static_cast<unsigned>(mode), 0700u);
    dme_test::writeBytes(directory->path() + "/copy", "secret");
    EXPECT_EQ(entries(), 1u);
  }
  EXPECT_EQ(entries(), 0u);
}

TEST_F(PrivateDirectoryFixture, LeftByAKilledProcess_GoesWhenTheNextIsMade) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const auto directory = PrivateDirectory::make();
    dme_test::writeBytes(directory->path() + "/copy", "secret");
    ::kill(::getpid(), SIGKILL);
  }
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  ASSERT_EQ(entries(), 1u);
  const auto next = PrivateDirectory::make();
  ASSERT_TRUE(next);
  EXPECT_EQ(entries(), 1u);
  EXPECT_TRUE(std::filesystem::is_empty(next->path()));
}

TEST_F(PrivateDirectoryFixture, InUseOrOfAnotherName_Stays) {
  std::filesystem::create_directory(temporary_.file("other"));
  dme_test::writeBytes(temporary_.file(PrivateDirectory::kPrefix + std::string("file")), "x");
  std::filesystem::create_directory_symlink(
      temporary_.file("other"), temporary_.file(PrivateDirectory::kPrefix + std::string("link")));
  std::vector<PrivateDirectory> used;
  for (int i = 0; i < 3; ++i) {
    auto made = PrivateDirectory::make();
    ASSERT_TRUE(made);
    used.push_back(std::move(*made));
  }
  EXPECT_EQ(entries(), 6u);
}

TEST_F(PrivateDirectoryFixture, NoPlaceForIt_IsSaidWithTheRemedy) {
  ::setenv("TMPDIR", "/proc", 1);  // NOLINT(concurrency-mt-unsafe)
  const auto directory = PrivateDirectory::make();
  ASSERT_FALSE(directory);
  EXPECT_THAT(directory.error().text, testing::StartsWith("/proc/zedd-copy-XXXXXX cannot be made"));
  EXPECT_THAT(directory.error().text, testing::EndsWith("that this user can write to"));
}

}  // namespace
}  // namespace dme
