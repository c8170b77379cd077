#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/QuietChannel.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"

// What a blade answers to a command: the parts of a message, or nothing at all.

namespace fuzz {
namespace {

unsigned expectedCode(const std::optional<msglyr::Message>& answer) {
  constexpr unsigned kParts = 5;
  if (!answer) {
    return 578;
  }
  return answer->getnumParts() < kParts ? 579 : 100;
}

}  // namespace

void runAnswer(Input input) {
  const Manner manner = takeManner(input);
  const Gateway gateway(Manner::kAccepts);
  zan_serviceOrchAG::createSMAClient("3", "127.0.0.1", "1", true);
  std::optional<msglyr::Message> answer;
  if (manner != Manner::kSilent) {
    answer.emplace(partsOf(input));
  }
  QuietChannel::instance().answerClients(answer);
  QuietChannel::instance().refuseAddresses(manner == Manner::kRefusesAddress);
  const std::string body = answer ? answer->parts().back() : "";
  const unsigned code = zan_serviceOrchAG::sendMsg("3", body, "installApp");
  check(code == expectedCode(answer), "a command's outcome is that of its answer",
        std::to_string(code));
  // A channel on which an exchange failed is replaced, so the next command meets a fresh one, or
  // none if there was no way to make it.
  QuietChannel::instance().answerClients(msglyr::Message(5));
  const bool hasChannel = code == 100 || manner != Manner::kRefusesAddress;
  check(zan_serviceOrchAG::sendMsg("3", "", "installApp") == (hasChannel ? 100U : 576U),
        "an answer does not harm the next command");
}

}  // namespace fuzz
