#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "dme/BladeMonitor.h"
#include "dme/Chassis.h"
#include "dme/MethodServer.h"
#include "dme/ObjectStore.h"
#include "framework/base/ChassisFile.h"
#include "model/serviceorchapi/Methods.h"
#include "tests/dme/ServiceStandIn.h"
#include "tests/dme/TempDirectory.h"

// What the engine has acknowledged is there after its process was killed at any moment.

namespace dme {
namespace {

using serviceorchapi::ValidateBladeStateMe;

constexpr std::size_t kTokenBytes = 32;

/// What the child writes for each acknowledged registration; short enough for an atomic write.
struct Acknowledged {
  std::uint32_t slot;
  char token[kTokenBytes];
};

/// Registers blades without end, and writes down what they are told as it is told.
[[noreturn]] void runEngine(const std::string& directory, int out, std::uint32_t firstSlot) {
  auto store = ObjectStore::open(directory);
  if (!store) {
    ::_exit(1);
  }
  Chassis chassis(**store, std::nullopt);
  BladeMonitor monitor{BladeMonitor::Settings{}};
  MethodServer server(
      **store, chassis, monitor, [&](std::uint64_t peer, const base::OBioStream& bytes, bool) {
        const auto answer = method::decodeAnswer<ValidateBladeStateMe>(bytes.data(), bytes.size());
        const std::string token = std::get<0>(answer->me->out).str();
        Acknowledged record{static_cast<std::uint32_t>(peer), {}};
        token.copy(record.token, kTokenBytes);
        return ::write(out, &record, sizeof record) == sizeof record;
      });
  for (std::uint32_t i = firstSlot;; ++i) {
    // Mostly slots without a token, and every third time one that got its token lately.
    const std::uint32_t slot = (i % 3 == 2 ? i - 2 : i) % base::kHighestSlot + 1;
    const std::string call =
        dme_test::ServiceStandIn::encode<ValidateBladeStateMe>({slot, std::to_string(i), ""});
    server.handle(slot, reinterpret_cast<const unsigned char*>(call.data()), call.size(), {});
    if (i % 8 == 0) {
      std::this_thread::yield();  // commits of one and of many transactions
    }
  }
}

class Durability : public testing::Test {
 protected:
  /// Runs an engine until it has acknowledged `enough` registrations, kills it, and adds what it
  /// acknowledged until then.
  void runAndKill(std::size_t enough, std::uint32_t firstSlot) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(ends[0]);
      runEngine(directory_.path(), ends[1], firstSlot);
    }
    ::close(ends[1]);
    std::size_t count = 0;
    Acknowledged record;
    while (::read(ends[0], &record, sizeof record) == sizeof record) {
      note(record);
      if (++count == enough) {
        ::kill(child, SIGKILL);
      }
    }
    ::close(ends[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child failed";
    ASSERT_GE(count, enough);
  }

  void note(const Acknowledged& record) {
    const std::string token(record.token, kTokenBytes);
    const auto [known, isNew] = tokens_.emplace(record.slot, token);
    EXPECT_EQ(known->second, token) << "slot " << record.slot << " was told two tokens";
  }

  void expectAllHeld() {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    const Chassis chassis(**store, std::nullopt);
    for (const auto& [number, token] : tokens_) {
      const Object* slot = chassis.slot(number);
      ASSERT_NE(slot, nullptr) << "slot " << number;
      EXPECT_EQ(slot->get(slot_object::kToken), token) << "slot " << number;
    }
  }

  dme_test::TempDirectory directory_;
  std::map<std::uint32_t, std::string> tokens_;  // every token that was acknowledged, by slot
};

TEST_F(Durability, KilledAtAnyMoment_HoldsEveryTokenThatWasAcknowledged) {
  std::mt19937 random(static_cast<unsigned>(::getpid()));
  for (std::uint32_t round = 0; round < 12; ++round) {
    runAndKill(1 + random() % 60, round * 1200);
    expectAllHeld();
  }
  EXPECT_GT(tokens_.size(), 1u);
}

}  // namespace
}  // namespace dme
