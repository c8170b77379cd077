#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/Configured.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG::register_test {

using serverapi::OsControllerVersionMe;
using serviceorchapi::ValidateBladeStateMe;
using test_support::LogLine;
using test_support::RecordingSvc;

inline std::string requestOf(const std::string& tags) {
  return "<registerRequest>" + tags + "</registerRequest>";
}

// The pieces of a request in which nothing is missing.
inline const std::string kAddress =
    "<bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip><port>5560</port>";
inline const std::string kPresence =
    "<authorizedPubKey>ssh-rsa A</authorizedPubKey><bladeCurrTime>now</bladeCurrTime>"
    "<upTime>1</upTime>";
inline const std::string kCache =
    "<cachePlatformImage><osVersion>2.2</osVersion><imageName>c.img</imageName><size>22</size>"
    "<checksum_md5>c</checksum_md5></cachePlatformImage>";
inline const std::string kRunning =
    "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img</imageName><size>11</size>"
    "<checksum_md5>r</checksum_md5></runningPlatformImage>";
inline const std::string kFull =
    requestOf(kAddress + "<token>mine</token>" + kPresence + kCache + kRunning);

/// The line about a tag that a request should hold.
inline LogLine missing(const std::string& tag) {
  return {5, "missingTagError", "No <" + tag + "> tag found in the register request"};
}

/// A gateway whose host key is "host key" and whose engine finds every blade valid.
class Register : public testing::Test {
 protected:
  Register();
  ~Register() override;

  void configureKey(const std::string& path);

  /// The engine answers every validation from now on like this, at once.
  void answer(bool isValid, bool shouldRetry, const std::string& token);
  void neverAnswer();

  std::unique_ptr<Response> handle(const std::string& document);

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message, const std::string& token,
                          const std::string& key = "host key");

  test_support::ScriptedChannel channels_;
  RecordingSvc svc_;
  test_support::LogCapture log_;
  MsgHandler handler_;
  const test_support::InstalledMsgHandler installed_{handler_};
  const test_support::RegistryCleaner cleaner_;
  std::string keyPath_;
  std::optional<test_support::Configured> configured_;
};

}  // namespace zan_serviceOrchAG::register_test
