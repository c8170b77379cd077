#include "serviceOrchAG/bridge/SMAClient.h"

#include <array>
#include <exception>
#include <optional>

#include "framework/core_log/Log.h"
#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;
using os::CriticalSection;

constexpr long kAnswerTimeOutMs = 10000;

/// Lets one command at a time queue for the registry lock. That lock is fair, so without this a
/// query that comes behind sixteen waiting commands would wait for sixteen exchanges; with it, for
/// the one under way.
class CommandTurn {
 public:
  CommandTurn() {
    // Its holder must not queue behind a command that waits for the holder.
    if (!Critical_section_lock.isHeldByCaller()) {
      guard_.emplace(lock());
    }
  }

 private:
  static CriticalSection& lock() {
    static CriticalSection& turn = *new CriticalSection;
    return turn;
  }

  std::optional<CriticalSection::Guard> guard_;
};

/// What an exchange came to: the parts received, or the text of what was thrown.
struct Outcome {
  int parts = -1;
  bool hasThrown = true;  // until both calls have returned
  std::string error;
};

Outcome exchange(msglyr::AsyncRouterDealerChannel& channel, const std::string& subject,
                 msglyr::Message& message) {
  Outcome outcome;
  try {
    std::array<char, msglyr::kAddressBytes> sender;
    channel.send(subject.c_str(), &message);
    outcome.parts = channel.receive(sender.data(), &message, kAnswerTimeOutMs);
    outcome.hasThrown = false;
  } catch (const std::exception& error) {
    outcome.error = error.what();
    logPrintf("send", serviceLevel(), 8, "%s::send() caught std exception: %s", "send",
              outcome.error.c_str());
  } catch (const std::string& error) {
    outcome.error = error;
    logPrintf("send", serviceLevel(), 8, "%s::send() caught string exception: %s", "send",
              outcome.error.c_str());
  } catch (...) {
    outcome.error = "caught an unknown exception";
    logPrintf("send", serviceLevel(), 8, "%s::send() caught an unknown exception", "send");
  }
  return outcome;
}

unsigned int codeOf(const Outcome& outcome) {
  if (outcome.hasThrown) {
    return outcome.error.empty() ? status::kIncompleteAnswer : status::kExchangeFailed;
  }
  switch (outcome.parts) {
    case 0:
      return status::kNoAnswer;
    case -1:
    case 1:
    case 2:
    case 3:
    case 4:
      return status::kIncompleteAnswer;
    default:
      return status::kSuccess;
  }
}

/// The request as the lines about its outcome name it. Copies, because the answer overwrites the
/// message.
struct SentRequest {
  const std::string& id;
  const std::string& subject;
  const std::string& document;
};

msglyr::Message buildRequest(const SentRequest& request) {
  msglyr::Message message(envelope::kPartCount);
  message[envelope::kSubject] = request.subject;
  message[envelope::kContent] = envelope::contentTypeAndVersion();
  message[envelope::kMessageId] = request.id;
  message[envelope::kIdentity] = envelope::kOwnIdentity;
  message[envelope::kBody] = request.document;
  return message;
}

void logNoChannel(const SentRequest& request) {
  logPrintf("send", serviceLevel(), 6, "%d : %s for Message Id[%s], subject[%s], message[%s] ",
            static_cast<int>(status::kNoChannel), getStatusCodeText(status::kNoChannel),
            request.id.c_str(), request.subject.c_str(), request.document.c_str());
}

void logOutcome(unsigned int code, const SentRequest& request, const Outcome& outcome,
                const msglyr::Message& answer) {
  const auto number = static_cast<int>(code);
  const char* const id = request.id.c_str();
  const char* const subject = request.subject.c_str();
  const char* const document = request.document.c_str();
  if (code == status::kSuccess) {
    const bool hasBody = answer.getnumParts() > envelope::kBody;
    logPrintf("send", serviceLevel(), 5,
              "%d : SMA response [ Message : %s] received by serviceAG for request [ Message Id = "
              "%s, subject = %s, message = %s ]",
              number, hasBody ? answer[envelope::kBody].c_str() : "", id, subject, document);
  } else if (code == status::kExchangeFailed) {
    logPrintf("send", serviceLevel(), 8,
              "%d : %s for Message Id[%s], subject[%s], message[%s], error[%s]", number,
              getStatusCodeText(code), id, subject, document, outcome.error.c_str());
  } else {
    logPrintf("send", serviceLevel(), 6, "%d : %s for Message Id[%s], subject[%s], message[%s]",
              number, getStatusCodeText(code), id, subject, document);
  }
}

/// As SMAClient::resetClientChannel, but a failure is logged: the next command finds no channel,
/// fails and tries again.
void resetAfterFailure(SMAClient& client, const std::string& slot) {
  try {
    client.resetClientChannel();
  } catch (const std::exception& error) {
    logPrintf("sendMsg", serviceLevel(), 8, "Resetting the channel of slot %s failed: %s",
              slot.c_str(), error.what());
  } catch (...) {
    logPrintf("sendMsg", serviceLevel(), 8, "Resetting the channel of slot %s failed",
              slot.c_str());
  }
}

}  // namespace

SMAClient::SMAClient(std::string& slot, std::string& ip, unsigned int port, bool status)
    : status_(status), slot_(slot), ip_(ip), port_(port) {
  const CriticalSection::Guard guard(Critical_section_lock);
  const auto older = ClientMap.find(slot_);
  if (older != ClientMap.end()) {
    delete older->second;
    logPrintf("SMAClient", serviceLevel(), 5, "Deleted SMAClient from map for slot %s",
              slot_.c_str());
  }
  logPrintf("SMAClient", serviceLevel(), 1, "Adding SMAClient in map for slot %s", slot_.c_str());
  ClientMap[slot_] = this;
  try {
    openChannel();
  } catch (...) {
    ClientMap.erase(slot_);
    throw;
  }
}

SMAClient::~SMAClient() {
  std::optional<CriticalSection::Guard> guard;  // held while an error is told, too
  try {
    logPrintf("~SMAClient", serviceLevel(), 1, "deleting smaClient... for slot %s", slot_.c_str());
    guard.emplace(Critical_section_lock);
    if (is_bladeRegistered(slot_)) {
      logPrintf("~SMAClient", serviceLevel(), 5, "deleting channel for slot %s", slot_.c_str());
      channelHolder_.reset();
      logPrintf("~SMAClient", serviceLevel(), 5, "deleting registered slot %s entry from map",
                slot_.c_str());
      ClientMap.erase(slot_);
    } else {
      // Whoever took the client out of the map may still use its channel; it is left to them.
      static_cast<void>(channelHolder_.release());
    }
  } catch (const std::exception& error) {
    logPrintf("~SMAClient", serviceLevel(), 8, "%s : *** Error: during acquiring lock failed: %s",
              "~SMAClient", error.what());
  } catch (...) {
    logPrintf("~SMAClient", serviceLevel(), 8, "%s : *** Error: during acquiring lock failed: %s",
              "~SMAClient", "unknown exception");
  }
}

void SMAClient::openChannel() {
  try {
    channelHolder_ = std::make_unique<std::unique_ptr<Channel>>();
    *channelHolder_ = std::make_unique<Channel>(words().channelName, msglyr::kRoleClient);
    setClientChannel(slot_, ip_, port_);
  } catch (...) {
    // A channel that leads nowhere would only time out; without one a command fails at once.
    channelHolder_.reset();
    throw;
  }
}

void SMAClient::setClientChannel(std::string& slot, std::string& ip, unsigned int port) {
  const CriticalSection::Guard guard(Critical_section_lock);
  if (channel() == nullptr) {
    logPrintf("setClientChannel", serviceLevel(), 8, "SMAClient:: %s sma_dealer_client is null",
              slot.c_str());
    return;
  }
  const std::string endPoint = "tcp://" + ip + ":" + std::to_string(port);
  channel()->setServerEndPoint(endPoint);
  logPrintf("setClientChannel", serviceLevel(), 1, "Set server end point for slot %s : %s",
            slot.c_str(), endPoint.c_str());
}

void SMAClient::resetClientChannel() {
  logPrintf("resetClientChannel", serviceLevel(), 1, "resetting smaClient channel... for slot %s",
            slot_.c_str());
  {
    const CriticalSection::Guard guard(Critical_section_lock);
    channelHolder_.reset();
    openChannel();
  }
  logPrintf("resetClientChannel", serviceLevel(), 1,
            "SMAClient::resetClientChannel() for slot %s end point: %s:%d", slot_.c_str(),
            ip_.c_str(), static_cast<int>(port_));
}

unsigned int SMAClient::send(std::string& subject, std::string& message) {
  const std::string messageId = std::to_string(++messageCounter_);
  const SentRequest request{messageId, subject, message};
  msglyr::Message parts = buildRequest(request);
  logPrintf("send", serviceLevel(), 1,
            "Built serviceAG request subject = %s, Command = %s, Content-type = %s, Client "
            "Identity = %s, Message ID = %s, Message = %s ",
            subject.c_str(), parts[envelope::kSubject].c_str(), parts[envelope::kContent].c_str(),
            parts[envelope::kIdentity].c_str(), parts[envelope::kMessageId].c_str(),
            parts[envelope::kBody].c_str());
  logPrintf("send", serviceLevel(), 5,
            "Sending servicveAG request Message Id[%s], Message[%s] to server at tcp://%s:%d",
            messageId.c_str(), message.c_str(), ip_.c_str(), static_cast<int>(port_));
  if (channel() == nullptr) {
    logNoChannel(request);
    return status::kNoChannel;
  }
  const Outcome outcome = exchange(*channel(), subject, parts);
  const unsigned int code = codeOf(outcome);
  logOutcome(code, request, outcome, parts);
  return code;
}

unsigned int sendMsg(std::string slot, std::string message, std::string command) {
  const CommandTurn turn;
  const CriticalSection::Guard guard(Critical_section_lock);
  const auto entry = ClientMap.find(slot);
  if (entry == ClientMap.end()) {
    logPrintf("sendMsg", serviceLevel(), 6, "%s : SMA is not registered for slot %s",
              command.c_str(), slot.c_str());
    return status::kNoClient;
  }
  SMAClient& client = *entry->second;
  if (!client.status() && command != words().formatDiskSubject) {
    logPrintf("sendMsg", serviceLevel(), 6,
              "%s : Blade is not in valid state for slot %s. Please format the blade.",
              command.c_str(), slot.c_str());
    return status::kBladeNotValid;
  }
  logPrintf("sendMsg", serviceLevel(), 1, "%s:: Retrieved slotId: %s ", command.c_str(),
            slot.c_str());
  std::string subject = envelope::kSlotIdentity + slot + "." + command;
  const unsigned int code = client.send(subject, message);
  if (code != status::kSuccess) {
    resetAfterFailure(client, slot);
  }
  return code;
}

}  // namespace zan_serviceOrchAG
