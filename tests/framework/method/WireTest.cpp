#include "framework/method/Wire.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <tuple>

namespace {

using method::In;
using method::MethodObject;
using method::Out;

class WeighMe
    : public MethodObject<WeighMe, In<std::uint32_t, base::String>, Out<std::uint64_t, bool>> {
 public:
  static constexpr std::uint32_t kClassId = 9001;
  [[maybe_unused]] static constexpr std::string_view kName = "test::Weigh";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

class OtherMe
    : public MethodObject<OtherMe, In<std::uint32_t, base::String>, Out<std::uint64_t, bool>> {
 public:
  static constexpr std::uint32_t kClassId = 9002;
  [[maybe_unused]] static constexpr std::string_view kName = "test::Other";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

base::Buffer cookie() {
  return {"cookie-1", 8};
}

WeighMe& filled(WeighMe& me) {
  me.in = {3, "blade"};
  me.setCookie(cookie());
  me.setAddress({26, 1, 99, 7});
  return me;
}

TEST(Wire, Call_ComesBackWithHeaderAndArguments) {
  WeighMe me;
  const base::OBioStream bytes = method::encodeCall(filled(me));
  const auto back = method::decodeCall<WeighMe>(bytes.data(), bytes.size());
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->in, std::make_tuple(3U, base::String("blade")));
  EXPECT_EQ(back->cookie(), cookie());
  EXPECT_EQ(back->address().sender, 99U);
  EXPECT_TRUE(back->isResponseRequired());
  EXPECT_TRUE(back->dataBit(0));
  EXPECT_EQ(back->bulk(), 0x100000U);
}

TEST(Wire, CallOfAnotherClass_IsRefused) {
  WeighMe me;
  const base::OBioStream bytes = method::encodeCall(filled(me));
  EXPECT_EQ(method::decodeCall<OtherMe>(bytes.data(), bytes.size()), nullptr);
}

TEST(Wire, CallCutAnywhereOrTooLong_IsRefused) {
  WeighMe me;
  base::OBioStream bytes = method::encodeCall(filled(me));
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_EQ(method::decodeCall<WeighMe>(bytes.data(), size), nullptr) << size;
  }
  bytes.write(std::uint8_t{0});
  EXPECT_EQ(method::decodeCall<WeighMe>(bytes.data(), bytes.size()), nullptr);
}

TEST(Wire, Answer_CarriesCookieAndTheWayBack) {
  WeighMe me;
  const base::OBioStream bytes = method::encodeAnswer(filled(me), {1ULL << 33, true});
  const auto header = method::readHeader(bytes.data(), bytes.size());
  ASSERT_NE(header, nullptr);
  EXPECT_EQ(header->type(), 0x4000U);
  EXPECT_FALSE(header->isResponseRequired());
  EXPECT_EQ(header->address().service, 99U);
  EXPECT_EQ(header->address().instance, 7U);
  EXPECT_EQ(header->address().sender, 26U);
  EXPECT_EQ(header->address().senderInstance, 1U);

  const auto answer = method::decodeAnswer<WeighMe>(bytes.data(), bytes.size());
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->me->cookie(), cookie());
  EXPECT_EQ(answer->me->out, std::make_tuple(1ULL << 33, true));
  EXPECT_FALSE(answer->failure.has_value());
}

TEST(Wire, FailureAnswer_CarriesBitsCodeAndText) {
  WeighMe me;
  const base::OBioStream bytes = method::encodeFailure(filled(me), {2048, 507, "no scales"});
  const auto answer = method::decodeAnswer<WeighMe>(bytes.data(), bytes.size());
  ASSERT_TRUE(answer.has_value());
  ASSERT_TRUE(answer->failure.has_value());
  EXPECT_EQ(answer->failure->bits, 2048U);
  EXPECT_EQ(answer->failure->code, 507U);
  EXPECT_EQ(answer->failure->text, "no scales");
}

TEST(Wire, AnswerCutAnywhere_IsRefused) {
  WeighMe me;
  const base::OBioStream success = method::encodeAnswer(filled(me), {1, false});
  for (std::size_t size = 0; size < success.size(); ++size) {
    EXPECT_FALSE(method::decodeAnswer<WeighMe>(success.data(), size).has_value()) << size;
  }
  const base::OBioStream failure = method::encodeFailure(me, {1, 2, "three"});
  for (std::size_t size = 0; size < failure.size(); ++size) {
    EXPECT_FALSE(method::decodeAnswer<WeighMe>(failure.data(), size).has_value()) << size;
  }
}

TEST(Wire, CallTakenForAnAnswerAndViceVersa_IsRefused) {
  WeighMe me;
  const base::OBioStream call = method::encodeCall(filled(me));
  EXPECT_FALSE(method::decodeAnswer<WeighMe>(call.data(), call.size()).has_value());
  const base::OBioStream answer = method::encodeAnswer(me, {1, true});
  EXPECT_EQ(method::decodeCall<WeighMe>(answer.data(), answer.size()), nullptr);
}

}  // namespace
