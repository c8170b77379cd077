#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "framework/msglyr/Message.h"
#include "sma/base/Element.h"

namespace sma {

/// The gateway's server end point on this machine: the left supervisor's or the right one's.
std::string defaultGateway(bool left);

/// The gateway's name in the subjects of requests.
inline constexpr std::string_view kServiceName = "serviceOrchAG";

/// The text by which a blade names itself: "sma_slot" and the slot number.
std::string clientIdentity(std::uint32_t slot);

/// A five-part request: subject, content type and version, message id, client identity, document.
/// `command` is the subject's part after the service's name, with its action if it has one.
msglyr::Message makeRequest(std::string_view command, std::string_view messageId,
                            std::uint32_t slot, std::string_view document);
msglyr::Message makeRequest(std::string_view command, std::string_view messageId,
                            std::uint32_t slot, const Element& document);

/// What a blade says of itself when it registers.
struct Registration {
  std::uint32_t slot = 0;
  std::string ip;
  std::uint32_t port = 0;  ///< where its own command channel listens
  std::string token;
  std::string osVersion;
  std::string imageName;
  std::uint64_t imageSize = 0;  ///< bytes
};

Element registerDocument(const Registration& registration);
/// `timer` is the blade's beat interval in seconds.
Element heartbeatDocument(std::uint32_t count, std::uint32_t timer);

/// What a reply says.
struct Reply {
  unsigned status = 0;    ///< part 3
  std::string messageId;  ///< part 2
  std::string subject;    ///< part 0
  std::string message;    ///< text of the document's "message"
  bool hasToken = false;  ///< the document has a "token"
  std::string token;
  std::string zedPubKey;
};

/// Reads a reply. False when it has not five parts or its status is no number; a document that
/// cannot be read leaves the texts empty.
bool parseReply(const msglyr::Message& message, Reply& reply);

}  // namespace sma
