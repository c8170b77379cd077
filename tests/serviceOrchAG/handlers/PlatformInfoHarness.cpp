#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"

#include <algorithm>
#include <tuple>

#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/ExpectedReply.h"

namespace zan_serviceOrchAG::platform_info_test {

Values monitorWithout(const std::vector<std::uint32_t>& left) {
  Values values{{0x82f, text("2.4.1")}, {0x830, load(0.25F)}, {0x831, load(1.5F)},
                {0x832, load(2.0F)},    {0x836, count(1)},    {0x837, text("12 days")},
                {0x2811, number(8)},    {0x2812, number(4)},  {0x2813, number(2)},
                {0x2814, number(1)}};
  std::erase_if(values, [&](const auto& entry) {
    return std::find(left.begin(), left.end(), entry.first) != left.end();
  });
  return values;
}

Values valuesOf(const Config& config) {
  return {config.values().begin(), config.values().end()};
}

void PlatformInfo::signal(const base::Buffer& cookie, bool isTaken) {
  UpdatePlatformInfoMe me;
  me.setCookie(cookie);
  if (isTaken) {
    Svc::successRspServiceorchapiUpdatePlatformInfoCb(me);
  } else {
    Svc::failedRspServiceorchapiUpdatePlatformInfoCb(me, 7, "no such slot");
  }
}

void PlatformInfo::answer(bool isTaken) {
  svc_.onSend([isTaken](const RecordingSvc::Sent& call) {
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      signal(call.cookie, isTaken);
    }
  });
}

void PlatformInfo::neverAnswer() {
  svc_.onSend([](const RecordingSvc::Sent&) {});
}

std::unique_ptr<Response> PlatformInfo::handle(const std::string& document, int slot,
                                               const std::string& messageId) {
  return std::unique_ptr<Response>(
      handler_.AG_platformInfoUpdateReqCb(messageId, "update", document, slot));
}

void PlatformInfo::expectReply(const std::unique_ptr<Response>& response, unsigned code,
                               const std::string& message) {
  test_support::expectReply(response.get(), "platformInfoUpdateResponse", code, message);
}

PlatformInfo::Report PlatformInfo::reported(const std::string& document) {
  log_.clear();
  const std::size_t before = svc_.sent().size();
  expectReply(handle(document), 100, "OK");
  EXPECT_EQ(before + 2, svc_.sent().size());
  const auto update = svc_.calls<UpdatePlatformInfoMe>().back();
  const auto validation = svc_.calls<ValidateAppInstancesMe>().back();
  return {std::get<1>(update), std::get<2>(update).configs(), std::get<1>(validation).configs()};
}

std::vector<LogLine> PlatformInfo::complaints() const {
  std::vector<LogLine> lines = log_.lines();
  const auto calls = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) {
    return line.text.starts_with("Triggering ");
  });
  EXPECT_NE(lines.end(), calls);
  lines.erase(calls, lines.end());
  return lines;
}

}  // namespace zan_serviceOrchAG::platform_info_test
