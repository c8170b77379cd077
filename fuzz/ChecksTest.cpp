#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "framework/base/BioStream.h"
#include "fuzz/support/EngineStandIn.h"
#include "fuzz/support/LogChecks.h"
#include "fuzz/support/ReplyChecks.h"
#include "fuzz/support/StimulusChecks.h"
#include "model/serviceorchapi/Methods.h"

// That the checks find what they are there to find: each end of the process below is one.

namespace fuzz {
namespace {

TEST(LogLine, HarmlessText_Passes) {
  checkLogLine("");
  checkLogLine("slot 3: \\x0A \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 ~");
}

class BadLogLineDeathTest : public testing::TestWithParam<std::string> {};

TEST_P(BadLogLineDeathTest, IsFound) {
  EXPECT_DEATH(checkLogLine(GetParam()), "property broken: a log line");
}

INSTANTIATE_TEST_SUITE_P(All, BadLogLineDeathTest,
                         testing::Values("a\nb", "a\rb", "\x1b[2J", "a\tb", std::string("a\0b", 3),
                                         "\x7F", "\xC2\x85", "\x80", "\xC3", "\xC0\xAF",
                                         "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF",
                                         std::string(65537, 'a')));

TEST(LogChecks, LineOfTheLogger_IsChecked) {
  const LogChecks checks;
  core_log::logPrintf("test", core_log::serviceLevel(), 0, "%s", "\n\xff");
}

TEST(Reply, Whole_Passes) {
  checkReplyBody("<aResponse><response><code>100</code></response></aResponse>", "a", 100);
}

class BadReplyDeathTest : public testing::TestWithParam<const char*> {};

TEST_P(BadReplyDeathTest, IsFound) {
  EXPECT_DEATH(checkReplyBody(GetParam(), "a", 100), "property broken: a reply");
}

INSTANTIATE_TEST_SUITE_P(
    All, BadReplyDeathTest,
    testing::Values("", "<aResponse>",
                    "<bResponse><response><code>100</code></response></bResponse>", "<aResponse/>",
                    "<aResponse><x/></aResponse>", "<aResponse><response/></aResponse>",
                    "<aResponse><response><code>101</code></response></aResponse>",
                    "<aResponse> <response><code>100</code></response></aResponse>"));

TEST(ReplyStatusDeathTest, OfAnotherCommand_IsFound) {
  const zan_serviceOrchAG::Response response{
      "<aResponse><response><code>100</code></response></aResponse>", 100};
  checkReply(response, "a", {100, 505});
  EXPECT_DEATH(checkReply(response, "a", {505}), "a reply has a status of its command");
}

std::vector<unsigned char> heartbeatCall() {
  serviceorchapi::UpdateSmaHeartbeatMe me;
  me.in = {3, 1, 2};
  const base::OBioStream bytes = method::encodeCall(me);
  return {bytes.data(), bytes.data() + bytes.size()};
}

TEST(Call, Whole_Passes) {
  const auto bytes = heartbeatCall();
  checkCall(bytes.data(), bytes.size());
  checkStimulus(bytes);
}

TEST(CallDeathTest, WithSurplusBytesOrOfNoMethod_IsFound) {
  auto bytes = heartbeatCall();
  bytes.push_back(0);
  EXPECT_DEATH(checkCall(bytes.data(), bytes.size()), "a call is one of a known method");
  EXPECT_DEATH(checkCall(nullptr, 0), "a call is one of a known method");
}

TEST(EngineDeathTest, CallWithoutACookie_IsFound) {
  EngineStandIn engine(Manner::kAccepts);
  EXPECT_DEATH(engine.send(std::make_unique<serviceorchapi::UpdateSmaHeartbeatMe>()),
               "a call carries a cookie");
}

TEST(EngineDeathTest, CookieTwice_IsFound) {
  EngineStandIn engine(Manner::kAccepts);
  const auto call = [] {
    auto me = std::make_unique<serviceorchapi::UpdateSmaHeartbeatMe>();
    me->setCookie(base::Buffer("0123456789abcdef", 16));
    return me;
  };
  engine.send(call());
  EXPECT_EQ(engine.calls(), 1U);
  EXPECT_DEATH(engine.send(call()), "a call carries a cookie of its own");
}

}  // namespace
}  // namespace fuzz
