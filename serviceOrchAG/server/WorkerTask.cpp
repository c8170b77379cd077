#include "serviceOrchAG/server/WorkerTask.h"

#include <array>
#include <exception>
#include <new>
#include <optional>
#include <string_view>

#include "framework/core_log/Log.h"
#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "framework/os/WaitableEvent.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

constexpr long kNoTimeLimit = -1;
constexpr unsigned kSetUpPauseMs = 1000;

/// The segments of a subject that mean something: identity.command[.action]
struct Subject {
  std::string identity;
  std::optional<std::string> command;  // missing when there is one segment only
  std::string action;
};

/// Takes the text up to the next "." off `rest`; nothing when `rest` is used up.
std::optional<std::string> nextSegment(std::optional<std::string_view>& rest) {
  if (!rest) {
    return std::nullopt;
  }
  const std::size_t end = rest->find('.');
  std::string segment(rest->substr(0, end));
  if (end == std::string_view::npos) {
    rest.reset();
  } else {
    rest->remove_prefix(end + 1);
  }
  return segment;
}

Subject splitSubject(const std::string& text) {
  std::optional<std::string_view> rest = text;
  Subject subject;
  subject.identity = *nextSegment(rest);
  subject.command = nextSegment(rest);
  subject.action = nextSegment(rest).value_or("");
  return subject;
}

/// False, after a line in the log, when the subject is not one of a request to this service.
bool isForThisService(const Subject& subject) {
  if (subject.identity != envelope::kOwnIdentity) {
    logPrintf("run", serviceLevel(), 6, "My identity passed was %s, should be %s",
              subject.identity.c_str(), envelope::kOwnIdentity);
    return false;
  }
  if (!subject.command) {
    logPrintf("run", serviceLevel(), 6, "The subject %s names no command",
              subject.identity.c_str());
    return false;
  }
  return true;
}

/// Null when there is no reply to send.
std::unique_ptr<Response> respond(const Subject& subject, const msglyr::Message& request) {
  if (request[envelope::kContent] != envelope::contentTypeAndVersion()) {
    const std::string text =
        "Only content-type:version \"" + envelope::contentTypeAndVersion() + "\" is supported";
    return std::unique_ptr<Response>(
        MsgHandler::errorResponse(*subject.command, status::kInvalidContentType, text, nullptr));
  }
  return std::unique_ptr<Response>(MsgHandler::getInstance()->handleCb(
      *subject.command, subject.action, request[envelope::kMessageId], request[envelope::kBody],
      request[envelope::kIdentity]));
}

/// Turns the request into its reply; content type and message id stay. Returns the reply subject.
std::string makeReply(msglyr::Message& message, const Subject& subject, Response& response) {
  std::string replySubject = message[envelope::kIdentity] + "." + *subject.command;
  if (!subject.action.empty()) {
    replySubject += "." + subject.action;
  }
  message[envelope::kSubject] = replySubject;
  message[envelope::kStatus] = std::to_string(response.status);
  message[envelope::kBody] = std::move(response.body);
  return replySubject;
}

void sendReply(msglyr::MsgLyrChannel& channel, const std::string& subject,
               msglyr::Message& message) {
  logPrintf("run", serviceLevel(), 1,
            "Built serviceAG reply for SMA request with subject : %s, Command : %s, Content-type : "
            "%s, Status Code : %s, Message ID : %s,  Message : %s ",
            subject.c_str(), message[envelope::kSubject].c_str(),
            message[envelope::kContent].c_str(), message[envelope::kStatus].c_str(),
            message[envelope::kMessageId].c_str(), message[envelope::kBody].c_str());
  const int sent = channel.send(subject.c_str(), &message);
  if (sent == envelope::kPartCount) {
    logPrintf("run", serviceLevel(), 1,
              "Reply sent from serviceAG to SMA with subject : %s, Message ID : %s",
              subject.c_str(), message[envelope::kMessageId].c_str());
  } else {
    logPrintf("run", serviceLevel(), 6, "messaging layer send() failed, rc = %d, Message Id = %s",
              sent, message[envelope::kMessageId].c_str());
  }
}

void logSetUpFailure(const char* text) {
  logPrintf("run", serviceLevel(), 8,
            "%s : An exception occurred while setting up server or worker end point: %s", "run",
            text);
}

void logStringException(const char* text) {
  logPrintf("run", serviceLevel(), 8, "%s : caught string exception: %s", "run", text);
}

/// To be called where every exception is caught. The end of a thread unwinds its stack without an
/// exception object, and aborts the process if it is swallowed.
void rethrowIfThreadEnds() {
  if (std::current_exception() == nullptr) {
    throw;
  }
}

}  // namespace

WorkerTask::WorkerTask(int number, bool left) : number_(number), left_(left) {
  logPrintf("WorkerTask", serviceLevel(), 5, "Init %s WorkerTask %d", left_ ? "LEFT" : "RIGHT",
            number_);
}

void WorkerTask::run() {
  const std::unique_ptr<msglyr::MsgLyrChannel> channel = openChannel();
  for (;;) {
    try {
      serveOne(*channel);
    } catch (const std::bad_alloc& error) {
      logPrintf("run", serviceLevel(), 8, "%s : caught baddalloc %s", "run", error.what());
    } catch (const std::exception& error) {
      logPrintf("run", serviceLevel(), 8, "%s : caught standard exception: %s", "run",
                error.what());
    } catch (const std::string& text) {
      logStringException(text.c_str());
    } catch (const char* text) {
      logStringException(text);
    } catch (...) {
      rethrowIfThreadEnds();
      logPrintf("run", serviceLevel(), 8, "%s : caught unknown exception", "run");
    }
  }
}

std::unique_ptr<msglyr::MsgLyrChannel> WorkerTask::openChannel() const {
  for (;;) {
    try {
      return tryOpenChannel();
    } catch (const std::exception& error) {
      logSetUpFailure(error.what());
    } catch (const std::string& text) {
      logSetUpFailure(text.c_str());
    } catch (const char* text) {
      logSetUpFailure(text);
    } catch (...) {
      rethrowIfThreadEnds();
      logSetUpFailure("unknown exception");
    }
    static_cast<void>(os::WaitableEvent().wait(kSetUpPauseMs));
  }
}

std::unique_ptr<msglyr::MsgLyrChannel> WorkerTask::tryOpenChannel() const {
  auto channel = std::make_unique<msglyr::AsyncRouterDealerChannel>(words().channelName,
                                                                    msglyr::kRoleRequestWorker);
  logPrintf("run", serviceLevel(), 5, "Starting worker %d", number_);
  channel->setServerEndPoint(left_ ? words().leftServerEndPoint : words().rightServerEndPoint);
  channel->setWorkerEndPoint(words().workerEndPoint);
  return channel;
}

void WorkerTask::serveOne(msglyr::MsgLyrChannel& channel) const {
  msglyr::Message message;
  logPrintf("run", serviceLevel(), 1, "Worker %d waiting to receive message from SMA.", number_);
  std::array<char, msglyr::kAddressBytes> sender;
  const int received = channel.receive(sender.data(), &message, kNoTimeLimit);
  if (received != envelope::kPartCount || message.getnumParts() != envelope::kPartCount) {
    logPrintf("run", serviceLevel(), 6, "Received %d message parts (should be %d)", received,
              envelope::kPartCount);
    return;
  }
  const Subject subject = splitSubject(message[envelope::kSubject]);
  if (!isForThisService(subject)) {
    return;
  }
  logPrintf("run", serviceLevel(), 1,
            "Calling handleCb with identity: %s, cmd: %s, action: %s, Message Id: %s, client "
            "identity: %s",
            subject.identity.c_str(), subject.command->c_str(), subject.action.c_str(),
            message[envelope::kMessageId].c_str(), message[envelope::kIdentity].c_str());
  const std::unique_ptr<Response> response = respond(subject, message);
  if (response == nullptr) {
    return;
  }
  const std::string replySubject = makeReply(message, subject, *response);
  sendReply(channel, replySubject, message);
}

}  // namespace zan_serviceOrchAG
