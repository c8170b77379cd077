#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;

class DeRegisterBlade : public testing::Test {
 protected:
  DeRegisterBlade() { me_.setCookie(cookie()); }
  ~DeRegisterBlade() override { removeBladeMapEntry("3"); }

  static base::Buffer cookie() {
    static constexpr unsigned char kBytes[] = {0x00, 0x0F, 0xA0, 0xFF};
    base::Buffer buffer;
    buffer.allocate(kBytes, sizeof(kBytes));
    return buffer;
  }

  serviceorchapi::DeRegisterBladeMe me_;
};

TEST_F(DeRegisterBlade, RegisteredSlot_IsForgotten) {
  createSMAClient("3", "127.0.0.1", "9", true);
  ASSERT_TRUE(is_bladeRegistered("3"));
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 3);
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_EQ(me_.failure(), nullptr);
}

TEST_F(DeRegisterBlade, RegisteredSlot_RefusesCommandsUntilItRegistersAgain) {
  createSMAClient("3", "127.0.0.1", "9", true);
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 3);
  EXPECT_EQ(sendMsg("3", "<stopAppRequest/>", "stopApp"), 580U);
  createSMAClient("3", "127.0.0.1", "9", false);
  EXPECT_TRUE(is_bladeRegistered("3"));
}

TEST_F(DeRegisterBlade, UnknownSlot_SucceedsAndLeavesTheOthers) {
  createSMAClient("3", "127.0.0.1", "9", true);
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 4);
  EXPECT_EQ(me_.failure(), nullptr);
  EXPECT_TRUE(is_bladeRegistered("3"));
}

TEST_F(DeRegisterBlade, LevelOne_LogsTheCookieInHexadecimal) {
  LogCapture log(1);
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 4);
  EXPECT_TRUE(log.contains(1, "executeServiceorchapiDeRegisterBladeCb, cookie: 000fa0ff"));
}

TEST_F(DeRegisterBlade, RegisteredSlot_IsToldBeforeItIsForgotten) {
  createSMAClient("3", "127.0.0.1", "9", true);
  const LogCapture log(1);
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 3);
  const std::vector<test_support::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].text, "executeServiceorchapiDeRegisterBladeCb, cookie: 000fa0ff");
  EXPECT_EQ(lines[1].text, "deleting smaClient... for slot 3");
}

TEST_F(DeRegisterBlade, LevelTwo_LogsNothing) {
  LogCapture log(2);
  Svc::executeServiceorchapiDeRegisterBladeCb(me_, 4);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(DeRegisterBlade, FormatCallbacks_DoNothing) {
  Svc::formatSuccessRspServiceorchapiDeRegisterBladeCb(me_);
  Svc::formatFailedRspServiceorchapiDeRegisterBladeCb(me_);
  EXPECT_EQ(me_.failure(), nullptr);
  EXPECT_TRUE(me_.isResponseRequired());
}

}  // namespace
}  // namespace zan_serviceOrchAG
