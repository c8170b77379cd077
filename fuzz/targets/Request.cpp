#include <algorithm>
#include <thread>
#include <vector>

#include "framework/msglyr/Message.h"
#include "framework/noxxml/Characters.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Gateway.h"
#include "fuzz/support/QuietChannel.h"
#include "fuzz/support/ReplyChecks.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/WorkerTask.h"

// A whole request as it comes off the wire, through a real worker. In the input: the manner, one
// character for what is known of slot 3, then the parts, each ended by the unit separator or the
// end of the input.

namespace fuzz {
namespace {

namespace envelope = zan_serviceOrchAG::envelope;

constexpr unsigned kKnowns = 3;

/// '0' nothing, '1' a valid blade, '2' a blade that is not valid.
void prepareSlot(Input& input) {
  const auto known = input.empty() ? 0U : static_cast<std::uint8_t>(input.front() - '0') % kKnowns;
  input = input.empty() ? input : input.subspan(1);
  if (known != 0) {
    QuietChannel::instance().refuseAddresses(false);
    zan_serviceOrchAG::createSMAClient("3", "127.0.0.1", "1", known == 1);
  }
}

void startWorker() {
  std::thread([] {
    zan_serviceOrchAG::WorkerTask task(1, true);
    task.run();
  }).detach();
}

std::string nextSegment(std::string& rest) {
  const std::size_t end = std::min(rest.find('.'), rest.size());
  std::string segment = rest.substr(0, end);
  rest.erase(0, std::min(end + 1, rest.size()));
  return segment;
}

/// The name that a request's command has in its reply.
std::string replyName(const std::string& command, const std::string& action, unsigned status) {
  // Requests that reach their handler are answered under a name that takes in the action; those
  // that the dispatcher turns away are not.
  const bool isTurnedAway = status == 500 || status == 501 || status == 510 || status == 511;
  if (isTurnedAway || action.empty()) {
    return command;
  }
  std::string name = command + action;
  name[command.size()] = static_cast<char>(std::toupper(static_cast<unsigned char>(action[0])));
  return name;
}

void checkReplyMessage(const std::vector<std::string>& request, const msglyr::Message& reply) {
  check(request.size() == envelope::kPartCount, "only a request of five parts is answered");
  check(reply.getnumParts() == envelope::kPartCount, "a reply has five parts");
  std::string subject = request[envelope::kSubject];
  check(nextSegment(subject) == envelope::kOwnIdentity, "only a request to this service counts");
  const std::string command = nextSegment(subject);
  const std::string action = nextSegment(subject);
  check(reply[envelope::kSubject] ==
            request[envelope::kIdentity] + "." + command + (action.empty() ? "" : "." + action),
        "a reply's subject repeats the request's", reply[envelope::kSubject]);
  check(reply[envelope::kContent] == request[envelope::kContent], "the content type stays");
  check(reply[envelope::kMessageId] == request[envelope::kMessageId], "the message id stays");
  const std::string& statusText = reply[envelope::kStatus];
  check(statusText.size() == 3 && std::all_of(statusText.begin(), statusText.end(),
                                              [](char c) { return c >= '0' && c <= '9'; }),
        "a status is a number of three digits", statusText);
  const auto status = static_cast<unsigned>(std::stoul(statusText));
  check(status == 100 || (status >= 500 && status <= 514), "a status is one of the wire",
        statusText);
  const std::string name = replyName(command, action, status);
  if (!noxxml::isLegalName(command + "Response")) {
    check(reply[envelope::kBody].empty(), "a name that is none makes no document", command);
    return;
  }
  checkReplyBody(reply[envelope::kBody], name, status);
}

}  // namespace

void runRequest(Input input) {
  const Manner manner = takeManner(input);
  const Gateway gateway(manner);
  [[maybe_unused]] static const bool isWorking = (startWorker(), true);
  prepareSlot(input);
  QuietChannel::instance().refuseAddresses(manner == Manner::kRefusesAddress);
  const std::vector<std::string> parts = partsOf(input);
  const auto replies = QuietChannel::instance().exchange(msglyr::Message(parts));
  check(replies.size() <= 1, "a request has one reply at most");
  if (!replies.empty()) {
    checkReplyMessage(parts, replies.front());
  }
}

}  // namespace fuzz
