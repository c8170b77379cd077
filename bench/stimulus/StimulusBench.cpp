// The price of a heartbeat's way to the management engine, each step beside a copy of its bytes.
//
//   copyBytes      memcpy of the encoded heartbeat into a buffer: the reference
//   encodeFresh    a new stimulus, its header and arguments
//   encodePooled   the same with a stimulus from the pool
//   sendInproc     encodePooled and over the inproc link into the engine's receiver, both threads'
//                  time together
//   decode         header and arguments read back into a method object

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/load/RatioReporter.h"
#include "framework/method/ArgCodec.h"
#include "framework/method/Wire.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Cookie.h"
#include "framework/proc/DmeLink.h"
#include "framework/proc/EngineLink.h"
#include "model/serviceorchapi/Methods.h"

namespace {

using Heartbeat = serviceorchapi::UpdateSmaHeartbeatMe;
using proc::BinStimulus;
using proc::Stimulus;

base::Buffer oneCookie() {
  base::Buffer cookie;
  proc::makeCookie(cookie);
  return cookie;
}

void fill(BinStimulus& stimulus, const base::Buffer& cookie, std::uint32_t count) {
  stimulus.setCookie(cookie);
  stimulus.setAddress({26, 1, 26, 0});
  stimulus.setResponseRequired(false);
  stimulus.serialize(stimulus.stream());
  method::writeArgs(stimulus.stream(), Heartbeat::InTuple{3, count, 5});
}

std::unique_ptr<BinStimulus> pooledHeartbeat(const base::Buffer& cookie, std::uint32_t count) {
  auto stimulus = BinStimulus::obtain(Heartbeat::kClassId, Heartbeat::kIntent, Heartbeat::kBulk);
  fill(*stimulus, cookie, count);
  return stimulus;
}

void copyBytes(benchmark::State& state) {
  const auto stimulus = pooledHeartbeat(oneCookie(), 1);
  const std::size_t size = stimulus->stream().size();
  std::vector<unsigned char> target(size);
  for ([[maybe_unused]] auto iteration : state) {
    std::memcpy(target.data(), stimulus->stream().data(), size);
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
}

void encodeFresh(benchmark::State& state) {
  const base::Buffer cookie = oneCookie();
  std::uint32_t count = 0;
  for ([[maybe_unused]] auto iteration : state) {
    BinStimulus stimulus(Heartbeat::kClassId, Stimulus::kTypeMethod, Heartbeat::kIntent,
                         Heartbeat::kBulk, Stimulus::Priority::kDefault,
                         Stimulus::kResponseRequired, 0);
    fill(stimulus, cookie, ++count);
    benchmark::DoNotOptimize(stimulus.stream().data());
  }
}

void encodePooled(benchmark::State& state) {
  const base::Buffer cookie = oneCookie();
  std::uint32_t count = 0;
  for ([[maybe_unused]] auto iteration : state) {
    auto stimulus = pooledHeartbeat(cookie, ++count);
    benchmark::DoNotOptimize(stimulus->stream().data());
    BinStimulus::POOL.give(std::move(stimulus));
  }
}

void decode(benchmark::State& state) {
  const auto stimulus = pooledHeartbeat(oneCookie(), 1);
  for ([[maybe_unused]] auto iteration : state) {
    const auto call =
        method::decodeCall<Heartbeat>(stimulus->stream().data(), stimulus->stream().size());
    benchmark::DoNotOptimize(call.get());
  }
}

void waitUntil(const std::atomic<std::uint64_t>& received, std::uint64_t count) {
  while (received.load(std::memory_order_acquire) < count) {
    std::this_thread::yield();
  }
}

void sendInproc(benchmark::State& state) {
  constexpr std::uint64_t kMostUnderWay = 20000;  // stays far below the link's bound
  std::atomic<std::uint64_t> received{0};
  proc::EngineLink engine("inproc://bench-stimulus-" + std::to_string(state.max_iterations));
  engine.start([&](proc::EngineLink::PeerId, const unsigned char*, std::size_t) {
    received.fetch_add(1, std::memory_order_release);
  });
  proc::DmeLink service;
  service.open(engine.endPoint(), [](const unsigned char*, std::size_t) {});
  const base::Buffer cookie = oneCookie();
  std::uint64_t sent = 0;
  for ([[maybe_unused]] auto iteration : state) {
    auto stimulus = pooledHeartbeat(cookie, static_cast<std::uint32_t>(++sent));
    service.send(stimulus->stream(), false);
    BinStimulus::POOL.give(std::move(stimulus));
    if (sent % 1000 == 0 && sent > kMostUnderWay) {
      waitUntil(received, sent - kMostUnderWay);
    }
  }
  waitUntil(received, sent);
  if (service.dropped() != 0) {
    state.SkipWithError("stimuli were dropped");
  }
  service.close();
}

struct Workload {
  const char* name;
  void (*run)(benchmark::State&);
  benchmark::IterationCount iterations;
};

constexpr std::array kWorkloads{
    Workload{"copyBytes", copyBytes, 20'000'000},
    Workload{"encodeFresh", encodeFresh, 2'000'000},
    Workload{"encodePooled", encodePooled, 5'000'000},
    Workload{"decode", decode, 5'000'000},
    Workload{"sendInproc", sendInproc, 2'000'000},
};

void printCosts(const load::RatioReporter& reporter) {
  const double reference = reporter.nanoseconds("copyBytes");
  if (reference == 0) {
    return;
  }
  std::printf("\n%-14s %12s %10s\n", "workload", "ns/stimulus", "x memcpy");
  for (const Workload& workload : kWorkloads) {
    if (const double measured = reporter.nanoseconds(workload.name); measured != 0) {
      std::printf("%-14s %12.1f %10.1f\n", workload.name, measured, measured / reference);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  for (const Workload& workload : kWorkloads) {
    benchmark::RegisterBenchmark(workload.name, workload.run)
        ->Iterations(workload.iterations)
        ->MeasureProcessCPUTime();
  }
  load::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  printCosts(reporter);
  return 0;
}
