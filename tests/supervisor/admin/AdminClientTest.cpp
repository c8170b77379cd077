#include "supervisor/admin/AdminClient.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "supervisor/admin/AdminSocket.h"
#include "supervisor/admin/HttpServer.h"
#include "tests/dme/support/TempDirectory.h"

namespace supervisor::admin {
namespace {

using std::chrono::milliseconds;
constexpr std::chrono::seconds kLong{30};

void answer(const Request& request, const Reply& reply) {
  reply({404, "text/plain", request.method + " " + request.target + std::string(100'000, 'x'), ""});
}

TEST(AdminClient, ServerThere_GivesStatusAndBody) {
  const dme_test::TempDirectory directory;
  const AdminSocket socket(directory.path());
  const HttpServer server(socket.duplicate(), {}, &answer);
  const auto response = get(directory.path(), "/a?b=c", kLong);
  ASSERT_TRUE(response) << response.error();
  EXPECT_EQ(response->status, 404u);
  EXPECT_EQ(response->body, "GET /a?b=c" + std::string(100'000, 'x'));
}

TEST(AdminClient, DirectoryWithALongName_IsReachedAllTheSame) {
  const dme_test::TempDirectory directory;
  const std::string longName = directory.file(std::string(200, 'd'));
  std::filesystem::create_directory(longName);
  const AdminSocket socket(longName);
  const HttpServer server(socket.duplicate(), {}, &answer);
  const auto response = get(longName, "/a", kLong);
  ASSERT_TRUE(response) << response.error();
  EXPECT_EQ(response->status, 404u);
}

TEST(AdminClient, NobodyListens_IsSaid) {
  const dme_test::TempDirectory directory;
  EXPECT_EQ(get(directory.path(), "/", kLong).error(), "No such file or directory");
  {
    const AdminSocket socket(directory.path());
    std::filesystem::create_hard_link(directory.file("admin.sock"), directory.file("left"));
  }
  std::filesystem::rename(directory.file("left"), directory.file("admin.sock"));
  EXPECT_EQ(get(directory.path(), "/", kLong).error(), "Connection refused");
  EXPECT_EQ(get(directory.file(std::string(200, 'n')), "/", kLong).error(),
            "No such file or directory");
}

TEST(AdminClient, ServerThatNeverAnswers_IsGivenUp) {
  const dme_test::TempDirectory directory;
  const AdminSocket socket(directory.path());
  const auto response = get(directory.path(), "/", milliseconds(50));
  ASSERT_FALSE(response);
  EXPECT_EQ(response.error(), "The socket was closed due to a timeout");
}

TEST(AdminClient, ServerThatHangsUp_IsSaid) {
  const dme_test::TempDirectory directory;
  const AdminSocket socket(directory.path());
  const int listening = socket.duplicate();
  std::thread server([listening] {
    pollfd wait{listening, POLLIN, 0};
    ::poll(&wait, 1, 30'000);
    const int accepted = ::accept(listening, nullptr, nullptr);
    char head[1024];
    ::recv(accepted, head, sizeof head, 0);
    ::send(accepted, "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nx", 40, MSG_NOSIGNAL);
    ::close(accepted);
  });
  const auto response = get(directory.path(), "/", kLong);
  server.join();
  ::close(listening);
  ASSERT_FALSE(response);
  EXPECT_EQ(response.error(), "partial message");
}

}  // namespace
}  // namespace supervisor::admin
