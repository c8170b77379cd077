#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Target.h"

// Every input that was kept, through its target. One test an input: a property that does not hold
// ends the process, and the test's name says by which file.

namespace fuzz {
namespace {

namespace fs = std::filesystem;

struct Kept {
  Target target;
  fs::path file;
};

void PrintTo(const Kept& kept, std::ostream* out) {
  *out << kept.file.string();
}

std::vector<Kept> allKept() {
  std::vector<Kept> all;
  for (const Target& target : targets()) {
    for (const auto& entry : fs::directory_iterator(fs::path(ZAN_FUZZ_CORPUS) / target.name)) {
      all.push_back({target, entry.path()});
    }
  }
  std::sort(all.begin(), all.end(),
            [](const Kept& one, const Kept& other) { return one.file < other.file; });
  return all;
}

std::string testName(const testing::TestParamInfo<Kept>& kept) {
  std::string name =
      std::string(kept.param.target.name) + "_" + kept.param.file.filename().string();
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

class Corpus : public testing::TestWithParam<Kept> {};

TEST_P(Corpus, Input_HasAllProperties) {
  std::ifstream file(GetParam().file, std::ios::binary);
  const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
  ASSERT_FALSE(file.bad());
  GetParam().target.run(bytes);
}

INSTANTIATE_TEST_SUITE_P(All, Corpus, testing::ValuesIn(allKept()), testName);

TEST(Targets, EveryTarget_HasACorpusAndTakesAnEmptyInput) {
  const std::vector<Kept> kept = allKept();
  for (const Target& target : targets()) {
    EXPECT_TRUE(std::any_of(kept.begin(), kept.end(), [&target](const Kept& each) {
      return each.target.name == target.name;
    })) << target.name;
    target.run({});
  }
}

}  // namespace
}  // namespace fuzz
