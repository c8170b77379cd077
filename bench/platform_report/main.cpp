// The CPU time of a platform report of some 8 KiB (16 disks, 32 application instances) between its
// arrival and its reply, as a multiple of what the parser behind the converter needs to parse the
// same text and throw it away. The transport is not part of it, nor is the engine, which answers at
// once and on the handler's own thread.
//
//   read     the document to elements
//   objects  the managed objects of the report, made, packed and written as the two calls' bytes
//   handler  all of it: the report's handler, with the calls to the engine and the reply
//
// Subject and reference run in turns, many times, on this thread's CPU clock; what is printed are
// the medians of the turns. Usage: bench_platform_report [TURNS]

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "bench/load/Statistics.h"
#include "framework/core_log/Log.h"
#include "framework/mo/Pool.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Svc.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"

namespace {

using zan_serviceOrchAG::MsgHandler;
using zan_serviceOrchAG::Response;

constexpr int kDisks = 16;
constexpr int kApps = 32;
// Long enough that reading the clock does not count.
constexpr int kPerTurn = 40;

std::string diskText(int number) {
  const std::string n = std::to_string(number);
  return "<Disk><DiskName>/dev/sda" + n +
         "</DiskName><DiskTotalKB>41152832</DiskTotalKB><DiskFreeKB>20576416</DiskFreeKB>"
         "<DiskUsedKB>20576416</DiskUsedKB><DiskMountPoint>/mnt/" +
         n + "</DiskMountPoint></Disk>";
}

std::string appText(int number) {
  return "<application><appInstanceId>" + std::to_string(1000 + number) +
         "</appInstanceId><adminStatus>enable</adminStatus><operStatus>running</operStatus>"
         "<installedVersion>2.1." +
         std::to_string(number) + "</installedVersion></application>";
}

const std::string& report() {
  static const std::string text = [] {
    std::string document =
        "<platformInfoUpdateRequest><OsVersion>4.2.1</OsVersion><Sysuptime>12 days, "
        "3:04</Sysuptime>"
        "<Cpu><minus1>0.42</minus1><minus5>0.37</minus5><minus15>0.30</minus15></Cpu>"
        "<Memory><minus1><MemTotalKB>65843200</MemTotalKB><MemFreeKB>32921600</MemFreeKB>"
        "<MemUsedKB>32921600</MemUsedKB></minus1></Memory><AppsMemory><CurrentSnapshot>"
        "<MemTotalKB>16460800</MemTotalKB></CurrentSnapshot></AppsMemory>"
        "<DiskFilesystem><minus1>";
    for (int i = 0; i < kDisks; ++i) {
      document += diskText(i);
    }
    document += "</minus1></DiskFilesystem>";
    for (int i = 0; i < kApps; ++i) {
      document += appText(i);
    }
    return document + "</platformInfoUpdateRequest>";
  }();
  return text;
}

/// Answers a platform report at once, and lets the calls' memory be used again, as a link does.
class Engine final : public proc::Svc {
 public:
  Engine() : proc::Svc(26) { instance = this; }
  ~Engine() override { instance = nullptr; }

  void send(std::unique_ptr<proc::Stimulus> stimulus) override {
    if (stimulus->classId() == serviceorchapi::UpdatePlatformInfoMe::kClassId) {
      serviceorchapi::UpdatePlatformInfoMe answered;
      answered.setCookie(stimulus->cookie());
      zan_serviceOrchAG::Svc::successRspServiceorchapiUpdatePlatformInfoCb(answered);
    }
    if (auto* const built = dynamic_cast<proc::BinStimulus*>(stimulus.get())) {
      static_cast<void>(stimulus.release());
      proc::BinStimulus::POOL.give(std::unique_ptr<proc::BinStimulus>(built));
    }
  }
};

void parseOnly() {
  pugi::xml_document document;
  benchmark::DoNotOptimize(document.load_buffer(report().data(), report().size()));
}

void read() {
  noxxml::AgFactory factory;
  benchmark::DoNotOptimize(noxxml::XMLConverter(&factory).xmlDeserialize(report()));
}

method::Config packed(mo::Mo& object) {
  const mo::ChangeFlags* const changed = &object.changeFlags();
  return std::move(object).toConfig(mo::kReportGroups, changed, 0, 0x2000);
}

method::Config disk(int number) {
  using sm::DiskFileSystemMo;
  const auto object = mo::Pool::obtain<DiskFileSystemMo>();
  object->set(DiskFileSystemMo::kDiskName, "/dev/sda" + std::to_string(number));
  object->set(DiskFileSystemMo::kDiskMountPoint, "/mnt/" + std::to_string(number));
  object->set(DiskFileSystemMo::kDiskTotal, 40188);
  object->set(DiskFileSystemMo::kDiskFree, 20094);
  object->set(DiskFileSystemMo::kDiskUsed, 20095);
  return packed(*object);
}

method::Config app(int number) {
  using sm::AppInstanceMo;
  const auto object = mo::Pool::obtain<AppInstanceMo>();
  object->set(AppInstanceMo::kAppInstanceId, std::to_string(1000 + number));
  object->set(AppInstanceMo::kInstalledVersion, "2.1." + std::to_string(number));
  object->set(AppInstanceMo::kState, sm::kAppActive);
  return packed(*object);
}

method::Config monitor() {
  using sm::MonitorMo;
  const auto object = mo::Pool::obtain<MonitorMo>();
  object->set(MonitorMo::kOsVersion, "4.2.1");
  object->set(MonitorMo::kSysUptime, "12 days, 3:04");
  object->set(MonitorMo::kCpuMinus1, 0.42F);
  object->set(MonitorMo::kCpuMinus5, 0.37F);
  object->set(MonitorMo::kCpuMinus15, 0.30F);
  object->set(MonitorMo::kMemTotal, 64300);
  object->set(MonitorMo::kMemFree, 32150);
  object->set(MonitorMo::kMemUsed, 32150);
  object->set(MonitorMo::kAppsMemTotal, 16075);
  object->set(MonitorMo::kDiskCount, kDisks);
  return packed(*object);
}

void objects() {
  method::ConfigSet disks;
  for (int i = 0; i < kDisks; ++i) {
    disks.append(disk(i));
  }
  method::ConfigSet apps;
  for (int i = 0; i < kApps; ++i) {
    apps.append(app(i));
  }
  thread_local base::OBioStream stream;
  stream.clear();
  monitor().serialize(stream);
  disks.serialize(stream);
  apps.serialize(stream);
  benchmark::DoNotOptimize(stream.data());
}

void handle() {
  static MsgHandler& messages = *MsgHandler::getInstance();
  const std::unique_ptr<Response> response(
      messages.AG_platformInfoUpdateReqCb("1234", "update", report(), 3));
  benchmark::DoNotOptimize(response.get());
}

double cpuMicros() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

double microsOfTurn(void (*work)()) {
  const double start = cpuMicros();
  for (int i = 0; i < kPerTurn; ++i) {
    work();
  }
  return (cpuMicros() - start) / kPerTurn;
}

struct Workload {
  const char* name;
  void (*work)();
};

constexpr std::array kWorkloads{
    Workload{"read", read},
    Workload{"objects", objects},
    Workload{"handler", handle},
};

void compare(int turns) {
  std::vector<double> parsing;
  std::array<std::vector<double>, kWorkloads.size()> micros;
  std::array<std::vector<double>, kWorkloads.size()> ratios;
  for (int turn = 0; turn < turns; ++turn) {
    for (std::size_t i = 0; i < kWorkloads.size(); ++i) {
      parsing.push_back(microsOfTurn(parseOnly));
      micros[i].push_back(microsOfTurn(kWorkloads[i].work));
      ratios[i].push_back(micros[i].back() / parsing.back());
    }
  }
  std::printf("%zu bytes, %d disks, %d applications\n", report().size(), kDisks, kApps);
  std::printf("%-8s %8.1f us\n", "parse", load::median(parsing));
  for (std::size_t i = 0; i < kWorkloads.size(); ++i) {
    std::printf("%-8s %8.1f us = %.2f x parse\n", kWorkloads[i].name, load::median(micros[i]),
                load::median(ratios[i]));
  }
}

}  // namespace

int main(int argc, char** argv) {
  core_log::setLevel(6);  // as in operation: without the lines that trace each step
  Engine engine;
  compare(argc > 1 ? std::max(1, std::atoi(argv[1])) : 101);
  return 0;
}
