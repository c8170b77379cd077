#include "bench/load/PlatformReports.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "sma/messages/ReportDocuments.h"
#include "sma/messages/Requests.h"
#include "sma/platform/Platform.h"

namespace load {
namespace {

constexpr std::size_t kDocumentBytes = 8192;
constexpr std::uint64_t kSeed = 1;
constexpr std::chrono::seconds kPatience{10};

std::string document(std::uint32_t slot, unsigned apps, std::chrono::seconds time) {
  return sma::toXml(sma::platformDocument(sma::BladePlatform(kSeed, slot, apps), time));
}

unsigned appsOfFullDocument(std::uint32_t slot) {
  unsigned apps = 0;
  while (document(slot, apps, std::chrono::seconds(0)).size() < kDocumentBytes) {
    ++apps;
  }
  return apps;
}

}  // namespace

Request platformReports(std::uint32_t slot, std::size_t documents) {
  Request request{"platformInfo.update", {}};
  const unsigned apps = appsOfFullDocument(slot);
  for (std::size_t i = 0; i < documents; ++i) {
    request.documents.push_back(document(slot, apps, std::chrono::seconds(i)));
  }
  return request;
}

ReportTraffic::ReportTraffic(const std::string& endPoint, unsigned blades,
                             std::chrono::milliseconds interval)
    : interval_(interval) {
  constexpr std::size_t kDocuments = 16;
  const Clock::time_point begin = Clock::now();
  for (unsigned i = 0; i < blades; ++i) {
    sockets_.add(endPoint);
    blades_.push_back({platformReports(i + 1, kDocuments), begin + i * interval / blades, {}});
  }
  while (!allAnswered() && Clock::now() < begin + kPatience) {
    sendDue(Clock::now());
    poll(nextDue());
  }
  if (!allAnswered() || figures_.refused > 0) {
    throw std::runtime_error("the gateway does not accept platform reports");
  }
  figures_ = {};
  thread_ = std::jthread([this](std::stop_token stop) { run(std::move(stop)); });
}

ReportTraffic::~ReportTraffic() {
  stop();
}

ReportTraffic::Figures ReportTraffic::stop() {
  if (thread_.joinable()) {
    thread_.request_stop();
    sockets_.wake();
    thread_.join();
  }
  return std::exchange(figures_, {});
}

void ReportTraffic::run(std::stop_token stop) {
  while (!stop.stop_requested()) {
    sendDue(Clock::now());
    poll(nextDue());
  }
}

void ReportTraffic::sendDue(Clock::time_point now) {
  for (std::size_t i = 0; i < blades_.size(); ++i) {
    if (blades_[i].due <= now) {
      send(i, now);
    }
  }
}

void ReportTraffic::send(std::size_t index, Clock::time_point now) {
  Blade& blade = blades_[index];
  if (blade.isWaiting) {
    ++figures_.late;
    blade.due += interval_;
    return;
  }
  const auto slot = static_cast<std::uint32_t>(index + 1);
  const std::string& next = blade.request.documents[blade.answers % blade.request.documents.size()];
  if (!sockets_.send(index, sma::makeRequest(blade.request.command, "1", slot, next))) {
    blade.due = now + std::chrono::milliseconds(10);  // there is no connection yet
    return;
  }
  blade.sent = now;
  blade.isWaiting = true;
  blade.due += interval_;
}

void ReportTraffic::poll(Clock::time_point until) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
  sockets_.poll(std::max(left, std::chrono::milliseconds(0)),
                [this](std::size_t index, const std::string&, msglyr::Message& reply) {
                  Blade& blade = blades_[index];
                  const auto took = Clock::now() - blade.sent;
                  figures_.nanos.push_back(static_cast<std::uint32_t>(took.count()));
                  figures_.refused += reply.getnumParts() == 5 && reply[3] == "100" ? 0 : 1;
                  blade.isWaiting = false;
                  ++blade.answers;
                });
}

ReportTraffic::Clock::time_point ReportTraffic::nextDue() const {
  return std::min_element(blades_.begin(), blades_.end(),
                          [](const Blade& a, const Blade& b) { return a.due < b.due; })
      ->due;
}

bool ReportTraffic::allAnswered() const {
  return std::all_of(blades_.begin(), blades_.end(),
                     [](const Blade& blade) { return blade.answers > 0; });
}

}  // namespace load
