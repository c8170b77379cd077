#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

#include "framework/proc/DmeLink.h"
#include "model/agboot/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "tests/dme/support/ServiceStandIn.h"

namespace dme_test {

/// A service connected to an engine over a real link. Calls are for one thread, send() for any.
class EngineClient {
 public:
  explicit EngineClient(const std::string& endPoint) : receive_(standIn_.receiver()) {
    link_.open(endPoint, [this](const unsigned char* bytes, std::size_t size) {
      base::OBioStream copy;
      copy.loopWrite(bytes, static_cast<unsigned>(size));
      receive_(0, copy, true);
    });
  }

  void send(const std::string& bytes) {
    base::OBioStream stream;
    stream.loopWrite(reinterpret_cast<const unsigned char*>(bytes.data()),
                     static_cast<unsigned>(bytes.size()));
    EXPECT_TRUE(link_.send(stream, true));
  }
  template <class Me>
  method::Answer<Me> call(typename Me::InTuple arguments) {
    const std::string cookie = "call " + std::to_string(++calls_);
    send(ServiceStandIn::encode<Me>(std::move(arguments), cookie));
    return decode<Me>(standIn_.waitForAnswer(cookie)).value();
  }
  /// Registers the blade until it is valid; the token that it is told.
  base::String admit(std::uint32_t slot) {
    using serviceorchapi::ValidateBladeStateMe;
    base::String token = std::get<0>(call<ValidateBladeStateMe>({slot, "1.2", ""}).me->out);
    EXPECT_TRUE(std::get<1>(call<ValidateBladeStateMe>({slot, "1.2", token}).me->out));
    return token;
  }
  void beat(std::uint32_t slot, std::uint32_t count) {
    send(
        ServiceStandIn::encode<serviceorchapi::UpdateSmaHeartbeatMe>({slot, count, 1}, "c", false));
  }
  /// Returns when the engine has worked on everything that was sent before.
  void settle() { call<agboot::BootstrapDoneMe>({}); }

 protected:
  ServiceStandIn standIn_;

 private:
  unsigned calls_ = 0;
  dme::MethodServer::Send receive_;
  proc::DmeLink link_;  // last: its thread uses the rest
};

}  // namespace dme_test
