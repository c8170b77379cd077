#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace load {

/// Prints the usual table of Google Benchmark and remembers each CPU time, so that it can print
/// what each workload costs beside its reference.
class RatioReporter final : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      nanoseconds_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }

  /// CPU time of one iteration in nanoseconds; 0 of a workload that was not run.
  double nanoseconds(const std::string& workload) const {
    const auto found = nanoseconds_.find(workload);
    return found == nanoseconds_.end() ? 0 : found->second;
  }

  /// A line for each workload that has a reference and was run together with it.
  template <class Workloads>
  void printRatios(const Workloads& workloads) const {
    for (const auto& workload : workloads) {
      if (workload.reference == nullptr || nanoseconds(workload.reference) == 0 ||
          nanoseconds(workload.name) == 0) {
        continue;
      }
      std::printf("%-16s %8.1f ns = %.2f x %s\n", workload.name, nanoseconds(workload.name),
                  nanoseconds(workload.name) / nanoseconds(workload.reference), workload.reference);
    }
  }

 private:
  std::map<std::string, double> nanoseconds_;
};

}  // namespace load
