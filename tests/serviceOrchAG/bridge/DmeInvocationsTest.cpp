#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/base/BioStream.h"
#include "framework/method/Config.h"
#include "framework/proc/BinStimulus.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG {
namespace {

using proc::BinStimulus;
using test_support::RecordingSvc;
using Priority = proc::Stimulus::Priority;

/// What travels, built by hand.
class Bytes {
 public:
  Bytes& u8(std::uint8_t value) { return raw(&value, 1); }
  Bytes& u32(std::uint32_t value) { return raw(&value, 4); }
  Bytes& u64(std::uint64_t value) { return raw(&value, 8); }
  Bytes& text(const std::string& value) {
    u32(static_cast<std::uint32_t>(value.size()));
    return raw(value.data(), value.size());
  }
  const std::string& str() const { return bytes_; }

 private:
  Bytes& raw(const void* data, std::size_t size) {
    bytes_.append(static_cast<const char*>(data), size);
    return *this;
  }
  std::string bytes_;
};

/// The bytes of every stimulus that was sent.
std::vector<std::string> bytesSent(const RecordingSvc& service) {
  std::vector<std::string> all;
  for (const RecordingSvc::Sent& sent : service.sent()) {
    all.emplace_back(sent.bytes.begin(), sent.bytes.end());
  }
  return all;
}

base::Buffer cookieOf(const std::string& text) {
  base::Buffer cookie;
  cookie.allocate(text.data(), text.size());
  return cookie;
}

void drainPool() {
  while (BinStimulus::POOL.take() != nullptr) {
  }
}

/// Leaves one stimulus in the pool that was used for something as different as can be.
void poolUsedStimulus() {
  drainPool();
  auto used = std::make_unique<BinStimulus>(999, 0x4000, 0x10, 0x100000, Priority::kHighest, 0, 7);
  used->setCookie(cookieOf("a cookie of another call"));
  used->setAddress({1, 2, 3, 4});
  used->setDataBit(5, true);
  used->reportFailure(1, 2, "text");
  used->serialize(used->stream());
  BinStimulus::POOL.give(std::move(used));
}

method::Config monitor() {
  method::Config config(12, mo::Dn("sys/slot-3"), 2);
  config.set(7, std::uint32_t{9});
  return config;
}

method::ConfigSet oneDisk() {
  method::ConfigSet set;
  set.append(method::Config(13, mo::Dn("d")));
  return set;
}

/// One method: how it is called, the numbers of its header, and its arguments as they travel.
struct Call {
  const char* name;
  std::function<void(const base::Buffer& cookie, bool responseRequired, Priority priority)> invoke;
  std::uint32_t classId;
  std::uint32_t intent;
  std::uint32_t bulk;
  std::uint32_t sender;
  std::uint32_t senderInstance;
  std::string arguments;
};

std::ostream& operator<<(std::ostream& out, const Call& call) {
  return out << call.name;
}

std::string encoded(const Call& call, const std::string& cookie, std::uint32_t responseRequired,
                    std::uint32_t priority) {
  Bytes header;
  header.u32(0x5A530001).u32(call.classId).u32(0x2000).u32(call.intent).u32(call.bulk);
  header.u32(priority).u32(responseRequired).u32(0).u32(1);
  header.u32(26).u32(1).u32(call.sender).u32(call.senderInstance).text(cookie);
  return header.str() + call.arguments;
}

const Call kCalls[] = {
    {"ValidateBladeState",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiValidateBladeState(cookie, 3, "2.1", "", required, priority);
     },
     398, 0, 0x100000, 26, 0, Bytes().u32(3).text("2.1").u32(0).str()},
    {"OsControllerVersion",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServerapiOsControllerVersion(cookie, 0x1122334455667788UL, 1, 3, "a", "b",
                                                     "c", 100, "d", "e", 200, true, 4, 5, "f",
                                                     required, priority);
     },
     146, 0, 0x100000, 26, 0,
     Bytes()
         .u64(0x1122334455667788)
         .u32(1)
         .u32(3)
         .text("a")
         .text("b")
         .text("c")
         .u32(100)
         .text("d")
         .text("e")
         .u32(200)
         .u8(1)
         .u8(4)
         .u8(5)
         .text("f")
         .str()},
    {"UpdatePlatformInfo",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiUpdatePlatformInfo(cookie, 3, monitor(), oneDisk(), required,
                                                         priority);
     },
     400, 0, 0x100000, 26, 0,
     Bytes()
         .u32(3)
         .u32(12)
         .u32(2)
         .text("sys/slot-3")
         .u32(1)
         .u32(7)
         .u8(4)
         .u32(9)
         .u32(0)
         .u32(1)
         .u32(13)
         .u32(0)
         .text("d")
         .u32(0)
         .u32(0)
         .str()},
    {"ValidateAppInstances",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiValidateAppInstances(cookie, 3, oneDisk(), required,
                                                           priority);
     },
     399, 0, 0x100000, 26, 0, Bytes().u32(3).u32(1).u32(13).u32(0).text("d").u32(0).u32(0).str()},
    {"UpdateSmaHeartbeat",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(cookie, 3, 4294967295U, 30, required,
                                                         priority);
     },
     397, 0, 0x100000, 26, 0, Bytes().u32(3).u32(4294967295U).u32(30).str()},
    {"NotifyAppFailure",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiNotifyAppFailure(cookie, "app-1", required, priority);
     },
     401, 0, 0x100000, 26, 0, Bytes().text("app-1").str()},
    {"UpdateProgress",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiUpdateProgress(cookie, "app-1", 2, 55, 6, 577, "disk full",
                                                     required, priority);
     },
     396, 0, 0x100000, 26, 0,
     Bytes().text("app-1").u8(2).u32(55).u8(6).u32(577).text("disk full").str()},
    {"UpdateDiskFormatStatus",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServiceorchapiUpdateDiskFormatStatus(cookie, 3, 200, required, priority);
     },
     404, 0, 0, 26, 0, Bytes().u32(3).u8(200).str()},
    {"OsControllerUpgradeProgress",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeServerapiOsControllerUpgradeProgress(cookie, 1UL, 2, 3, "2.2", 99, 7, "k",
                                                             required, priority);
     },
     147, 0, 0x100000, 26, 0,
     Bytes().u64(1).u32(2).u32(3).text("2.2").u32(99).u8(7).text("k").str()},
    {"ClusterStateRequest",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeDmeapiClusterStateRequest(cookie, required, priority);
     },
     446, 0, 0, 4, 4, ""},
    {"Bootstrap",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeAgbootBootstrap(cookie, required, priority);
     },
     575, 0x10, 0, 26, 0, ""},
    {"BootstrapDone",
     [](auto& cookie, bool required, Priority priority) {
       Svc::invokeZanDmeAgbootBootstrapDone(cookie, required, priority);
     },
     576, 0, 0, 26, 0, ""},
};

class DmeInvocations : public testing::TestWithParam<Call> {
 protected:
  RecordingSvc svc_;
};

TEST_P(DmeInvocations, FreshStimulus_CarriesHeaderAndArguments) {
  drainPool();
  GetParam().invoke(cookieOf("cookie"), true, Priority{4});
  const std::vector<std::string> sent = bytesSent(svc_);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0], encoded(GetParam(), "cookie", 0x200000, 4));
}

TEST_P(DmeInvocations, PooledStimulus_IsTheSameByteForByte) {
  poolUsedStimulus();
  GetParam().invoke(cookieOf("cookie"), true, Priority{4});
  const std::vector<std::string> sent = bytesSent(svc_);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0], encoded(GetParam(), "cookie", 0x200000, 4));
  EXPECT_EQ(BinStimulus::POOL.idle(), 0U) << "the pooled one was not used";
}

TEST_P(DmeInvocations, CallersFlagAndPriority_ReplaceTheInitialOnes) {
  GetParam().invoke(base::Buffer(), false, Priority{6});
  const std::vector<std::string> sent = bytesSent(svc_);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0], encoded(GetParam(), "", 0, 6));
}

INSTANTIATE_TEST_SUITE_P(EveryMethod, DmeInvocations, testing::ValuesIn(kCalls),
                         [](const auto& row) { return std::string(row.param.name); });

class ConcurrentDmeInvocations : public testing::Test {
 protected:
  RecordingSvc svc_;
};

TEST_F(ConcurrentDmeInvocations, TwoValidationsInFlight_CarryTheirOwnCookies) {
  base::Buffer first;
  base::Buffer second;
  proc::Svc::generateCookie(first);
  proc::Svc::generateCookie(second);
  Svc::invokeZanDmeServiceorchapiValidateBladeState(first, 3, "2.1", "", true, Priority{4});
  Svc::invokeZanDmeServiceorchapiValidateBladeState(second, 3, "2.1", "", true, Priority{4});
  const std::vector<std::string> sent = bytesSent(svc_);
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_NE(sent[0], sent[1]);
  const auto text = [](const base::Buffer& cookie) {
    return std::string(reinterpret_cast<const char*>(cookie.data()), cookie.size());
  };
  EXPECT_EQ(sent[0], encoded(kCalls[0], text(first), 0x200000, 4));
  EXPECT_EQ(sent[1], encoded(kCalls[0], text(second), 0x200000, 4));
}

TEST_F(ConcurrentDmeInvocations, ManyThreads_SendEveryCallWhole) {
  constexpr int kThreads = 4;
  constexpr int kCallsEach = 200;
  std::vector<std::thread> threads;
  std::multiset<std::string> expected;
  for (int thread = 0; thread < kThreads; ++thread) {
    const Call& call = kCalls[thread];
    const std::string cookie = "thread " + std::to_string(thread);
    threads.emplace_back([&call, cookie] {
      for (int i = 0; i < kCallsEach; ++i) {
        call.invoke(cookieOf(cookie), true, Priority{4});
      }
    });
    for (int i = 0; i < kCallsEach; ++i) {
      expected.insert(encoded(call, cookie, 0x200000, 4));
    }
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::vector<std::string> sent = bytesSent(svc_);
  EXPECT_EQ(std::multiset<std::string>(sent.begin(), sent.end()), expected);
}

/// Counts its instances, to see who frees it.
template <class Me>
class Counted : public Me {
 public:
  Counted() { ++alive; }
  ~Counted() override { --alive; }
  static inline int alive = 0;
};

class FilledMethodObject : public testing::Test {
 protected:
  template <class Me>
  static Me* filled(typename Me::InTuple arguments) {
    auto me = std::make_unique<Counted<Me>>();
    me->setCookie(cookieOf("cookie"));
    me->in = std::move(arguments);
    return me.release();
  }

  template <class Me>
  void expectSent(const Call& call) {
    const std::vector<std::string> sent = bytesSent(svc_);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0], encoded(call, "cookie", 0, 5));
    EXPECT_EQ(Counted<Me>::alive, 0);
  }

  RecordingSvc svc_;
};

TEST_F(FilledMethodObject, ValidateBladeState_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::ValidateBladeStateMe;
  Svc::invokeZanDmeServiceorchapiValidateBladeState(filled<Me>({3, "2.1", ""}), false, Priority{5});
  expectSent<Me>(kCalls[0]);
}

TEST_F(FilledMethodObject, OsControllerVersion_IsAddressedSentAndFreed) {
  using Me = serverapi::OsControllerVersionMe;
  Svc::invokeZanDmeServerapiOsControllerVersion(
      filled<Me>({0x1122334455667788, 1, 3, "a", "b", "c", 100, "d", "e", 200, true, 4, 5, "f"}),
      false, Priority{5});
  expectSent<Me>(kCalls[1]);
}

TEST_F(FilledMethodObject, UpdatePlatformInfo_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::UpdatePlatformInfoMe;
  Svc::invokeZanDmeServiceorchapiUpdatePlatformInfo(filled<Me>({3, monitor(), oneDisk()}), false,
                                                    Priority{5});
  expectSent<Me>(kCalls[2]);
}

TEST_F(FilledMethodObject, ValidateAppInstances_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::ValidateAppInstancesMe;
  Svc::invokeZanDmeServiceorchapiValidateAppInstances(filled<Me>({3, oneDisk()}), false,
                                                      Priority{5});
  expectSent<Me>(kCalls[3]);
}

TEST_F(FilledMethodObject, UpdateSmaHeartbeat_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::UpdateSmaHeartbeatMe;
  Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(filled<Me>({3, 4294967295U, 30}), false,
                                                    Priority{5});
  expectSent<Me>(kCalls[4]);
}

TEST_F(FilledMethodObject, NotifyAppFailure_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::NotifyAppFailureMe;
  Svc::invokeZanDmeServiceorchapiNotifyAppFailure(filled<Me>({"app-1"}), false, Priority{5});
  expectSent<Me>(kCalls[5]);
}

TEST_F(FilledMethodObject, UpdateProgress_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::UpdateProgressMe;
  Svc::invokeZanDmeServiceorchapiUpdateProgress(filled<Me>({"app-1", 2, 55, 6, 577, "disk full"}),
                                                false, Priority{5});
  expectSent<Me>(kCalls[6]);
}

TEST_F(FilledMethodObject, UpdateDiskFormatStatus_IsAddressedSentAndFreed) {
  using Me = serviceorchapi::UpdateDiskFormatStatusMe;
  Svc::invokeZanDmeServiceorchapiUpdateDiskFormatStatus(filled<Me>({3, 200}), false, Priority{5});
  expectSent<Me>(kCalls[7]);
}

TEST_F(FilledMethodObject, OsControllerUpgradeProgress_IsAddressedSentAndFreed) {
  using Me = serverapi::OsControllerUpgradeProgressMe;
  Svc::invokeZanDmeServerapiOsControllerUpgradeProgress(filled<Me>({1, 2, 3, "2.2", 99, 7, "k"}),
                                                        false, Priority{5});
  expectSent<Me>(kCalls[8]);
}

TEST_F(FilledMethodObject, ClusterStateRequest_IsAddressedSentAndFreed) {
  using Me = dmeapi::ClusterStateRequestMe;
  Svc::invokeZanDmeDmeapiClusterStateRequest(filled<Me>({}), false, Priority{5});
  expectSent<Me>(kCalls[9]);
}

TEST_F(FilledMethodObject, Bootstrap_IsAddressedSentAndFreed) {
  using Me = agboot::BootstrapMe;
  Svc::invokeZanDmeAgbootBootstrap(filled<Me>({}), false, Priority{5});
  expectSent<Me>(kCalls[10]);
}

TEST_F(FilledMethodObject, BootstrapDone_IsAddressedSentAndFreed) {
  using Me = agboot::BootstrapDoneMe;
  Svc::invokeZanDmeAgbootBootstrapDone(filled<Me>({}), false, Priority{5});
  expectSent<Me>(kCalls[11]);
}

}  // namespace
}  // namespace zan_serviceOrchAG
