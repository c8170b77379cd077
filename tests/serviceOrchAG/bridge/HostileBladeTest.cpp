#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <future>
#include <string>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/serviceOrchAG/bridge/RawBlade.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryCleaner.h"

// Commands to blades that do not keep to the transport's protocol, or answer without measure. Most
// failed ones take their ten seconds.

namespace zan_serviceOrchAG {
namespace {

using std::chrono::seconds;
using test_support::LogCapture;
using test_support::RegistryCleaner;

/// What the process came to hold at most, from when this was made.
class PeakMemory {
 public:
  PeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak is what is held now
    before_ = kilobytes();
  }
  std::size_t grownByMegabytes() const { return (kilobytes() - before_) / 1024; }

 private:
  static std::size_t kilobytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    std::size_t number = 0;
    status >> number;
    return number;
  }

  std::size_t before_;
};

class HostileBlade : public testing::Test {
 protected:
  HostileBlade() { createSMAClient("3", "127.0.0.1", std::to_string(blade_.port()), true); }

  static std::future<unsigned> send(const std::string& document) {
    return std::async(std::launch::async, [document] {
      const unsigned code = sendMsg("3", document, "stopApp");
      return code;
    });
  }
  /// That the next command comes by a connection of its own and gets its own answer.
  void expectServedAnew() {
    blade_.close();
    std::future<unsigned> command = send("<next/>");
    blade_.acceptAlive();
    EXPECT_EQ(blade_.takeDocument(), "<next/>");
    std::string answer;
    for (const char* const part : {"serviceOrchAG.stopApp", "nox-xml:1", "2", "100"}) {
      answer += RawBlade::part(part, true);
    }
    EXPECT_TRUE(blade_.write(answer + RawBlade::part("<own answer/>", false)));
    EXPECT_EQ(command.get(), 100U);
    EXPECT_THAT(log_.lines().back().text,
                testing::StartsWith("100 : SMA response [ Message : <own answer/>]"));
  }

  RawBlade blade_;
  LogCapture log_{5};
  const RegistryCleaner cleaner_{};
};

TEST_F(HostileBlade, TakesTheConnectionAndSaysNothing_NoAnswerInTime) {
  const auto begin = std::chrono::steady_clock::now();
  std::future<unsigned> command = send("<a/>");
  blade_.accept();
  EXPECT_EQ(command.get(), 578U);
  EXPECT_LE(std::chrono::steady_clock::now() - begin, seconds(11));
  expectServedAnew();
}

TEST_F(HostileBlade, SpeaksAnotherProtocol_NoAnswerInTime) {
  std::future<unsigned> command = send("<a/>");
  blade_.accept();
  blade_.write("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
  blade_.waitForEnd();
  EXPECT_EQ(command.get(), 578U);
  expectServedAnew();
}

TEST_F(HostileBlade, ClosesInTheMiddleOfItsAnswer_NoAnswerInTime) {
  std::future<unsigned> command = send("<a/>");
  blade_.acceptAlive();
  EXPECT_EQ(blade_.takeDocument(), "<a/>");
  EXPECT_TRUE(blade_.write(RawBlade::part("serviceOrchAG.stopApp", true) +
                           RawBlade::partHeader(1000, false) + "<begins"));
  blade_.close();
  EXPECT_EQ(command.get(), 578U);
  expectServedAnew();
}

TEST_F(HostileBlade, AnswersWithAHundredMegabytes_IsCutOffAndCostsNoMemory) {
  constexpr std::size_t kBytes = 100 * 1024 * 1024;
  const std::string chunk(64 * 1024, 'x');
  const PeakMemory memory;
  std::future<unsigned> command = send("<a/>");
  blade_.acceptAlive();
  EXPECT_EQ(blade_.takeDocument(), "<a/>");
  std::size_t written = 0;
  bool isOpen = blade_.write(RawBlade::partHeader(kBytes, false));
  for (; isOpen && written < kBytes; written += chunk.size()) {
    isOpen = blade_.write(chunk);
  }
  EXPECT_FALSE(isOpen) << "all of it was taken";
  EXPECT_EQ(command.get(), 578U);
  EXPECT_LT(memory.grownByMegabytes(), 32U);
  expectServedAnew();
}

TEST_F(HostileBlade, AnswersWithTenThousandParts_IsRefusedAtOnceAndCostsNoMemory) {
  std::string answer;
  for (int i = 1; i < 10000; ++i) {
    answer += RawBlade::part("part", true);
  }
  answer += RawBlade::part("last", false);
  const PeakMemory memory;
  const auto begin = std::chrono::steady_clock::now();
  std::future<unsigned> command = send("<a/>");
  blade_.acceptAlive();
  EXPECT_EQ(blade_.takeDocument(), "<a/>");
  EXPECT_TRUE(blade_.write(answer));
  EXPECT_EQ(command.get(), 579U);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, seconds(8));
  EXPECT_LT(memory.grownByMegabytes(), 32U);
  blade_.waitForEnd();  // the channel that it came by is gone
  expectServedAnew();
}

}  // namespace
}  // namespace zan_serviceOrchAG
