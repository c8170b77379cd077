#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "dme/link/MethodServer.h"
#include "model/agboot/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppInstanceMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/ServiceStandIn.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme_test {

/// A server of methods on a store and a chassis of its own, called by a service that stands in.
class MethodServerFixture : public testing::Test {
 protected:
  static constexpr std::uint64_t kPeer = 5;

  void SetUp() override {
    auto store = dme::ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    store_ = std::move(*store);
    chassis_ = std::make_unique<dme::Chassis>(*store_, std::nullopt);
    server_ = std::make_unique<dme::MethodServer>(*store_, *chassis_, monitor_, service_.receiver(),
                                                  [] { return std::uint64_t{1700000000000}; });
  }
  void TearDown() override { store_->close(); }

  void handle(const std::string& bytes) {
    server_->handle(kPeer, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                    now_);
  }
  /// Makes the call and returns the engine's next stimulus.
  std::string ask(const std::string& bytes) {
    const std::size_t before = service_.count();
    handle(bytes);
    const auto sent = service_.waitFor(before + 1);
    EXPECT_EQ(sent.back().peer, kPeer);
    EXPECT_TRUE(sent.back().isUrgent);
    return sent.back().bytes;
  }
  template <class Me>
  method::Answer<Me> call(typename Me::InTuple arguments) {
    auto answer = decode<Me>(ask(ServiceStandIn::encode<Me>(std::move(arguments))));
    EXPECT_TRUE(answer) << "no answer of this method";
    return std::move(*answer);
  }
  /// Makes the call without wanting an answer, and checks that none comes.
  void tell(const std::string& bytes) {
    const std::size_t before = service_.count();
    handle(bytes);
    ask(ServiceStandIn::encode<agboot::BootstrapDoneMe>({}));  // leaves after whatever came before
    EXPECT_EQ(service_.count(), before + 1);
  }
  /// Registers the blade until it is valid; the token that it is told.
  base::String admit(std::uint32_t slot) {
    call<serviceorchapi::ValidateBladeStateMe>({slot, "1.2", ""});
    const auto answer = call<serviceorchapi::ValidateBladeStateMe>({slot, "1.2", ""});
    EXPECT_TRUE(std::get<1>(answer.me->out));
    return std::get<0>(answer.me->out);
  }
  std::uint64_t callsOf(std::string_view name) const {
    for (const dme::MethodServer::MethodCount& method : server_->counters().methods) {
      if (method.name == name) {
        return method.calls;
      }
    }
    ADD_FAILURE() << "no method " << name;
    return 0;
  }

  /// What a blade reports.
  static method::Config monitor(const base::String& osVersion) {
    sm::MonitorMo report;
    report.set(sm::MonitorMo::kOsVersion, osVersion);
    return report.toConfig();
  }

  static method::ConfigSet instances(std::initializer_list<base::String> identifiers) {
    method::ConfigSet set;
    for (const base::String& identifier : identifiers) {
      sm::AppInstanceMo report;
      report.set(sm::AppInstanceMo::kAppInstanceId, identifier);
      set.append(report.toConfig());
    }
    return set;
  }

  TempDirectory directory_;
  ServiceStandIn service_;
  dme::BladeMonitor monitor_{{std::chrono::seconds(1), 3, std::chrono::seconds(30)}};
  std::unique_ptr<dme::ObjectStore> store_;
  std::unique_ptr<dme::Chassis> chassis_;
  std::unique_ptr<dme::MethodServer> server_;
  dme::MethodServer::TimePoint now_{std::chrono::seconds(1000)};
};

}  // namespace dme_test
