#include "sma/base/LineServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace sma {
namespace {

using ::testing::HasSubstr;

/// A client that waits ten seconds at most.
class Client {
 public:
  explicit Client(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket") {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const timeval limit{10, 0};
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    isConnected_ =
        connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  bool isConnected() const { return isConnected_; }

  void send(const std::string& text) {
    std::size_t sent = 0;
    while (sent < text.size()) {
      const ssize_t count =
          ::send(socket_.get(), text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) {
        return;  // refused midway
      }
      sent += static_cast<std::size_t>(count);
    }
  }

  /// The next line, or what came before the end.
  std::string line() {
    while (received_.find('\n') == std::string::npos) {
      std::array<char, 4096> piece{};
      const ssize_t got = recv(socket_.get(), piece.data(), piece.size(), 0);
      if (got <= 0) {
        return std::exchange(received_, "") + "<end>";
      }
      received_.append(piece.data(), static_cast<std::size_t>(got));
    }
    const std::size_t end = received_.find('\n');
    std::string first = received_.substr(0, end);
    received_.erase(0, end + 1);
    return first;
  }

 private:
  msglyr::FileDescriptor socket_;
  bool isConnected_ = false;
  std::string received_;
};

class LineServerTest : public testing::Test {
 protected:
  LineServer server() {
    return {path_, [](const std::string& line) { return "<" + line + ">"; }, "too long"};
  }

  std::string causeOfRefusal(const std::string& path) {
    try {
      LineServer refused(path, {}, "");
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  const std::string path_ = testing::TempDir() + "line-" + std::to_string(getpid()) + ".sock";
};

TEST_F(LineServerTest, Lines_AreAnsweredInOrder) {
  const auto server = this->server();
  Client client(path_);
  client.send("a\nb\n\nc");
  EXPECT_EQ(client.line(), "<a>");
  EXPECT_EQ(client.line(), "<b>");
  EXPECT_EQ(client.line(), "<>");
  client.send("d\n");
  EXPECT_EQ(client.line(), "<cd>");
}

TEST_F(LineServerTest, ManyLinesAtOnce_AreAllAnswered) {
  const auto server = this->server();
  Client client(path_);
  std::string lines;
  for (int i = 0; i < 1000; ++i) {
    lines += std::to_string(i) + "\n";
  }
  client.send(lines);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(client.line(), "<" + std::to_string(i) + ">");
  }
}

TEST_F(LineServerTest, SeveralClients_AreServedSideBySide) {
  const auto server = this->server();
  Client first(path_);
  Client second(path_);
  first.send("unfinished");
  second.send("b\n");
  EXPECT_EQ(second.line(), "<b>");
  first.send("\n");
  EXPECT_EQ(first.line(), "<unfinished>");
}

TEST_F(LineServerTest, LineThatIsTooLong_EndsTheConnection) {
  const auto server = this->server();
  Client client(path_);
  client.send(std::string(LineServer::kMostLine + 1, 'x'));
  EXPECT_EQ(client.line(), "too long");
  EXPECT_EQ(client.line(), "<end>");
  Client next(path_);
  next.send(std::string(LineServer::kMostLine, 'x') + "\n");
  EXPECT_EQ(next.line().size(), LineServer::kMostLine + 2);
}

TEST_F(LineServerTest, MoreConnectionsThanAllowed_AreClosed) {
  const auto server = this->server();
  std::vector<Client> clients;
  for (int i = 0; i < 16; ++i) {
    clients.emplace_back(path_).send("a\n");
    ASSERT_EQ(clients.back().line(), "<a>");
  }
  Client oneMore(path_);
  EXPECT_EQ(oneMore.line(), "<end>");
}

TEST_F(LineServerTest, Socket_IsForItsOwnerOnlyAndGoesWithTheServer) {
  {
    const auto server = this->server();
    struct stat status {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(LineServerTest, SocketThatNobodyListensAt_IsTakenOver) {
  {
    const msglyr::FileDescriptor left(::socket(AF_UNIX, SOCK_STREAM, 0), "socket");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(left.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  const auto server = this->server();
  EXPECT_TRUE(Client(path_).isConnected());
}

TEST_F(LineServerTest, PathThatCannotBeUsed_IsRefusedWithTheCause) {
  const auto server = this->server();
  EXPECT_THAT(causeOfRefusal(path_), HasSubstr("somebody listens there already"));
  EXPECT_TRUE(Client(path_).isConnected());
  EXPECT_THAT(causeOfRefusal(std::string(200, 'x')), HasSubstr("107 characters"));
  EXPECT_THAT(causeOfRefusal("/no-such-folder/s"), HasSubstr("cannot listen there"));
  const std::string file = path_ + ".txt";
  std::ofstream(file) << "text";
  EXPECT_THAT(causeOfRefusal(file), HasSubstr("no socket"));
  EXPECT_TRUE(std::filesystem::exists(file));
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace sma
