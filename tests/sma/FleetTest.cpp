#include "sma/Fleet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace sma {
namespace {

/// A gateway that answers everything with 100 and the token "t1", on a port that the system chose.
class FakeGateway {
 public:
  FakeGateway() : listener_(sockets_.addListener("tcp://127.0.0.1:*")) {
    endPoint_ = sockets_.endPoint(listener_);
    thread_ = std::jthread([this](const std::stop_token& stop) { serve(stop); });
  }
  ~FakeGateway() {
    thread_.request_stop();
    sockets_.wake();
  }

  const std::string& endPoint() const { return endPoint_; }

 private:
  void serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      sockets_.poll(std::chrono::milliseconds(50),
                    [this](auto index, const std::string& routing, msglyr::Message& request) {
                      msglyr::Message reply(std::vector<std::string>{
                          request[3] + ".x", request[1], request[2], "100",
                          "<r><response><code>100</code></response><token>t1</token></r>"});
                      sockets_.reply(index, routing, reply);
                    });
    }
  }

  msglyr::DealerSet sockets_;
  msglyr::DealerSet::Index listener_;
  std::string endPoint_;
  std::jthread thread_;
};

TEST(Fleet, BladesOverRealSockets_RegisterBeatAndReport) {
  FakeGateway gateway;
  Fleet::Settings settings;
  settings.slots = {1, 2, 3};
  settings.gateway = gateway.endPoint();
  settings.beat = std::chrono::milliseconds(20);
  settings.report = std::chrono::milliseconds(20);
  settings.apps = 2;
  settings.runFor = std::chrono::milliseconds(10'000);
  Fleet fleet(settings, {});
  fleet.run([&fleet](const Fleet& running) {
    const auto blades = running.blades();
    if (std::all_of(blades.begin(), blades.end(), [](const BladeAgent* blade) {
          return blade->counts().sent(RequestKind::Beat) >= 3;
        })) {
      fleet.stop();
    }
  });
  for (const BladeAgent* blade : fleet.blades()) {
    EXPECT_EQ(blade->state(), BladeAgent::State::Registered) << blade->slot();
    EXPECT_EQ(blade->token(), "t1");
    EXPECT_GE(blade->counts().sent(RequestKind::Beat), 3U);
    EXPECT_GE(blade->counts().of(RequestKind::Report).replies(), 2U);
  }
}

}  // namespace
}  // namespace sma
