#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework/os/CriticalSection.h"
#include "serviceOrchAG/bridge/PendingMap.h"
#include "serviceOrchAG/bridge/Response.h"

namespace noxxml {
class AgElement;
class XMLConverter;
}  // namespace noxxml
namespace os {
class ThreadPool;
}

namespace zan_serviceOrchAG {

/// Knows which handler serves which blade request, and whether a blade is let through to it.
///
/// One object, made on first use and never destroyed: its workers run until the process ends.
class MsgHandler : public MsgHandlerBase {
 public:
  /// Serves one request. The caller owns the result; null means that no reply is sent. What it
  /// throws drops the request. Runs on all workers at once.
  using Handler = Response* (MsgHandler::*)(const std::string& messageId, const std::string& action,
                                            const std::string& document, int slot);

  static std::atomic<MsgHandler*> instance;

  /// The one object. Any thread, also the first call.
  static MsgHandler* getInstance();

  MsgHandler();
  ~MsgHandler() override;

  /// Fills the command map, then starts the five workers. Called once, at start-up.
  void init();

  /// Fills the command map. Part of init; by itself for who calls handleCb without any workers.
  void registerCommands();

  /// Serves one request: the gates, then the handler. `command` and `action` are the second and the
  /// third segment of the subject; `action` may be empty. The caller owns the result; null means
  /// that no reply is sent. Blocks for as long as the handler does, and for the registry lock.
  /// Throws std::invalid_argument when `identity` names no slot, and what the handler throws.
  Response* handleCb(const std::string& command, const std::string& action,
                     const std::string& messageId, const std::string& document,
                     const std::string& identity);

  /// Does nothing.
  void AG_handleServiceOrchapiRespCb(const base::Buffer& cookie, method::Config* config,
                                     bool flag) override;

  /// Forgets the blade in a slot.
  void AG_deRegisterSlotId(const unsigned int& slot);

  /// The numbers that the pool gave to the workers, in the order of their submission.
  const std::vector<int>& taskIds() const { return taskIds_; }

  // The handlers, a file each.
  Response* AG_registerReqCb(const std::string& messageId, const std::string& action,
                             const std::string& document, int slot);
  Response* AG_commandProgressUpdateReqCb(const std::string& messageId, const std::string& action,
                                          const std::string& document, int slot);
  Response* AG_heartbeatReqCb(const std::string& messageId, const std::string& action,
                              const std::string& document, int slot);
  Response* AG_appFailureReqCb(const std::string& messageId, const std::string& action,
                               const std::string& document, int slot);
  Response* AG_platformInfoUpdateReqCb(const std::string& messageId, const std::string& action,
                                       const std::string& document, int slot);

  // The standard replies. `cmd` is the command's name in the reply document and in the texts.

  static unsigned int getSdJobStatusCode(unsigned int code);

  /// Adds the reply document to `converter` and returns its root, cmdResponse, which belongs to the
  /// converter's factory: an element "response" that holds "code" and, unless `message` is empty,
  /// "message".
  static noxxml::AgElement* AG_response_generate(noxxml::XMLConverter& converter,
                                                 const std::string& cmd, unsigned int code,
                                                 const std::string& message);

  /// Puts the code and the serialised reply document into `response`, in place of what it held. The
  /// body is empty when `cmd` makes no legal element name.
  static void fillResponse(Response& response, const std::string& cmd, unsigned int code,
                           const std::string& message);

  // The error replies log their text at level 6. Each returns `response`, or, when that is null, a
  // new Response that the caller owns.

  static Response* errorResponse(const std::string& cmd, unsigned int code,
                                 const std::string& message, Response* response);
  static Response* missingTagResponse(const std::string& tag, const std::string& cmd,
                                      Response* response);
  static Response* missingValueResponse(const std::string& tag, const std::string& cmd,
                                        Response* response);
  static Response* invalidParamResponse(const std::string& tag, const std::string& value,
                                        const std::string& cmd, Response* response);
  static Response* invalidActionResponse(const std::string& action, const std::string& cmd,
                                         Response* response);

  // These only log.

  static void missingTagError(const std::string& tag, const std::string& cmd);
  static void extraTagError(const std::string& tag, const std::string& cmd);

 private:
  void startWorkers();

  std::map<std::string, Handler> commandMap_;  // read-only once registerCommands is through
  std::unique_ptr<os::ThreadPool> pool_;
  std::vector<int> taskIds_;
  os::CriticalSection submissionLock_;  // held while a worker is made and submitted
};

}  // namespace zan_serviceOrchAG
