#include "supervisor/admin/AdminSocket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/dme/support/TempDirectory.h"
#include "tests/supervisor/admin/RawClient.h"

namespace supervisor::admin {
namespace {

struct stat statusOf(const std::string& file) {
  struct stat status {};
  EXPECT_EQ(::lstat(file.c_str(), &status), 0) << file;
  return status;
}

std::string errorOf(const std::string& directory) {
  try {
    const AdminSocket socket(directory);
    return "made";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(AdminSocket, AnyMask_IsForItsOwnerOnly) {
  const dme_test::TempDirectory directory;
  for (const mode_t mask : {0U, 022U, 077U}) {
    const mode_t before = ::umask(mask);
    const AdminSocket socket(directory.path());
    ::umask(before);
    EXPECT_EQ(statusOf(directory.file("admin.sock")).st_mode, S_IFSOCK | 0600u);
  }
}

TEST(AdminSocket, Gone_LeavesNothing) {
  const dme_test::TempDirectory directory;
  { const AdminSocket socket(directory.path()); }
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(AdminSocket, LeftoversOfADeadProcess_GiveWay) {
  const dme_test::TempDirectory directory;
  {  // As a killed process leaves them: bound, nobody listens.
    const AdminSocket dead(directory.path());
    for (const char* name : {"left.sock", "admin.sock.new"}) {
      std::filesystem::create_hard_link(directory.file("admin.sock"), directory.file(name));
    }
  }
  std::filesystem::rename(directory.file("left.sock"), directory.file("admin.sock"));
  const AdminSocket socket(directory.path());
  const RawClient client(directory.file("admin.sock"));
  EXPECT_FALSE(std::filesystem::exists(directory.file("admin.sock.new")));
}

TEST(AdminSocket, LinkUnderTheName_IsReplacedAndNotFollowed) {
  const dme_test::TempDirectory directory;
  dme_test::writeBytes(directory.file("other"), "other");
  std::filesystem::create_symlink(directory.file("other"), directory.file("admin.sock"));
  const AdminSocket socket(directory.path());
  EXPECT_TRUE(S_ISSOCK(statusOf(directory.file("admin.sock")).st_mode));
  EXPECT_EQ(dme_test::readBytes(directory.file("other")), "other");
}

TEST(AdminSocket, Duplicate_IsTheSameSocket) {
  const dme_test::TempDirectory directory;
  const AdminSocket socket(directory.path());
  const RawClient client(directory.file("admin.sock"));
  const int copy = socket.duplicate();
  const int accepted = ::accept(copy, nullptr, nullptr);
  EXPECT_GE(accepted, 0);
  ::close(accepted);
  ::close(copy);
}

TEST(AdminSocket, CannotBeMade_SaysWhichWhyAndWhatToDo) {
  const dme_test::TempDirectory directory;
  const std::string remedy =
      "): keep the state directory on a file system with sockets, and nothing else of this name "
      "in it";
  EXPECT_EQ(
      errorOf(directory.file("none")),
      directory.file("none/admin.sock") + " cannot be made (No such file or directory" + remedy);
  std::filesystem::create_directories(directory.file("admin.sock/x"));
  EXPECT_EQ(errorOf(directory.path()),
            directory.file("admin.sock") + " cannot be made (Is a directory" + remedy);
  EXPECT_FALSE(std::filesystem::exists(directory.file("admin.sock.new")));
}

}  // namespace
}  // namespace supervisor::admin
