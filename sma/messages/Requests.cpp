#include "sma/messages/Requests.h"

#include <charconv>
#include <ctime>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/svc/Vocabulary.h"

namespace sma {
namespace {

using zan_serviceOrchAG::names;
using zan_serviceOrchAG::words;

constexpr std::string_view kIdentityPrefix = "sma_slot";
constexpr unsigned kParts = 5;

std::string contentTypeAndVersion() {
  return words().contentType + ":" + words().contentVersion;
}

void addImage(Element& document, std::string_view name, const Registration& registration) {
  Element& image = document.add(name);
  image.add(names().osVersion.view(), registration.osVersion);
  image.add(names().imageName.view(), registration.imageName);
  image.add(names().size.view(), std::to_string(registration.imageSize));
  image.add("checksum_md5", "9e107d9d372bb6826bd81d3542a419d6");
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
  message[0] = std::string(kServiceName) + "." + std::string(command);
  message[1] = contentTypeAndVersion();
  message[2] = messageId;
  message[3] = clientIdentity(slot);
  message[4] = document;
  return message;
}

msglyr::Message makeRequest(std::string_view command, std::string_view messageId,
                            std::uint32_t slot, const Element& document) {
  return makeRequest(command, messageId, slot, toXml(document));
}

Element registerDocument(const Registration& registration) {
  Element document{"registerRequest", "", {}};
  document.add(names().bladeSlotId.view(), std::to_string(registration.slot));
  document.add(names().ip.view(), registration.ip);
  document.add(names().port.view(), std::to_string(registration.port));
  document.add(names().token.view(), registration.token);
  document.add(names().authorizedPubKey.view());
  document.add(names().bladeCurrTime.view(), utcNow());
  document.add(names().upTime.view(), std::to_string(std::clock() / CLOCKS_PER_SEC));
  addImage(document, names().cachePlatformImage.view(), registration);
  addImage(document, names().runningPlatformImage.view(), registration);
  return document;
}

Element heartbeatDocument(std::uint32_t count, std::uint32_t timer) {
  Element document{"heartbeatRequest", "", {}};
  document.add(names().count.view(), std::to_string(count));
  document.add(names().timer.view(), std::to_string(timer));
  return document;
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

}  // namespace sma
