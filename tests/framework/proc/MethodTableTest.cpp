#include "framework/proc/MethodTable.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/proc/Answer.h"
#include "tests/support/LogCapture.h"

namespace {

using proc::InboundCall;
using proc::MethodTable;
using proc::Stimulus;
using proc::StimulusHeader;

class NullHandler : public proc::MethodHandler {
 public:
  std::string_view name() const override { return "test::Null"; }
  bool isExecutable() const override { return false; }
  bool execute(InboundCall&) const override { return false; }
  bool succeeded(proc::InboundAnswer&) const override { return false; }
  bool failed(proc::InboundAnswer&) const override { return false; }
};

base::OBioStream bytesOf(std::uint32_t type, bool responseRequired) {
  Stimulus stimulus(398, type, 0, 0, Stimulus::Priority::kDefault, 0, 0);
  stimulus.setResponseRequired(responseRequired);
  base::OBioStream bytes;
  stimulus.serialize(bytes);
  return bytes;
}

/// A call whose answers are kept.
struct Call {
  explicit Call(bool responseRequired)
      : bytes(bytesOf(Stimulus::kTypeMethod, responseRequired)),
        inbound(bytes.data(), bytes.size(),
                [this](base::OBioStream&& answer) { answers.push_back(std::move(answer)); }) {
    EXPECT_TRUE(inbound.open(method));
  }

  base::OBioStream bytes;
  std::vector<base::OBioStream> answers;
  InboundCall inbound;
  StimulusHeader method;
};

void noResults(base::OBioStream&) {}

TEST(MethodTable, ClassNobodyInstalled_IsNull) {
  MethodTable table;
  EXPECT_EQ(table.find(1), nullptr);
}

TEST(MethodTable, SecondInstall_ReplacesTheFirst) {
  MethodTable table;
  table.install(1, std::make_unique<NullHandler>());
  const proc::MethodHandler* const first = table.find(1);
  auto second = std::make_unique<NullHandler>();
  const proc::MethodHandler* const expected = second.get();
  ASSERT_NE(first, expected);
  table.install(1, std::move(second));
  EXPECT_EQ(table.find(1), expected);
  EXPECT_EQ(table.size(), 1U);
}

TEST(InboundCall, Answer_IsSentOnce) {
  Call call(true);
  call.inbound.answer(call.method, noResults);
  call.inbound.answer(call.method, noResults);
  EXPECT_EQ(call.answers.size(), 1U);
}

TEST(InboundCall, NoResponseRequired_SendsNothing) {
  Call call(false);
  call.inbound.answer(call.method, noResults);
  EXPECT_TRUE(call.answers.empty());
}

TEST(InboundCall, ResponseSuppressedByTheMethod_SendsNothing) {
  Call call(true);
  call.method.reportFailure(1, 2, "three");
  call.method.setResponseRequired(false);
  call.inbound.answer(call.method, noResults);
  EXPECT_TRUE(call.answers.empty());
}

TEST(InboundCall, EmptySink_SendsNothing) {
  const base::OBioStream bytes = bytesOf(Stimulus::kTypeMethod, true);
  InboundCall call(bytes.data(), bytes.size(), nullptr);
  StimulusHeader method;
  ASSERT_TRUE(call.open(method));
  call.answer(method, noResults);
}

TEST(InboundCall, AnAnswer_IsNoCall) {
  const base::OBioStream bytes = bytesOf(Stimulus::kTypeAnswer, false);
  InboundCall call(bytes.data(), bytes.size(), nullptr);
  StimulusHeader method;
  EXPECT_FALSE(call.open(method));
}

TEST(InboundCall, StandardException_IsLoggedAndFailsTheMethod) {
  const test_support::LogCapture log;
  Call call(true);
  call.inbound.run(call.method, [] { throw std::runtime_error("disk on fire"); });
  EXPECT_TRUE(log.contains(8, "method class 398 : caught exception: disk on fire"));
  ASSERT_NE(call.method.failure(), nullptr);
  EXPECT_EQ(call.method.failure()->text, "exception: disk on fire");
}

TEST(InboundCall, ThrownTextsAndNumbers_FailTheMethod) {
  const test_support::LogCapture log;
  Call first(true);
  first.inbound.run(first.method, [] { throw std::string("a text"); });
  EXPECT_TRUE(log.contains(8, "method class 398 : caught exception: a text"));
  Call second(true);
  second.inbound.run(second.method, [] { throw "a literal"; });
  EXPECT_TRUE(log.contains(8, "method class 398 : caught exception: a literal"));
  Call third(true);
  third.inbound.run(third.method, [] { throw 7; });
  EXPECT_NE(third.method.failure(), nullptr);
}

TEST(InboundCall, ExceptionAfterAReportedFailure_KeepsTheReport) {
  const test_support::LogCapture log;
  Call call(true);
  call.inbound.run(call.method, [&] {
    call.method.reportFailure(8, 506, "first");
    throw std::runtime_error("second");
  });
  EXPECT_EQ(call.method.failure()->text, "first");
}

TEST(Answer, UnknownOutcome_IsRefused) {
  StimulusHeader call;
  base::OBioStream bytes;
  call.serializeAnswer(bytes);
  bytes.write(std::uint8_t{2});
  proc::InboundAnswer answer(bytes.data(), bytes.size());
  EXPECT_FALSE(answer.parse());
}

TEST(Answer, FailureWithMoreBehindIt_IsRefused) {
  StimulusHeader call;
  base::OBioStream bytes;
  proc::writeFailure(bytes, call, {1, 2, "three"});
  bytes.write(std::uint8_t{0});
  proc::InboundAnswer answer(bytes.data(), bytes.size());
  EXPECT_FALSE(answer.parse());
}

}  // namespace
