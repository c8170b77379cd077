#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "framework/base/Buffer.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Svc.h"
#include "serviceOrchAG/svc/Svc.h"

// A program of its own, because it counts what the whole program allocates.

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

// Not inlined, or the compiler sees malloc meet delete and takes it for a mistake.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace zan_serviceOrchAG {
namespace {

/// Gives every stimulus back to the pool, as one does that has sent it.
class PoolingSvc : public proc::Svc {
 public:
  PoolingSvc() : proc::Svc(26), previous_(std::exchange(proc::Svc::instance, this)) {}
  ~PoolingSvc() override { proc::Svc::instance = previous_; }

  void send(std::unique_ptr<proc::Stimulus> stimulus) override {
    auto* const binary = dynamic_cast<proc::BinStimulus*>(stimulus.release());
    proc::BinStimulus::POOL.give(std::unique_ptr<proc::BinStimulus>(binary));
  }

 private:
  proc::Svc* previous_;
};

TEST(DmeInvocationsAllocation, HeartbeatAfterTheFirst_AllocatesNothing) {
  const PoolingSvc service;
  base::Buffer cookie;
  cookie.allocate("sixteen bytes...", 16);
  const auto heartbeat = [&cookie] {
    const std::size_t before = allocations;
    Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(cookie, 3, 1, 30, false,
                                                      proc::Stimulus::Priority::kDefault);
    return allocations - before;
  };
  EXPECT_GT(heartbeat(), 0U) << "does not count";
  EXPECT_EQ(heartbeat(), 0U);
  EXPECT_EQ(heartbeat(), 0U);
}

}  // namespace
}  // namespace zan_serviceOrchAG
