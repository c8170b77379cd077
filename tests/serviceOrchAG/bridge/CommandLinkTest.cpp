#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/framework/msglyr/TestPeer.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/TcpProxy.h"

// Commands over real connections to blades that answer too late, too often or not at all. Every
// failed one takes its ten seconds.

namespace zan_serviceOrchAG {
namespace {

using msglyr::test::Parts;
using msglyr::test::TestPeer;
using std::chrono::seconds;
using test_support::LogCapture;
using test_support::RegistryCleaner;
using test_support::TcpProxy;

/// A blade's agent, whose every step is the test's.
class Blade {
 public:
  std::uint16_t port() const {
    const std::string endPoint = peer_.endPoint();
    return static_cast<std::uint16_t>(std::stoi(endPoint.substr(endPoint.rfind(':') + 1)));
  }
  /// Takes the next command, which must have this document.
  void take(const std::string& document) {
    const std::optional<Parts> command = peer_.receive();
    ASSERT_TRUE(command.has_value()) << document;
    ASSERT_EQ(6U, command->size());
    EXPECT_EQ(document, command->at(5));
    routing_ = command->front();
  }
  /// Answers the command that was taken last.
  void answer(const std::string& document) {
    answerWith({"serviceOrchAG.stopApp", "nox-xml:1", "1", "100", document});
  }
  void answerWith(Parts parts) { answerTo(routing_, std::move(parts)); }
  void answerTo(const std::string& routing, Parts parts) {
    parts.insert(parts.begin(), routing);
    peer_.send(parts);
  }
  const std::string& routing() const { return routing_; }
  bool isSilentFor(seconds time) { return !peer_.receive(time).has_value(); }

 private:
  TestPeer peer_ = TestPeer::listening();
  std::string routing_;
};

std::future<unsigned> send(const std::string& slot, const std::string& document) {
  return std::async(std::launch::async, [slot, document] {
    const unsigned code = sendMsg(slot, document, "stopApp");
    return code;
  });
}

class CommandLink : public testing::Test {
 protected:
  void registerBlade(std::uint16_t port) {
    createSMAClient("3", "127.0.0.1", std::to_string(port), true);
  }
  /// That the next command gets its own answer.
  void expectServed(const std::string& document) {
    std::future<unsigned> command = send("3", document);
    blade_.take(document);
    blade_.answer("<own answer/>");
    EXPECT_EQ(100U, command.get());
    EXPECT_THAT(log_.lines().back().text,
                testing::StartsWith("100 : SMA response [ Message : <own answer/>]"));
  }

  Blade blade_;
  TcpProxy link_{blade_.port()};
  LogCapture log_{5};
  const RegistryCleaner cleaner_{};
};

TEST_F(CommandLink, AnsweredTwice_TheSecondAnswerIsNobodys) {
  registerBlade(link_.port());
  std::future<unsigned> twice = send("3", "<a/>");
  blade_.take("<a/>");
  link_.hold();
  blade_.answer("<twice/>");
  blade_.answer("<twice/>");
  ASSERT_TRUE(link_.waitForHeld("<twice/>", 2));
  link_.release();
  EXPECT_EQ(100U, twice.get());
  const std::string former = blade_.routing();

  // Neither what has come by now nor what comes later to the same address.
  std::future<unsigned> next = send("3", "<b/>");
  blade_.take("<b/>");
  blade_.answerTo(former, {"x", "nox-xml:1", "1", "100", "<thrice/>"});
  blade_.answerWith({"serviceOrchAG.stopApp", "nox-xml:1", "2"});
  EXPECT_EQ(579U, next.get());
  expectServed("<c/>");
}

TEST_F(CommandLink, AnsweredInThreePartsAndThenWhole_TheWholeOneIsNobodys) {
  registerBlade(link_.port());
  std::future<unsigned> first = send("3", "<a/>");
  blade_.take("<a/>");
  blade_.answerWith({"serviceOrchAG.stopApp", "nox-xml:1", "1"});
  EXPECT_EQ(579U, first.get());
  blade_.answer("<late/>");
  expectServed("<b/>");
}

TEST_F(CommandLink, AnsweredAfterTheTimeOut_TheAnswerIsNobodysAndTheCommandNotRepeated) {
  registerBlade(link_.port());
  const auto begin = std::chrono::steady_clock::now();
  std::future<unsigned> late = send("3", "<a/>");
  blade_.take("<a/>");
  EXPECT_EQ(578U, late.get());
  EXPECT_LE(std::chrono::steady_clock::now() - begin, seconds(11));
  blade_.answer("<late/>");
  expectServed("<b/>");
}

TEST_F(CommandLink, CutWithTheCommandUnderWay_ItDoesNotArriveAfterItFailed) {
  registerBlade(link_.port());
  expectServed("<a/>");
  link_.cut();
  EXPECT_EQ(578U, send("3", "<lost/>").get());
  link_.mend();
  EXPECT_TRUE(blade_.isSilentFor(seconds(4)));
  expectServed("<b/>");
}

TEST_F(CommandLink, ConnectedLateAndCut_TheCommandDoesNotArriveAfterItFailed) {
  registerBlade(link_.port());
  link_.cut();
  std::future<unsigned> lost = send("3", "<lost/>");
  std::this_thread::sleep_for(seconds(5));
  link_.disconnect();
  link_.cutBeforeTheFirstMessage();
  link_.mend();
  EXPECT_TRUE(link_.waitForCut());
  EXPECT_EQ(578U, lost.get());
  link_.mend();
  EXPECT_TRUE(blade_.isSilentFor(seconds(4)));
  expectServed("<b/>");
}

TEST_F(CommandLink, ConnectionClosedUnderTheCommand_ItIsNotRepeated) {
  registerBlade(link_.port());
  std::future<unsigned> lost = send("3", "<lost/>");
  blade_.take("<lost/>");
  link_.disconnect();
  EXPECT_EQ(578U, lost.get());
  expectServed("<b/>");
}

}  // namespace
}  // namespace zan_serviceOrchAG
