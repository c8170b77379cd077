#include "sma/Requests.h"

#include <charconv>
#include <ctime>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::names;
using zan_serviceOrchAG::words;

constexpr std::string_view kService = "serviceOrchAG";
constexpr std::string_view kIdentityPrefix = "sma_slot";
/// More than any gateway takes by default.
constexpr std::size_t kOversize = 1'500'000;
constexpr unsigned kParts = 5;

std::string contentTypeAndVersion() {
  return words().contentType + ":" + words().contentVersion;
}

/// A document under construction.
class Document {
 public:
  explicit Document(const std::string& name) : root_(converter_.xmlAddRootNode(name, "")) {}

  noxxml::AgElement* add(const base::String& name, const base::String& value) {
    return add(name, value, root_);
  }
  noxxml::AgElement* add(const base::String& name, const base::String& value,
                         noxxml::AgElement* parent) {
    return converter_.xmlAddChildNode(name, value, parent);
  }
  std::string text() const { return noxxml::XMLConverter::xmlSerialize(root_); }

 private:
  noxxml::XMLConverter converter_;
  noxxml::AgElement* root_;
};

void addImage(Document& document, const base::String& name, const Registration& registration) {
  noxxml::AgElement* image = document.add(name, "");
  document.add(names().osVersion, registration.osVersion, image);
  document.add(names().imageName, registration.imageName, image);
  document.add(names().size, std::to_string(registration.imageSize), image);
  document.add("checksum_md5", "9e107d9d372bb6826bd81d3542a419d6", image);
}

std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[sizeof "2000-01-01T00:00:00Z"];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

}  // namespace

std::string defaultGateway(bool left) {
  return left ? words().leftServerEndPoint : words().rightServerEndPoint;
}

std::string clientIdentity(std::uint32_t slot) {
  return std::string(kIdentityPrefix) + std::to_string(slot);
}

msglyr::Message makeRequest(std::string_view command, std::string_view messageId,
                            std::uint32_t slot, std::string_view document) {
  msglyr::Message message(kParts);
  message[0] = std::string(kService) + "." + std::string(command);
  message[1] = contentTypeAndVersion();
  message[2] = messageId;
  message[3] = clientIdentity(slot);
  message[4] = document;
  return message;
}

std::string registerDocument(const Registration& registration) {
  Document document("registerRequest");
  document.add(names().bladeSlotId, std::to_string(registration.slot));
  document.add(names().ip, registration.ip);
  document.add(names().port, std::to_string(registration.port));
  document.add(names().token, registration.token);
  document.add(names().authorizedPubKey, "");
  document.add(names().bladeCurrTime, utcNow());
  document.add(names().upTime, std::to_string(std::clock() / CLOCKS_PER_SEC));
  addImage(document, names().cachePlatformImage, registration);
  addImage(document, names().runningPlatformImage, registration);
  return document.text();
}

std::string heartbeatDocument(std::uint32_t count, std::uint32_t timer) {
  Document document("heartbeatRequest");
  document.add(names().count, std::to_string(count));
  document.add(names().timer, std::to_string(timer));
  return document.text();
}

msglyr::Message makeFaultyRequest(Fault fault, std::string_view messageId, std::uint32_t slot) {
  msglyr::Message message =
      makeRequest(words().heartbeatKey, messageId, slot, heartbeatDocument(1, 1));
  switch (fault) {
    case Fault::MalformedXml:
      message[4] = "<heartbeatRequest><count>1</timer></heartbeatRequest>\x01<";
      break;
    case Fault::TruncatedXml:
      message[4].resize(message[4].size() / 2);
      break;
    case Fault::OversizedXml:
      message[4] =
          "<heartbeatRequest><count>" + std::string(kOversize, '1') + "</count></heartbeatRequest>";
      break;
    case Fault::WrongPartCount:
      message.parts().pop_back();
      break;
    case Fault::WrongContentType:
      message[1] = words().contentType + ":2";
      break;
    case Fault::UnknownCommand:
      message[0] = std::string(kService) + ".selfDestruct";
      break;
    case Fault::ForeignSubject:
      message[0] = "someOtherService." + words().heartbeatKey;
      break;
    default:
      break;
  }
  return message;
}

bool parseReply(const msglyr::Message& message, Reply& reply) {
  if (message.getnumParts() != kParts) {
    return false;
  }
  const std::string& status = message[3];
  const auto [end, error] =
      std::from_chars(status.data(), status.data() + status.size(), reply.status);
  if (error != std::errc() || end != status.data() + status.size()) {
    return false;
  }
  reply.subject = message[0];
  reply.messageId = message[2];
  noxxml::XMLConverter converter;
  const noxxml::AgElement* root = converter.xmlDeserialize(message[4]);
  if (root == nullptr) {
    return true;
  }
  if (const auto* response = root->findChild("response"); response != nullptr) {
    if (const auto* text = response->findChild("message"); text != nullptr) {
      reply.message = text->text().str();
    }
  }
  if (const auto* token = root->findChild(names().token); token != nullptr) {
    reply.hasToken = true;
    reply.token = token->text().str();
  }
  if (const auto* key = root->findChild(names().zedPubKey); key != nullptr) {
    reply.zedPubKey = key->text().str();
  }
  return true;
}

bool makeRefusal(const msglyr::Message& command, msglyr::Message& reply) {
  if (command.getnumParts() != kParts) {
    return false;
  }
  Document document("errorResponse");
  noxxml::AgElement* response = document.add("response", "");
  document.add(names().code, "500", response);
  document.add("message", "Invalid command", response);
  reply = msglyr::Message(kParts);
  reply[0] = command[0];
  reply[1] = command[1];
  reply[2] = command[2];
  reply[3] = "500";
  reply[4] = document.text();
  return true;
}

}  // namespace sma
