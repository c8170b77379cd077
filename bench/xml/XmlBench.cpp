// What a document costs, as a multiple of what the parser behind the converter needs to parse
// the same text and throw it away:
//
//   heartbeat/read      a heartbeat of some 130 bytes to a map of its values
//   heartbeat/reply     the reply to it, built and written
//   heartbeat/exchange  both, one after the other, as a worker does it
//   platformInfo/read   a platform report of about 8 KiB to elements, and its 64 applications found
//
// Subject and reference run in turns within one measurement, so that whatever else happens on
// the machine happens to both. The column "ratio" is subject / reference; the times are those of
// the subject alone.

#include <benchmark/benchmark.h>

#include <chrono>
#include <pugixml.hpp>
#include <string>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"

namespace {

using Clock = std::chrono::steady_clock;
using noxxml::AgElement;
using noxxml::AgFactory;
using noxxml::XMLConverter;

// Long enough that reading the clock does not count.
constexpr int kTurn = 64;

const std::string& heartbeat() {
  static const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<heartbeatRequest>\n"
      "  <count>12345</count>\n"
      "  <timer>10000</timer>\n"
      "</heartbeatRequest>\n";
  return text;
}

const std::string& platformInfo() {
  static const std::string text = [] {
    std::string document = "<platformInfoUpdateRequest><bladeSlotId>3</bladeSlotId>";
    for (int i = 0; i < 64; ++i) {
      document += "<application><appInstanceId>instance-" + std::to_string(i) +
                  "</appInstanceId><operState>running</operState>"
                  "<adminState>enable</adminState></application>";
    }
    return document + "</platformInfoUpdateRequest>";
  }();
  return text;
}

void parseOnly(const std::string& text) {
  pugi::xml_document document;
  benchmark::DoNotOptimize(document.load_buffer(text.data(), text.size()));
}

void readHeartbeat() {
  benchmark::DoNotOptimize(XMLConverter::xml2map(heartbeat(), "heartbeatRequest"));
}

void buildReply() {
  AgFactory factory;
  XMLConverter converter(&factory);
  AgElement* const root = converter.xmlAddRootNode("heartbeatResponse", "");
  AgElement* const response = converter.xmlAddChildNode("response", "", root);
  converter.xmlAddChildNode("code", "100", response);
  converter.xmlAddChildNode("message", "OK", response);
  benchmark::DoNotOptimize(converter.xmlSerialize(root));
}

void exchangeHeartbeat() {
  readHeartbeat();
  buildReply();
}

void readPlatformInfo() {
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize(platformInfo());
  benchmark::DoNotOptimize(root->xmlFindAllElementsCb("application"));
}

template <typename Work>
double secondsOfTurn(Work work) {
  const Clock::time_point start = Clock::now();
  for (int i = 0; i < kTurn; ++i) {
    work();
  }
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void compare(benchmark::State& state, void (*subject)(), const std::string& (*text)()) {
  double subjectTotal = 0;
  double referenceTotal = 0;
  for ([[maybe_unused]] auto each : state) {
    referenceTotal += secondsOfTurn([text] { parseOnly(text()); });
    const double seconds = secondsOfTurn(subject);
    subjectTotal += seconds;
    state.SetIterationTime(seconds / kTurn);
  }
  state.counters["ratio"] = subjectTotal / referenceTotal;
  state.counters["bytes"] = static_cast<double>(text().size());
}

struct Workload {
  const char* name;
  void (*subject)();
  const std::string& (*text)();
};

constexpr Workload kWorkloads[] = {
    {"heartbeat/read", readHeartbeat, heartbeat},
    {"heartbeat/reply", buildReply, heartbeat},
    {"heartbeat/exchange", exchangeHeartbeat, heartbeat},
    {"platformInfo/read", readPlatformInfo, platformInfo},
};

}  // namespace

int main(int argc, char** argv) {
  for (const Workload& each : kWorkloads) {
    benchmark::RegisterBenchmark(each.name, compare, each.subject, each.text)
        ->UseManualTime()
        ->MinTime(0.01);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
