#include "framework/base/TextFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace base {
namespace {

class TextFile : public testing::Test {
 protected:
  ~TextFile() override { std::remove(path_.c_str()); }

  void write(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }

  const std::string path_ =
      (std::filesystem::temp_directory_path() /
       ("text-file-test-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
        testing::UnitTest::GetInstance()->current_test_info()->name()))
          .string();
};

TEST_F(TextFile, Content_IsReadToTheByte) {
  const std::string text("a\r\n\0b", 5);
  write(text);
  EXPECT_EQ(readTextFile(path_).value(), text);
}

TEST_F(TextFile, OfTheGreatestSize_IsReadAndOneByteMoreIsRefused) {
  write(std::string(1048576, 'x'));
  EXPECT_EQ(readTextFile(path_).value().size(), 1048576U);
  write(std::string(1048577, 'x'));
  EXPECT_EQ(readTextFile(path_).error(), path_ + ": cannot be read: larger than 1048576 bytes");
}

TEST_F(TextFile, Missing_NamesFileAndCause) {
  EXPECT_EQ(readTextFile(path_).error(), path_ + ": cannot be read: No such file or directory");
}

TEST_F(TextFile, Folder_IsRefused) {
  EXPECT_EQ(readTextFile("/").error(), "/: cannot be read: Is a directory");
}

}  // namespace
}  // namespace base
