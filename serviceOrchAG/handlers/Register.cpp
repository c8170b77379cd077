#include "serviceOrchAG/server/MsgHandler.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "framework/base/Buffer.h"
#include "framework/base/Regexp.h"
#include "framework/core_log/Log.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/PendingMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/bridge/ResponseSync.h"
#include "serviceOrchAG/handlers/RequestDocument.h"
#include "serviceOrchAG/handlers/SlotIdentity.h"
#include "serviceOrchAG/server/StatusCodes.h"
#include "serviceOrchAG/svc/Svc.h"
#include "serviceOrchAG/svc/Vocabulary.h"

// The "register" request: a blade announces itself. The engine is asked whether the blade is valid
// and gets to know its images; a valid or unrecognised blade gets its client.

namespace zan_serviceOrchAG {
namespace {

using core_log::logPrintf;
using core_log::serviceLevel;

constexpr unsigned kValidationTimeOutMs = 20000;
constexpr auto kPriority = proc::Stimulus::Priority::kDefault;
// Fixed arguments of OsControllerVersion.
constexpr unsigned kChassis = 1;
constexpr unsigned char kFirstKind = 1;
constexpr unsigned char kSecondKind = 6;
constexpr const char* kVendor = "VOLK";

struct Image {
  base::String osVersion;
  base::String imageName;
};

/// What a blade says about itself. The presence of further tags is only checked.
struct Registration {
  base::String slot;
  base::String ip;
  base::String port;
  base::String token;
  Image cached;
  Image running;
  // Both images set it, the running one last: the cached image's size stands in for a missing
  // running one.
  unsigned int imageSize = 0;

  unsigned int slotNumber() const {
    return static_cast<unsigned int>(std::strtol(slot.c_str(), nullptr, 10));
  }
};

/// What the engine says about the blade.
struct Verdict {
  bool isValid;
  bool shouldRetry;
  std::string token;
};

/// True for "checksum" and for that and an algorithm, as "checksum_md5".
bool isChecksum(const base::String& tag) {
  static const base::String& separator = *new base::String("_");
  return base::Regexp::split(tag, separator).front() == names().checksum;
}

void checkChecksum(const noxxml::AgElement& image) {
  for (const noxxml::AgElement* tag : image.children()) {
    if (isChecksum(tag->name())) {
      return;
    }
  }
  MsgHandler::missingTagError(names().checksum.str(), words().registerName);
}

/// An image element that does not stand exactly once counts as missing.
Image readImage(const RequestTree& document, const base::String& element, unsigned int& size) {
  const std::vector<noxxml::AgElement*> elements = document.findAll(element);
  if (elements.size() != 1) {
    MsgHandler::missingTagError(element.str(), words().registerName);
    return {};
  }
  const RequestTags tags = document.tagsOf(*elements.front());
  Image image;
  image.osVersion = tags.valueOrEmpty(names().osVersion);
  image.imageName = tags.valueOrEmpty(names().imageName);
  const base::String sizeText = tags.valueOrEmpty(names().size);
  if (tags.has(names().size)) {
    size = static_cast<unsigned int>(std::strtol(sizeText.c_str(), nullptr, 10));
  }
  checkChecksum(*elements.front());
  return image;
}

/// The tags without which there is no registration. Returns the first that is missing, or null.
const base::String* readRequired(const RequestTags& tags, Registration& blade) {
  const std::pair<const base::String*, base::String*> required[] = {
      {&names().bladeSlotId, &blade.slot},
      {&names().ip, &blade.ip},
      {&names().port, &blade.port},
  };
  for (const auto& [tag, target] : required) {
    const std::optional<std::string_view> value = tags.value(*tag);
    if (!value) {
      return tag;
    }
    *target = *value;
  }
  return nullptr;
}

void readOptional(const RequestTree& document, const RequestTags& tags, Registration& blade) {
  blade.token = tags.valueOrEmpty(names().token);
  tags.valueOrEmpty(names().authorizedPubKey);
  tags.valueOrEmpty(names().bladeCurrTime);
  tags.valueOrEmpty(names().upTime);
  blade.cached = readImage(document, names().cachePlatformImage, blade.imageSize);
  blade.running = readImage(document, names().runningPlatformImage, blade.imageSize);
}

void reply(Response& response, unsigned int status, const char* message, const std::string& token) {
  noxxml::AgFactory factory;
  noxxml::XMLConverter converter(&factory);
  noxxml::AgElement* const root =
      MsgHandler::AG_response_generate(converter, words().registerName, status, message);
  converter.xmlAddChildNode(names().token, token, root);
  converter.xmlAddChildNode(names().zedPubKey, getZedPubKey(), root);
  response.status = status;
  response.body = converter.xmlSerialize(root);
}

/// To be called when the event has been set. The lock, because an engine that answers twice may be
/// writing again.
Verdict readVerdict(ResponseSync& waiter) {
  const os::CriticalSection::Guard guard(waiter.lock);
  return {waiter.result, waiter.shouldRetry, waiter.token};
}

/// Asks the engine about the blade and waits for its answer. Nothing when it does not answer in
/// time; the response then says so.
std::optional<Verdict> validate(MsgHandler& handler, const Registration& blade,
                                const std::string& messageId, Response& response) {
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  ResponseSync waiter(&response);
  waiter.cookie = cookie;
  PendingResponse pending(handler, waiter);
  logPrintf("AG_registerReqCb", serviceLevel(), 1,
            "Triggering ValidateBladeState method for slot : %s, Message ID : %s",
            blade.slot.c_str(), messageId.c_str());
  Svc::invokeZanDmeServiceorchapiValidateBladeState(
      cookie, blade.slotNumber(), blade.running.osVersion, blade.token, true, kPriority);
  logPrintf("AG_registerReqCb", serviceLevel(), 1,
            "ValidateBladeState : wait... for slot : %s, Message ID : %s ", blade.slot.c_str(),
            messageId.c_str());
  if (waiter.event.wait(kValidationTimeOutMs) == 1) {
    // The results are not touched: a late answer may be writing them just now.
    logPrintf("AG_registerReqCb", serviceLevel(), 8,
              "DME timeout during ValidateBladeState for slot : %s, Message ID : %s",
              blade.slot.c_str(), messageId.c_str());
    reply(response, status::kTimeOut, "response time out during validating blade state.", "");
    return std::nullopt;
  }
  Verdict verdict = readVerdict(waiter);
  logPrintf("AG_registerReqCb", serviceLevel(), 1,
            "Message ID  = %s, slotId = %s, bladeValid = %s, shouldRetry = %s, token = %s",
            messageId.c_str(), blade.slot.c_str(), verdict.isValid ? "true" : "false",
            verdict.shouldRetry ? "true" : "false", verdict.token.c_str());
  return verdict;
}

/// Tells the engine what the blade runs, without waiting.
void reportImages(const Registration& blade, const Verdict& verdict, const std::string& messageId) {
  base::Buffer cookie;
  proc::Svc::generateCookie(cookie);
  logPrintf("AG_registerReqCb", serviceLevel(), 1,
            "Triggering OsControllerVersion method for slot : %s, Message ID : %s",
            blade.slot.c_str(), messageId.c_str());
  const unsigned long identifier = 0;
  // The engine gets no size of the cached image: its argument is always 0.
  Svc::invokeZanDmeServerapiOsControllerVersion(
      cookie, identifier, kChassis, blade.slotNumber(), "", blade.running.osVersion,
      blade.running.imageName, blade.imageSize, blade.cached.osVersion, blade.cached.imageName, 0,
      verdict.isValid, kFirstKind, kSecondKind, kVendor, false, kPriority);
}

void conclude(const Registration& blade, const Verdict& verdict, Response& response) {
  const std::string& slot = blade.slot.str();
  if (verdict.isValid) {
    createSMAClient(slot, blade.ip.str(), blade.port.str(), true);
    reply(response, status::kSuccess, "OK", verdict.token);
  } else if (verdict.shouldRetry) {
    reply(response, status::kNotRegistered, "ZED does not have token, please retry...",
          verdict.token);
  } else {
    createSMAClient(slot, blade.ip.str(), blade.port.str(), false);
    reply(response, status::kNotRecognized, "failed to recognized blade in DME", verdict.token);
  }
}

}  // namespace

Response* MsgHandler::AG_registerReqCb(const std::string& messageId, const std::string& /*action*/,
                                       const std::string& document, int /*slot*/) {
  auto response = std::make_unique<Response>();
  const RequestTree tree(document, words().registerName);
  const RequestTags tags = tree.tags();
  Registration blade;
  if (const base::String* const missing = readRequired(tags, blade)) {
    missingTagResponse(missing->str(), words().registerName, response.get());
    return response.release();
  }
  readOptional(tree, tags, blade);
  const std::optional<Verdict> verdict = validate(*this, blade, messageId, *response);
  if (verdict) {
    reportImages(blade, *verdict, messageId);
    conclude(blade, *verdict, *response);
  }
  return response.release();
}

}  // namespace zan_serviceOrchAG
