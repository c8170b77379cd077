#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "framework/base/String.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG::command_progress_test {

using serverapi::OsControllerUpgradeProgressMe;
using serviceorchapi::UpdateDiskFormatStatusMe;
using serviceorchapi::UpdateProgressMe;
using test_support::LogLine;
using test_support::RecordingSvc;

/// A report that asks for a reply, with some tags changed and some left out.
struct Sent {
  std::vector<std::pair<std::string, std::string>> tags{
      {"appInstanceId", "17"},   {"operCmd", "startApp"}, {"operProgress", "50"},
      {"operStatus", "running"}, {"code", "102"},         {"ack", "true"},
      {"errorDesc", "none"}};

  Sent with(const std::string& tag, const std::string& value) const;
  Sent without(const std::string& tag) const;

  /// The values stand in the document as they are, so that they may hold references.
  std::string document() const;
};

class CommandProgress : public testing::Test {
 protected:
  std::unique_ptr<Response> handleDocument(const std::string& document, int slot = 3,
                                           const std::string& action = "update");
  std::unique_ptr<Response> handle(const Sent& report, int slot = 3);

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message);

  /// A refusal is answered and logged once, and nothing else happens.
  void expectRefused(const std::unique_ptr<Response>& response, const std::string& message);

  void expectOneCallWithoutWait();

  RecordingSvc svc_;
  test_support::LogCapture log_;
  MsgHandler handler_;
};

/// The arguments of UpdateProgress.
std::tuple<base::String, std::uint8_t, std::uint32_t, std::uint8_t, std::uint32_t, base::String>
progressOf(const char* appInstanceId, std::uint8_t command, std::uint32_t progress,
           std::uint8_t status, std::uint32_t code, const char* errorDesc);

/// The arguments of OsControllerUpgradeProgress.
std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, base::String, std::uint32_t, std::uint8_t,
           base::String>
upgradeOf(std::uint32_t slot, std::uint32_t progress, std::uint8_t status);

}  // namespace zan_serviceOrchAG::command_progress_test
