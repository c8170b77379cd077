// The CPU time of a heartbeat between its arrival and its reply, beside the least that it could
// cost. The transport is not part of it, nor is the way of the call to the engine.
//
//   parseAndAnswer  the floor: the two numbers read with pugixml, the reply put together as text
//   handler         the heartbeat's handler: tags, numbers, the call to the engine, the reply
//   dispatch        the same with what comes before: the command, the slot, the blade's state

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "bench/load/RatioReporter.h"
#include "framework/core_log/Log.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Svc.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/server/MsgHandler.h"

namespace {

using zan_serviceOrchAG::MsgHandler;
using zan_serviceOrchAG::Response;

struct Workload {
  const char* name;
  void (*run)(benchmark::State&);
  const char* reference;  // the workload that it is compared with; null for a reference
};

const std::string kCommand = "heartbeat";
const std::string kNoAction;
const std::string kMessageId = "1234";
const std::string kIdentity = "sma_slot3";
const std::string kDocument =
    "<heartbeatRequest><count>17</count><timer>30</timer></heartbeatRequest>";

/// Takes the calls to the engine and lets their memory be used again, as a link does.
class Engine final : public proc::Svc {
 public:
  Engine() : proc::Svc(26) { instance = this; }
  ~Engine() override { instance = nullptr; }

  void send(std::unique_ptr<proc::Stimulus> stimulus) override {
    if (auto* const built = dynamic_cast<proc::BinStimulus*>(stimulus.get())) {
      static_cast<void>(stimulus.release());
      proc::BinStimulus::POOL.give(std::unique_ptr<proc::BinStimulus>(built));
    }
  }
};

void parseAndAnswer(benchmark::State& state) {
  for ([[maybe_unused]] auto iteration : state) {
    pugi::xml_document document;
    document.load_buffer(kDocument.data(), kDocument.size());
    const pugi::xml_node root = document.document_element();
    unsigned sum = root.child("count").text().as_uint() + root.child("timer").text().as_uint();
    benchmark::DoNotOptimize(sum);
    std::string reply = "<heartbeatResponse><response><code>";
    reply += std::to_string(100);
    reply += "</code><message>OK</message></response></heartbeatResponse>";
    benchmark::DoNotOptimize(reply.data());
  }
}

void handler(benchmark::State& state) {
  Engine engine;
  MsgHandler messages;
  for ([[maybe_unused]] auto iteration : state) {
    const std::unique_ptr<Response> response(
        messages.AG_heartbeatReqCb(kMessageId, kNoAction, kDocument, 3));
    benchmark::DoNotOptimize(response->body.data());
  }
}

void dispatch(benchmark::State& state) {
  Engine engine;
  MsgHandler messages;
  messages.registerCommands();
  zan_serviceOrchAG::createSMAClient("3", "127.0.0.1", "1", true);
  for ([[maybe_unused]] auto iteration : state) {
    const std::unique_ptr<Response> response(
        messages.handleCb(kCommand, kNoAction, kMessageId, kDocument, kIdentity));
    benchmark::DoNotOptimize(response->body.data());
  }
  zan_serviceOrchAG::removeBladeMapEntry("3");
}

constexpr std::array kWorkloads{
    Workload{"parseAndAnswer", parseAndAnswer, nullptr},
    Workload{"handler", handler, "parseAndAnswer"},
    Workload{"dispatch", dispatch, "parseAndAnswer"},
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  core_log::setLevel(6);  // without the lines about the blade's registration
  for (const Workload& workload : kWorkloads) {
    benchmark::RegisterBenchmark(workload.name, workload.run);
  }
  load::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios(kWorkloads);
  return 0;
}
