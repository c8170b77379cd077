#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using std::chrono::seconds;
using test_support::RecordingSvc;
using test_support::RegistryCleaner;
using test_support::ScriptedChannel;

// Requests of blades while commands to dead blades queue.

constexpr int kCommands = 6;

/// Exchanges with blades that do not answer; each ends when the test says so.
class DeadBlades {
 public:
  explicit DeadBlades(ScriptedChannel& channels) {
    for (int number = 0; number < kCommands; ++number) {
      channels.onReceive([this](msglyr::Message&) {
        ++begun_;
        begun_.notify_all();
        int ended = ended_;
        while (ended < begun_) {
          ended_.wait(ended);
          ended = ended_;
        }
        return 0;
      });
    }
  }
  ~DeadBlades() { end(kCommands); }
  DeadBlades(const DeadBlades&) = delete;
  DeadBlades& operator=(const DeadBlades&) = delete;

  int begun() const { return begun_; }
  void waitUntilBegun() const { begun_.wait(0); }
  /// Ends the first `count` exchanges.
  void end(int count) {
    ended_ = count;
    ended_.notify_all();
  }

 private:
  std::atomic<int> begun_ = 0;
  std::atomic<int> ended_ = 0;
};

class CommandQueue : public testing::Test {
 protected:
  CommandQueue() { handler_.registerCommands(); }

  std::future<unsigned> command() {
    return std::async(std::launch::async, [] {
      const unsigned code = sendMsg("3", "<a/>", "stopApp");
      return code;
    });
  }
  std::future<unsigned> request(const std::string& name, const std::string& identity) {
    return std::async(std::launch::async, [this, name, identity] {
      const std::unique_ptr<Response> reply(
          handler_.handleCb(name, "", "1", "<heartbeatRequest/>", identity));
      return reply != nullptr ? reply->status : 0;
    });
  }
  static void waitForWaiters(std::size_t count) {
    while (Critical_section_lock.waiterCount() < count) {
      std::this_thread::yield();
    }
  }

  ScriptedChannel channels_;
  RecordingSvc svc_;
  MsgHandler handler_;
  const RegistryCleaner cleaner_;
};

TEST_F(CommandQueue, Requests_WaitForTheExchangeUnderWayAndNoOther) {
  for (int round = 0; round < 20; ++round) {
    createSMAClient("3", "h", "1", true);
    createSMAClient("4", "h", "2", true);
    createSMAClient("5", "h", "3", false);
    std::vector<std::future<unsigned>> commands;
    std::vector<std::future<unsigned>> requests;
    DeadBlades blades(channels_);
    commands.push_back(command());
    blades.waitUntilBegun();
    for (int number = 1; number < kCommands; ++number) {
      commands.push_back(command());
    }
    for (const char* identity : {"sma_slot4", "sma_slot3", "sma_slot5", "sma_slot6"}) {
      requests.push_back(request("heartbeat", identity));
    }
    waitForWaiters(requests.size());
    EXPECT_EQ(blades.begun(), 1);
    blades.end(1);
    const unsigned expected[] = {100, 100, 511, 510};
    for (std::size_t i = 0; i < requests.size(); ++i) {
      // The second exchange is under way at most, and does not end.
      ASSERT_EQ(requests[i].wait_for(seconds(5)), std::future_status::ready) << round;
      EXPECT_EQ(requests[i].get(), expected[i]);
    }
    EXPECT_LE(blades.begun(), 2);
    blades.end(kCommands);
    for (std::future<unsigned>& each : commands) {
      EXPECT_EQ(each.get(), 578U);
    }
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
