// The price of a log line, each workload beside the least that it could cost.
//
//   belowLevel     a line that the level keeps out, against one relaxed load and a branch
//   belowLevelText the same with texts as arguments: nothing of them is looked at
//   emitted        a line to a file, against snprintf and write(2) of the same bytes
//   emittedDocument a line that carries a document of 4 KiB, against the same

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "bench/load/RatioReporter.h"
#include "framework/core_log/Log.h"

namespace {

struct Workload {
  const char* name;
  void (*run)(benchmark::State&);
  const char* reference;  // the workload that it is compared with; null for a reference
  benchmark::IterationCount iterations;  // so many that the page cache takes all of it
};

const std::string kIdentity = "sma-blade-7";
const std::string kDocument(4096, 'x');

std::string temporaryFile() {
  const char* const folder = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): one thread
  return std::string(folder != nullptr ? folder : "/tmp") + "/bench-log-" +
         std::to_string(::getpid());
}

void relaxedLoad(benchmark::State& state) {
  static std::atomic<int> cell{5};
  for ([[maybe_unused]] auto iteration : state) {
    if (cell.load(std::memory_order_relaxed) <= 1) {
      benchmark::ClobberMemory();
    }
  }
}

void belowLevel(benchmark::State& state) {
  int worker = 0;
  for ([[maybe_unused]] auto iteration : state) {
    core_log::logPrintf("run", core_log::serviceLevel(), 1,
                        "Worker %d waiting to receive message from SMA.", ++worker);
  }
}

void belowLevelText(benchmark::State& state) {
  for ([[maybe_unused]] auto iteration : state) {
    core_log::logPrintf("handleCb", core_log::serviceLevel(), 4,
                        "client identity : %s, Message : %s", kIdentity.c_str(), kDocument.c_str());
  }
}

/// Sends the lines to a file that has no name any more, so that nothing stays behind.
class LogFile {
 public:
  LogFile() : path_(temporaryFile()) {
    if (core_log::setFile(path_)) {
      std::cerr << "cannot open " << path_ << '\n';
      std::exit(1);  // NOLINT(concurrency-mt-unsafe): one thread
    }
    ::unlink(path_.c_str());
  }
  ~LogFile() { static_cast<void>(core_log::setFile("")); }

  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

 private:
  const std::string path_;
};

void emit(benchmark::State& state, const std::string& text) {
  const LogFile file;
  for ([[maybe_unused]] auto iteration : state) {
    core_log::logPrintf("handleCb", core_log::serviceLevel(), 6, "slot : %d, Message : %s", 7,
                        text.c_str());
  }
}

void emitted(benchmark::State& state) {
  emit(state, kIdentity);
}

void emittedDocument(benchmark::State& state) {
  emit(state, kDocument);
}

/// The time of day is taken once: this is the floor, not another logger.
void write(benchmark::State& state, const std::string& text) {
  const std::string path = temporaryFile();
  const int descriptor =
      ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  ::unlink(path.c_str());
  std::vector<char> line(text.size() + 128);
  for ([[maybe_unused]] auto iteration : state) {
    const int length = std::snprintf(
        line.data(), line.size(), "2026-01-01T00:00:00.000+00:00 %d %s: slot : %d, Message : %s\n",
        6, "handleCb", 7, text.c_str());
    const ssize_t written = ::write(descriptor, line.data(), static_cast<std::size_t>(length));
    if (written != length) {
      state.SkipWithError("a line was not written");
      break;
    }
  }
  ::close(descriptor);
}

void writeShort(benchmark::State& state) {
  write(state, kIdentity);
}

void writeDocument(benchmark::State& state) {
  write(state, kDocument);
}

constexpr benchmark::IterationCount kNoOutput = 200'000'000;
constexpr benchmark::IterationCount kShortLines = 200'000;
constexpr benchmark::IterationCount kDocuments = 20'000;

constexpr std::array kWorkloads{
    Workload{"relaxedLoad", relaxedLoad, nullptr, kNoOutput},
    Workload{"belowLevel", belowLevel, "relaxedLoad", kNoOutput},
    Workload{"belowLevelText", belowLevelText, "relaxedLoad", kNoOutput},
    Workload{"snprintfAndWrite", writeShort, nullptr, kShortLines},
    Workload{"emitted", emitted, "snprintfAndWrite", kShortLines},
    Workload{"snprintfAndWriteDocument", writeDocument, nullptr, kDocuments},
    Workload{"emittedDocument", emittedDocument, "snprintfAndWriteDocument", kDocuments},
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  for (const Workload& workload : kWorkloads) {
    benchmark::RegisterBenchmark(workload.name, workload.run)->Iterations(workload.iterations);
  }
  load::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios(kWorkloads);
  return 0;
}
