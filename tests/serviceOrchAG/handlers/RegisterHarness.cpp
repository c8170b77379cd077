#include "tests/serviceOrchAG/handlers/RegisterHarness.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "tests/support/ReplyDocument.h"
#include "tests/support/ValidationAnswer.h"

namespace zan_serviceOrchAG::register_test {

using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::Pair;

Register::Register() {
  char name[] = "/tmp/hostkeyXXXXXX";
  ::close(mkstemp(name));
  keyPath_ = name;
  std::ofstream(keyPath_) << "old key\nhost key\n";
  configureKey(keyPath_);
  answer(true, false, "engine's token");
}

Register::~Register() {
  std::remove(keyPath_.c_str());
}

void Register::configureKey(const std::string& path) {
  configured_.reset();
  configured_.emplace(std::vector<std::string>{"supervisor.host_key=" + path});
}

void Register::answer(bool isValid, bool shouldRetry, const std::string& token) {
  test_support::answerValidations(svc_, isValid, shouldRetry, token);
}

void Register::neverAnswer() {
  svc_.onSend([](const RecordingSvc::Sent&) {});
}

std::unique_ptr<Response> Register::handle(const std::string& document) {
  return std::unique_ptr<Response>(handler_.AG_registerReqCb("id-1", "", document, 9));
}

void Register::expectReply(const std::unique_ptr<Response>& response, unsigned code,
                           const std::string& message, const std::string& token,
                           const std::string& key) {
  ASSERT_NE(nullptr, response);
  EXPECT_EQ(code, response->status);
  const ReplyDocument reply = ReplyDocument::parse(response->body);
  EXPECT_EQ("registerResponse", reply.root);
  EXPECT_THAT(reply.below, ElementsAre("response", "token", "zedPubKey"));
  EXPECT_THAT(reply.response,
              ElementsAre(Pair("code", std::to_string(code)), Pair("message", message)));
  EXPECT_THAT(reply.further, ElementsAre(Pair("token", token), Pair("zedPubKey", key)));
}

}  // namespace zan_serviceOrchAG::register_test
