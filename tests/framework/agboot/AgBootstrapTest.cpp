#include "framework/agboot/AgBootstrap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/proc/Stimulus.h"
#include "framework/proc/Svc.h"

namespace {

using agboot::AgBootstrap;
using proc::Stimulus;

struct Sent {
  std::uint32_t classId;
  std::uint32_t intent;
  std::uint32_t bulk;
  bool responseRequired;
  bool operator==(const Sent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Sent& sent) {
  return out << sent.classId << '/' << sent.intent << '/' << sent.bulk << '/'
             << sent.responseRequired;
}

class RecordingSvc : public proc::Svc {
 public:
  RecordingSvc() : Svc(26) { instance = this; }
  ~RecordingSvc() override { instance = nullptr; }
  void send(std::unique_ptr<Stimulus> stimulus) override {
    sent.push_back({stimulus->classId(), stimulus->intent(), stimulus->bulk(),
                    stimulus->isResponseRequired()});
  }
  std::vector<Sent> sent;
};

const Sent kRequest{575, 0x10, 0, true};
const Sent kDone{576, 0, 0, false};

class AgBootstrapTest : public testing::Test {
 protected:
  AgBootstrapTest() { AgBootstrap::get().reset(); }
  ~AgBootstrapTest() override { AgBootstrap::get().reset(); }

  void answer() {
    Stimulus method(575, 0x4000, 0x10, 0, Stimulus::Priority::kDefault, 0, 0);
    AgBootstrap::get().processBootstrapResponse(method);
  }

  RecordingSvc svc_;
};

TEST_F(AgBootstrapTest, AnsweredRequest_IsDoneAndTellsTheEngine) {
  AgBootstrap::get().submitBootstrapRequest();
  EXPECT_FALSE(AgBootstrap::get().isDone());
  answer();
  EXPECT_TRUE(AgBootstrap::get().isDone());
  EXPECT_EQ(svc_.sent, (std::vector<Sent>{kRequest, kDone}));
}

TEST_F(AgBootstrapTest, SecondAnswer_IsIgnored) {
  AgBootstrap::get().submitBootstrapRequest();
  answer();
  answer();
  EXPECT_EQ(svc_.sent.size(), 2U);
}

TEST_F(AgBootstrapTest, SubmitOnceDone_SendsNothing) {
  AgBootstrap::get().submitBootstrapRequest();
  answer();
  AgBootstrap::get().submitBootstrapRequest();
  EXPECT_EQ(svc_.sent.size(), 2U);
}

TEST_F(AgBootstrapTest, ChannelUpBeforeAnyRequest_SendsNothing) {
  AgBootstrap::bootstrapCb(false);
  AgBootstrap::bootstrapCb(true);
  EXPECT_TRUE(svc_.sent.empty());
}

TEST_F(AgBootstrapTest, ChannelUpWithTheAnswerOutstanding_AsksAgain) {
  AgBootstrap::get().submitBootstrapRequest();
  AgBootstrap::bootstrapCb(true);
  EXPECT_EQ(svc_.sent, (std::vector<Sent>{kRequest, kRequest}));
}

TEST_F(AgBootstrapTest, EngineThatComesBack_IsAskedAgain) {
  AgBootstrap::get().submitBootstrapRequest();
  answer();
  AgBootstrap::bootstrapCb(false);
  EXPECT_FALSE(AgBootstrap::get().isDone());
  AgBootstrap::bootstrapCb(true);
  answer();
  EXPECT_TRUE(AgBootstrap::get().isDone());
  EXPECT_EQ(svc_.sent, (std::vector<Sent>{kRequest, kDone, kRequest, kDone}));
}

TEST_F(AgBootstrapTest, UpWithoutAChangeOnceDone_SendsNothing) {
  AgBootstrap::get().submitBootstrapRequest();
  answer();
  AgBootstrap::bootstrapCb(true);
  EXPECT_EQ(svc_.sent.size(), 2U);
}

}  // namespace
