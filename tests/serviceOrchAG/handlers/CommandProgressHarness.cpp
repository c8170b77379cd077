#include "tests/serviceOrchAG/handlers/CommandProgressHarness.h"

#include <gmock/gmock.h>

#include "tests/support/ExpectedReply.h"

namespace zan_serviceOrchAG::command_progress_test {

using testing::ElementsAre;
using testing::IsEmpty;

Sent Sent::with(const std::string& tag, const std::string& value) const {
  Sent changed = *this;
  for (auto& [name, text] : changed.tags) {
    if (name == tag) {
      text = value;
    }
  }
  return changed;
}

Sent Sent::without(const std::string& tag) const {
  Sent changed = *this;
  std::erase_if(changed.tags, [&](const auto& entry) { return entry.first == tag; });
  return changed;
}

std::string Sent::document() const {
  std::string text = "<commandProgressUpdateRequest>";
  for (const auto& [tag, value] : tags) {
    text.append("<" + tag + ">").append(value).append("</" + tag + ">");
  }
  return text + "</commandProgressUpdateRequest>";
}

std::unique_ptr<Response> CommandProgress::handleDocument(const std::string& document, int slot,
                                                          const std::string& action) {
  log_.clear();
  return std::unique_ptr<Response>(
      handler_.AG_commandProgressUpdateReqCb("id-1", action, document, slot));
}

std::unique_ptr<Response> CommandProgress::handle(const Sent& report, int slot) {
  return handleDocument(report.document(), slot);
}

void CommandProgress::expectReply(const std::unique_ptr<Response>& response, unsigned code,
                                  const std::string& message) {
  test_support::expectReply(response.get(), "commandProgressUpdateResponse", code, message);
}

void CommandProgress::expectRefused(const std::unique_ptr<Response>& response,
                                    const std::string& message) {
  expectReply(response, 505, message);
  EXPECT_THAT(log_.lines(), ElementsAre(LogLine{6, "errorResponse", message}));
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

void CommandProgress::expectOneCallWithoutWait() {
  ASSERT_EQ(1U, svc_.sent().size());
  EXPECT_FALSE(svc_.sent()[0].responseRequired);
  EXPECT_EQ(4, static_cast<int>(svc_.sent()[0].priority));
  EXPECT_FALSE(svc_.sent()[0].cookie.empty());
  EXPECT_EQ(0U, handler_.knownCookies());
}

std::tuple<base::String, std::uint8_t, std::uint32_t, std::uint8_t, std::uint32_t, base::String>
progressOf(const char* appInstanceId, std::uint8_t command, std::uint32_t progress,
           std::uint8_t status, std::uint32_t code, const char* errorDesc) {
  return {appInstanceId, command, progress, status, code, errorDesc};
}

std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, base::String, std::uint32_t, std::uint8_t,
           base::String>
upgradeOf(std::uint32_t slot, std::uint32_t progress, std::uint8_t status) {
  return {0, 1, slot, "99.1.2.3", progress, status, "nox-os"};
}

}  // namespace zan_serviceOrchAG::command_progress_test
