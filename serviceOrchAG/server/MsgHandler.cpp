#include "serviceOrchAG/server/MsgHandler.h"

#include "framework/core_log/Log.h"
#include "framework/network/ElementBI.h"
#include "framework/os/ThreadPool.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/server/WorkerTask.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

constexpr int kWorkers = 5;
constexpr unsigned kMostThreads = 10;
constexpr auto kLeftSupervisorId = 1;

/// A request on its way to its handler; borrows the texts.
struct Request {
  const std::string& command;
  const std::string& action;
  const std::string& key;
  const std::string& messageId;
  const std::string& document;
  const std::string& identity;
};

/// True for requests that no gate stops: a blade registers before it is known, and it reports the
/// progress of a disk format while it is not valid, which is why it is being formatted.
bool isExemptFromGates(const Request& request) {
  return request.key == words().registerKey ||
         isFormatStatusProgress(request.key, request.document);
}

std::unique_ptr<Response> refuse(const Request& request, unsigned int code,
                                 const std::string& message) {
  auto response = std::make_unique<Response>();
  MsgHandler::fillResponse(*response, request.command, code, message);
  return response;
}

std::unique_ptr<Response> refuseUnknown(const Request& request) {
  logPrintf("handleCb", serviceLevel(), 6,
            "Received unknown cmd : %s , message ID : %s , client identity : %s, Message : %s ",
            request.command.c_str(), request.messageId.c_str(), request.identity.c_str(),
            request.document.c_str());
  return refuse(request, status::kInvalidCommand, "Invalid Command");
}

struct BladeState {
  bool isRegistered;
  bool isValid;
};

/// Asks for both while it holds the registry's lock: a command that queues for it could take it in
/// between, and the request would wait for a second exchange.
BladeState stateOf(const std::string& slot) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  return {is_bladeRegistered(slot), getBladeStatus(slot)};
}

/// The reply that turns the blade away, or null when it may pass.
std::unique_ptr<Response> checkBlade(const Request& request, int slot) {
  const std::string slotText = NumberToString(slot);
  const BladeState blade = stateOf(slotText);
  if (!blade.isRegistered) {
    logPrintf("handleCb", serviceLevel(), 4,
              "SMA is not register for slot : %d, cmd : %s, action : %s, key : %s, message ID : "
              "%s, client identity : %s",
              slot, request.command.c_str(), request.action.c_str(), request.key.c_str(),
              request.messageId.c_str(), request.identity.c_str());
    return refuse(request, status::kNotRegistered, "SMA is not register with slot " + slotText);
  }
  if (!blade.isValid) {
    logPrintf("handleCb", serviceLevel(), 4,
              "Blade is not in valid state for slot : %d, cmd : %s, action : %s, key : %s, message "
              "ID : %s, client identity : %s",
              slot, request.command.c_str(), request.action.c_str(), request.key.c_str(),
              request.messageId.c_str(), request.identity.c_str());
    return refuse(request, status::kNotRecognized,
                  "Blade is not in valid state for slot " + slotText);
  }
  return nullptr;
}

}  // namespace

std::atomic<MsgHandler*> MsgHandler::instance{nullptr};

MsgHandler* MsgHandler::getInstance() {
  MsgHandler* current = instance.load(std::memory_order_acquire);
  if (current != nullptr) {
    return current;
  }
  auto created = std::make_unique<MsgHandler>();
  if (instance.compare_exchange_strong(current, created.get(), std::memory_order_acq_rel,
                                       std::memory_order_acquire)) {
    return created.release();
  }
  return current;
}

MsgHandler::MsgHandler() = default;
MsgHandler::~MsgHandler() = default;

void MsgHandler::init() {
  registerCommands();
  startWorkers();
}

void MsgHandler::registerCommands() {
  commandMap_[words().registerKey] = &MsgHandler::AG_registerReqCb;
  commandMap_[words().commandProgressUpdateKey] = &MsgHandler::AG_commandProgressUpdateReqCb;
  commandMap_[words().heartbeatKey] = &MsgHandler::AG_heartbeatReqCb;
  commandMap_[words().appFailureKey] = &MsgHandler::AG_appFailureReqCb;
  commandMap_[words().platformInfoUpdateKey] = &MsgHandler::AG_platformInfoUpdateReqCb;
  logPrintf("init", serviceLevel(), 5, "serviceAG MsgHandler callbacks registered");
}

void MsgHandler::startWorkers() {
  pool_ = std::make_unique<os::ThreadPool>(kWorkers, kMostThreads, kWorkers, true);
  for (int number = 0; number < kWorkers; ++number) {
    const os::CriticalSection::Guard guard(submissionLock_);
    const bool left = network::ElementBI::getSelfId() == kLeftSupervisorId;
    taskIds_.push_back(pool_->submit(new WorkerTask(number, left), 1));
  }
}

Response* MsgHandler::handleCb(const std::string& command, const std::string& action,
                               const std::string& messageId, const std::string& document,
                               const std::string& identity) {
  const std::string key = action.empty() ? command : command + "." + action;
  const Request request{command, action, key, messageId, document, identity};
  const auto entry = commandMap_.find(key);
  logPrintf("handleCb", serviceLevel(), 4,
            "Handling SMA request cmd : %s, action :  %s, key : %s, message ID : %s, client "
            "identity : %s, Message : %s ",
            command.c_str(), action.c_str(), key.c_str(), messageId.c_str(), identity.c_str(),
            document.c_str());
  const int slot = getIdentitySlotId(identity);
  if (entry == commandMap_.end()) {
    return refuseUnknown(request).release();
  }
  if (!isExemptFromGates(request)) {
    if (std::unique_ptr<Response> refusal = checkBlade(request, slot)) {
      return refusal.release();
    }
  }
  return (this->*entry->second)(messageId, action, document, slot);
}

void MsgHandler::AG_handleServiceOrchapiRespCb(const base::Buffer& /*cookie*/,
                                               method::Config* /*config*/, bool /*flag*/) {}

void MsgHandler::AG_deRegisterSlotId(const unsigned int& slot) {
  removeBladeMapEntry(NumberToString(slot));
}

}  // namespace zan_serviceOrchAG
