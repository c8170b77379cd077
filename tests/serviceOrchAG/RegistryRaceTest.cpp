#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "framework/finj/FinjManager.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/framework/msglyr/TestPeer.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ValidationAnswer.h"

// Commands, registrations, de-registrations, requests and changes of hooks, all at once and for the
// same slots, over real connections.

namespace zan_serviceOrchAG {
namespace {

using msglyr::test::Parts;
using msglyr::test::TestPeer;

constexpr int kRounds = 30;

/// An agent that answers every command at once.
class EchoBlade {
 public:
  EchoBlade() : endPoint_(peer_.endPoint()), thread_([this] { run(); }) {}
  ~EchoBlade() {
    ends_ = true;
    thread_.join();
  }
  EchoBlade(const EchoBlade&) = delete;
  EchoBlade& operator=(const EchoBlade&) = delete;

  std::string port() const { return endPoint_.substr(endPoint_.rfind(':') + 1); }
  int taken() const { return taken_; }

 private:
  void run() {
    while (!ends_) {
      if (const std::optional<Parts> command = peer_.receive(std::chrono::milliseconds(20))) {
        ++taken_;
        peer_.send({command->front(), command->at(1), "nox-xml:1", command->at(3), "100", "<r/>"});
      }
    }
  }

  TestPeer peer_ = TestPeer::listening();
  const std::string endPoint_;
  std::atomic<int> taken_ = 0;
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

class RegistryRace : public testing::Test {
 protected:
  RegistryRace() { handler_.registerCommands(); }

  unsigned request(const std::string& command, const std::string& document,
                   const std::string& identity) {
    const std::unique_ptr<Response> reply(handler_.handleCb(command, "", "1", document, identity));
    return reply != nullptr ? reply->status : 0;
  }
  unsigned registerBlade(const std::string& slot) {
    return request("register",
                   "<registerRequest><bladeSlotId>" + slot +
                       "</bladeSlotId><ip>127.0.0.1</ip><port>" + blade_.port() +
                       "</port></registerRequest>",
                   "sma_slot" + slot);
  }
  static void deRegister(unsigned slot) {
    serviceorchapi::DeRegisterBladeMe me;
    Svc::executeServiceorchapiDeRegisterBladeCb(me, slot);
    EXPECT_EQ(me.failure(), nullptr);
  }
  /// Runs it, and counts it when the blade took the command. Else it must tell that the slot has no
  /// client, that its blade is not valid, or that a hook failed it.
  void run(const Executor& executor, const method::Config& target) {
    const Outcome outcome = runExecutor(executor, target);
    EXPECT_TRUE(outcome.isAnswered);
    const std::string text = outcome.failure.text.str();
    if (!outcome.hasFailed) {
      ++succeeded_;
    } else if (text == "FINJ_INJECTED") {
      EXPECT_EQ(executor.name, std::string("stop"));
      EXPECT_EQ(outcome.failure.bits, 2048U);
    } else if (executor.command == std::string("clearLogData")) {
      EXPECT_EQ(outcome.failure.code, 1003U);
    } else {
      EXPECT_TRUE(outcome.failure.code == 580 || outcome.failure.code == 581) << text;
      EXPECT_EQ(outcome.failure.bits, 16U);
    }
  }
  void startCommands(const std::function<void()>& step) {
    commanders_.emplace_back([step] {
      for (int round = 0; round < kRounds; ++round) {
        step();
      }
    });
  }
  /// Goes on for as long as there are commands.
  void startBeside(const std::function<void()>& step) {
    others_.emplace_back([this, step] {
      while (!commandsEnded_) {
        step();
        std::this_thread::yield();
      }
    });
  }
  void join() {
    for (std::thread& thread : commanders_) {
      thread.join();
    }
    commandsEnded_ = true;
    for (std::thread& thread : others_) {
      thread.join();
    }
  }

  EchoBlade blade_;
  test_support::LogCapture log_{9};
  test_support::RecordingSvc svc_;
  MsgHandler handler_;
  const test_support::InstalledMsgHandler installed_{handler_};
  const test_support::RegistryCleaner cleaner_;
  std::atomic<int> succeeded_ = 0;
  std::atomic<bool> commandsEnded_ = false;
  std::vector<std::thread> commanders_;
  std::vector<std::thread> others_;
};

TEST_F(RegistryRace, EveryCommandEndsAndTheBladesTookThoseThatSucceeded) {
  std::atomic<unsigned> verdicts = 0;
  svc_.onSend([&verdicts](const test_support::RecordingSvc::Sent& call) {
    if (call.classId == serviceorchapi::ValidateBladeStateMe::kClassId) {
      test_support::answerValidation(call.cookie, ++verdicts % 4 != 0, false, "token");
    }
  });
  for (int thread = 0; thread < 3; ++thread) {
    startCommands([this] {
      for (const Executor& executor : executors()) {
        run(executor, executor.target());
      }
      run(executorNamed("start"), crowdedStartTarget(true));
    });
  }
  for (const char* slot : {"3", "12"}) {
    startBeside([this, slot] {
      const unsigned status = registerBlade(slot);
      EXPECT_TRUE(status == 100 || status == 511) << status;
    });
    startBeside([this, slot] { createSMAClient(slot, "127.0.0.1", blade_.port(), true); });
    startBeside([slot] { deRegister(static_cast<unsigned>(std::stoi(slot))); });
    startBeside([this, slot] {
      const unsigned status =
          request("heartbeat", "<heartbeatRequest/>", std::string("sma_slot") + slot);
      EXPECT_TRUE(status == 100 || status == 510 || status == 511) << status;
    });
  }
  startBeside([] {
    const ActivityAt activity("FINJ_FSM_FAIL_ZanDmeFsmSdAppInstanceStopApplicationSendCommand", 8,
                              2048);
    std::this_thread::yield();
  });
  join();
  EXPECT_EQ(blade_.taken(), succeeded_);
  EXPECT_GT(succeeded_, 0);

  verdicts = 0;  // the next is valid
  deRegister(3);
  EXPECT_EQ(sendMsg("3", "<a/>", "stopApp"), 580U);
  EXPECT_EQ(registerBlade("3"), 100U);
  EXPECT_EQ(sendMsg("3", "<a/>", "stopApp"), 100U);
}

}  // namespace
}  // namespace zan_serviceOrchAG
