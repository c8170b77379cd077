#include "framework/method/MethodObject.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/method/Wire.h"
#include "tests/support/LogCapture.h"

namespace {

using method::In;
using method::MethodObject;
using method::Out;

class WeighMe : public MethodObject<WeighMe, In<std::uint32_t, base::String>, Out<std::uint64_t>> {
 public:
  static constexpr std::uint32_t kClassId = 9001;
  static constexpr std::string_view kName = "test::Weigh";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kBulkSet;
};

std::vector<std::string> trace;

void executeCb(WeighMe& me, const std::uint32_t& slot, const base::String& what) {
  trace.push_back("execute " + std::to_string(slot) + " " + what.str());
  std::get<0>(me.out) = 70;
}
void failingCb(WeighMe& me, const std::uint32_t&, const base::String&) {
  me.reportFailure(64, 511, "too heavy");
}
void throwingCb(WeighMe&, const std::uint32_t&, const base::String&) {
  throw std::runtime_error("scales broke");
}
void suppressingCb(WeighMe& me, const std::uint32_t&, const base::String&) {
  me.setResponseRequired(false);
}
void formatSuccessCb(WeighMe&) {
  trace.push_back("format success");
}
void formatFailureCb(WeighMe&) {
  trace.push_back("format failure");
}
void throwingFormatCb(WeighMe&) {
  throw std::runtime_error("format broke");
}
void successCb(WeighMe& me, const std::uint64_t& weight) {
  trace.push_back("weight " + std::to_string(weight) + " cookie " +
                  std::string(reinterpret_cast<const char*>(me.cookie().data()), 3));
}
void failureCb(WeighMe&, unsigned int code, const base::String& text) {
  trace.push_back("failed " + std::to_string(code) + " " + text.str());
}

class MethodObjectTest : public testing::Test {
 protected:
  MethodObjectTest() { trace.clear(); }
  ~MethodObjectTest() override { proc::MethodTable::instance().clear(); }

  static const proc::MethodHandler& handler() { return *proc::MethodTable::instance().find(9001); }

  static base::OBioStream call(bool responseRequired = true) {
    WeighMe me;
    me.in = {3, "a blade"};
    me.setCookie(base::Buffer("abc", 3));
    me.setResponseRequired(responseRequired);
    return method::encodeCall(me);
  }

  /// Executes the registered callback; what was answered, if anything.
  std::optional<method::Answer<WeighMe>> execute(const base::OBioStream& bytes) {
    std::optional<method::Answer<WeighMe>> answer;
    proc::InboundCall inbound(bytes.data(), bytes.size(), [&](base::OBioStream&& sent) {
      answer = method::decodeAnswer<WeighMe>(sent.data(), sent.size());
    });
    isDecoded_ = handler().execute(inbound);
    return answer;
  }

  bool isDecoded_ = false;
  const test_support::LogCapture log_;
};

TEST_F(MethodObjectTest, Execute_CallsWithTheArgumentsThenFormatsThenAnswers) {
  WeighMe::registerCbs(executeCb, nullptr, nullptr, formatSuccessCb, formatFailureCb);
  const auto answer = execute(call());
  EXPECT_EQ(trace, (std::vector<std::string>{"execute 3 a blade", "format success"}));
  ASSERT_TRUE(answer.has_value());
  EXPECT_FALSE(answer->failure.has_value());
  EXPECT_EQ(std::get<0>(answer->me->out), 70U);
  EXPECT_EQ(answer->me->cookie(), base::Buffer("abc", 3));
}

TEST_F(MethodObjectTest, ReportedFailure_IsFormattedAndAnswered) {
  WeighMe::registerCbs(failingCb, nullptr, nullptr, formatSuccessCb, formatFailureCb);
  const auto answer = execute(call());
  EXPECT_EQ(trace, (std::vector<std::string>{"format failure"}));
  ASSERT_TRUE(answer.has_value());
  ASSERT_TRUE(answer->failure.has_value());
  EXPECT_EQ(answer->failure->bits, 64U);
  EXPECT_EQ(answer->failure->code, 511U);
  EXPECT_EQ(answer->failure->text, "too heavy");
}

TEST_F(MethodObjectTest, ExceptionInTheCallback_IsLoggedAndAnsweredAsFailure) {
  WeighMe::registerCbs(throwingCb, nullptr, nullptr, formatSuccessCb, formatFailureCb);
  const auto answer = execute(call());
  EXPECT_TRUE(log_.contains(8, "method class 9001 : caught exception: scales broke"));
  ASSERT_TRUE(answer.has_value());
  ASSERT_TRUE(answer->failure.has_value());
  EXPECT_EQ(answer->failure->text, "exception: scales broke");
}

TEST_F(MethodObjectTest, ExceptionInTheFormatCallback_FailsTheMethod) {
  WeighMe::registerCbs(executeCb, nullptr, nullptr, throwingFormatCb, nullptr);
  const auto answer = execute(call());
  ASSERT_TRUE(answer.has_value());
  ASSERT_TRUE(answer->failure.has_value());
  EXPECT_EQ(answer->failure->text, "exception: format broke");
}

TEST_F(MethodObjectTest, NoResponseRequired_ExecutesAndAnswersNothing) {
  WeighMe::registerCbs(executeCb, nullptr, nullptr, nullptr, nullptr);
  EXPECT_FALSE(execute(call(false)).has_value());
  EXPECT_EQ(trace.size(), 1U);
}

TEST_F(MethodObjectTest, ResponseSuppressedByTheCallback_AnswersNothing) {
  WeighMe::registerCbs(suppressingCb, nullptr, nullptr, nullptr, nullptr);
  EXPECT_FALSE(execute(call()).has_value());
  EXPECT_TRUE(isDecoded_);
}

TEST_F(MethodObjectTest, NoExecuteCallback_IsNotExecutable) {
  WeighMe::registerCbs(nullptr, successCb, nullptr, nullptr, nullptr);
  EXPECT_FALSE(handler().isExecutable());
  EXPECT_FALSE(execute(call()).has_value());
  EXPECT_FALSE(isDecoded_);
}

TEST_F(MethodObjectTest, CallCutAnywhere_IsNeverExecuted) {
  WeighMe::registerCbs(executeCb, nullptr, nullptr, nullptr, nullptr);
  const base::OBioStream whole = call();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    base::OBioStream cut;
    cut.loopWrite(whole.data(), static_cast<unsigned>(size));
    EXPECT_FALSE(execute(cut).has_value()) << size;
    EXPECT_FALSE(isDecoded_) << size;
  }
  EXPECT_TRUE(trace.empty());
}

TEST_F(MethodObjectTest, SuccessAnswer_CallsBackWithResultsAndCookie) {
  WeighMe::registerCbs(nullptr, successCb, failureCb, nullptr, nullptr);
  WeighMe me;
  me.setCookie(base::Buffer("abc", 3));
  const base::OBioStream bytes = method::encodeAnswer(me, {81});
  proc::InboundAnswer answer(bytes.data(), bytes.size());
  ASSERT_TRUE(answer.parse());
  EXPECT_TRUE(handler().succeeded(answer));
  EXPECT_EQ(trace, (std::vector<std::string>{"weight 81 cookie abc"}));
}

TEST_F(MethodObjectTest, FailureAnswer_CallsBackWithCodeAndText) {
  WeighMe::registerCbs(nullptr, successCb, failureCb, nullptr, nullptr);
  const WeighMe me;
  const base::OBioStream bytes = method::encodeFailure(me, {1, 1003, "no such slot"});
  proc::InboundAnswer answer(bytes.data(), bytes.size());
  ASSERT_TRUE(answer.parse());
  EXPECT_TRUE(handler().failed(answer));
  EXPECT_EQ(trace, (std::vector<std::string>{"failed 1003 no such slot"}));
}

TEST_F(MethodObjectTest, AnswerNobodyRegisteredFor_IsTakenSilently) {
  WeighMe::registerCbs(nullptr, nullptr, nullptr, nullptr, nullptr);
  const WeighMe me;
  const base::OBioStream bytes = method::encodeAnswer(me, {81});
  proc::InboundAnswer answer(bytes.data(), bytes.size());
  ASSERT_TRUE(answer.parse());
  EXPECT_TRUE(handler().succeeded(answer));
  EXPECT_TRUE(handler().failed(answer));
}

}  // namespace
