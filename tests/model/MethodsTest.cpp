#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "framework/method/Wire.h"
#include "model/AllMethods.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const base::OBioStream& stream) {
  return {stream.data(), stream.data() + stream.size()};
}

struct Ids {
  std::set<std::uint32_t> all;
  template <class Me>
  void operator()() {
    all.insert(Me::kClassId);
  }
};

TEST(Methods, All27_HaveDistinctClassIds) {
  Ids ids;
  model::AllMethods::forEach(ids);
  EXPECT_EQ(ids.all.size(), 27U);
}

/// Registers execute, success and failure, sends a call and both answers, and sees all three run.
struct CallEveryWay {
  static inline int executed = 0;
  static inline int succeeded = 0;
  static inline int failed = 0;

  template <class Me, class... I, class... O>
  static void registerCounting(std::tuple<I...>*, std::tuple<O...>*) {
    Me::registerCbs([](Me&, const I&...) { ++executed; }, [](Me&, const O&...) { ++succeeded; },
                    [](Me&, unsigned int, const base::String&) { ++failed; }, nullptr, nullptr);
  }

  template <class Me>
  void operator()() {
    registerCounting<Me>(static_cast<typename Me::InTuple*>(nullptr),
                         static_cast<typename Me::OutTuple*>(nullptr));
    const proc::MethodHandler* const handler = proc::MethodTable::instance().find(Me::kClassId);
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(handler->name(), Me::kName);

    Me me;
    const base::OBioStream call = method::encodeCall(me);
    int answers = 0;
    proc::InboundCall inbound(call.data(), call.size(), [&](base::OBioStream&&) { ++answers; });
    EXPECT_TRUE(handler->execute(inbound)) << Me::kName;
    EXPECT_EQ(answers, 1) << Me::kName;

    const base::OBioStream success = method::encodeAnswer(me, me.out);
    proc::InboundAnswer answer(success.data(), success.size());
    EXPECT_TRUE(answer.parse() && handler->succeeded(answer)) << Me::kName;
    const base::OBioStream failure = method::encodeFailure(me, {1, 1003, "refused"});
    proc::InboundAnswer failing(failure.data(), failure.size());
    EXPECT_TRUE(failing.parse() && handler->failed(failing)) << Me::kName;
  }
};

TEST(Methods, All27_AreCallableAndAnswerable) {
  model::AllMethods::forEach(CallEveryWay());
  EXPECT_EQ(CallEveryWay::executed, 27);
  EXPECT_EQ(CallEveryWay::succeeded, 27);
  EXPECT_EQ(CallEveryWay::failed, 27);
  proc::MethodTable::instance().clear();
}

/// Every cut of a call is refused.
struct CutEverywhere {
  template <class Me>
  void operator()() {
    const base::OBioStream call = method::encodeCall(Me());
    for (std::size_t size = 0; size < call.size(); ++size) {
      EXPECT_EQ(method::decodeCall<Me>(call.data(), size), nullptr) << Me::kName << size;
    }
    EXPECT_NE(method::decodeCall<Me>(call.data(), call.size()), nullptr) << Me::kName;
  }
};

TEST(Methods, CallCutAnywhere_IsRefused) {
  model::AllMethods::forEach(CutEverywhere());
}

// The example in docs/stimulus.md.
TEST(Methods, Heartbeat_HasThisLayout) {
  serviceorchapi::UpdateSmaHeartbeatMe me;
  me.in = {3, 7, 5};
  me.setResponseRequired(false);
  me.setAddress({26, 1, 26, 0});
  me.setCookie(base::Buffer("\xc0\xff\xee\x01", 4));
  const Bytes expected{0x01, 0x00, 0x53, 0x5a, 0x8d, 0x01, 0x00, 0x00, 0x00, 0x20, 0x00, 0x00,
                       0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x04, 0x00, 0x00, 0x00,
                       0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                       0x1a, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x1a, 0x00, 0x00, 0x00,
                       0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0xc0, 0xff, 0xee, 0x01,
                       0x03, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00};
  EXPECT_EQ(bytesOf(method::encodeCall(me)), expected);
}

TEST(Methods, DiskFormatStatus_CarriesNoBulk) {
  serviceorchapi::UpdateDiskFormatStatusMe me;
  me.in = {3, 2};
  const Bytes bytes = bytesOf(method::encodeCall(me));
  EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 8), (Bytes{0x94, 0x01, 0x00, 0x00}));
  EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.begin() + 20), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(Bytes(bytes.end() - 5, bytes.end()), (Bytes{3, 0, 0, 0, 2}));
}

TEST(Methods, Bootstrap_CarriesItsIntent) {
  const Bytes bytes = bytesOf(method::encodeCall(agboot::BootstrapMe()));
  EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 8), (Bytes{0x3f, 0x02, 0x00, 0x00}));
  EXPECT_EQ(Bytes(bytes.begin() + 12, bytes.begin() + 16), (Bytes{0x10, 0, 0, 0}));
  EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.begin() + 20), (Bytes{0, 0, 0, 0}));
}

TEST(Methods, EmptyText_IsALengthOfZero) {
  serviceorchapi::ValidateBladeStateMe me;
  me.in = {3, "", ""};
  const Bytes bytes = bytesOf(method::encodeCall(me));
  EXPECT_EQ(Bytes(bytes.end() - 12, bytes.end()), (Bytes{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Methods, BladeValidation_WritesSlotAndTwoTexts) {
  serviceorchapi::ValidateBladeStateMe me;
  me.in = {3, "2.1", "tk"};
  const Bytes bytes = bytesOf(method::encodeCall(me));
  EXPECT_EQ(Bytes(bytes.end() - 17, bytes.end()),
            (Bytes{3, 0, 0, 0, 3, 0, 0, 0, '2', '.', '1', 2, 0, 0, 0, 't', 'k'}));
}

}  // namespace
