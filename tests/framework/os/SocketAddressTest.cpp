#include "framework/os/SocketAddress.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace os {
namespace {

constexpr std::size_t kRoom = sizeof(sockaddr_un::sun_path) - 1;

/// Whether a socket can be bound there.
bool canBind(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int result = ::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address);
  ::close(descriptor);
  return path.size() <= kRoom && result == 0;
}

class SocketAddressTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = std::filesystem::temp_directory_path() / "socket-XXXXXX";
    folder_ = ::mkdtemp(name.data());
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  /// A path of so many bytes in a folder that is there.
  std::string pathOf(std::size_t bytes, const std::string& name = "s") const {
    std::string folder = folder_ + "/" + std::string(200, 'd');
    folder.resize(bytes - name.size() - 1);
    std::filesystem::create_directory(folder);
    return folder + "/" + name;
  }

  std::string folder_;
};

TEST_F(SocketAddressTest, PathThatFits_StaysAsItIs) {
  const std::string path = pathOf(kRoom);
  const SocketAddress address(path);
  EXPECT_EQ(address.path(), path);
  EXPECT_EQ(address.error(), 0);
}

TEST_F(SocketAddressTest, LongPath_LeadsToTheSamePlace) {
  for (const std::size_t bytes : {kRoom + 1, kRoom + 60}) {
    const std::string path = pathOf(bytes);
    const SocketAddress address(path);
    EXPECT_EQ(address.error(), 0);
    EXPECT_TRUE(canBind(address.path())) << address.path();
    EXPECT_TRUE(std::filesystem::is_socket(path));
  }
}

TEST_F(SocketAddressTest, LongPathWithoutItsDirectory_IsAnError) {
  const std::string path = folder_ + "/" + std::string(kRoom, 'x') + "/s";
  const SocketAddress address(path);
  EXPECT_EQ(address.error(), ENOENT);
  EXPECT_EQ(address.path(), path);
}

TEST_F(SocketAddressTest, LongName_IsAnError) {
  const SocketAddress address(pathOf(kRoom + 60, std::string(kRoom, 'n')));
  EXPECT_EQ(address.error(), ENAMETOOLONG);
  EXPECT_EQ(SocketAddress(std::string(kRoom + 1, 'n')).error(), ENAMETOOLONG);
}

}  // namespace
}  // namespace os
