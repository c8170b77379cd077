#pragma once

#include <string>

/// The five-part message that blades and the gateway exchange in both directions.
///
///     part  request of a blade              its reply                   command to a blade
///     0     serviceOrchAG.command[.action]  identity.command[.action]   sma_slotN.command[.action]
///     1     content type:version            as received                 content type:version
///     2     message id                      as received                 message id
///     3     identity of the blade           status code, decimal        serviceOrchAG
///     4     document                        document                    document
namespace zan_serviceOrchAG::envelope {

inline constexpr int kPartCount = 5;
inline constexpr unsigned kSubject = 0;
inline constexpr unsigned kContent = 1;
inline constexpr unsigned kMessageId = 2;
inline constexpr unsigned kIdentity = 3;  // of a request or a command
inline constexpr unsigned kStatus = 3;    // of a reply
inline constexpr unsigned kBody = 4;

/// How the gateway calls itself, in requests to it and in commands from it.
inline constexpr const char* kOwnIdentity = "serviceOrchAG";
/// A blade calls itself by this and its slot number.
inline constexpr const char* kSlotIdentity = "sma_slot";

/// The root element of a document is named by the command and one of these.
inline constexpr const char* kRequestSuffix = "Request";
inline constexpr const char* kResponseSuffix = "Response";
/// Elements of every reply document.
inline constexpr const char* kResponseElement = "response";
inline constexpr const char* kMessageElement = "message";

/// The only content type and version that is spoken, "nox-xml:1".
const std::string& contentTypeAndVersion();

}  // namespace zan_serviceOrchAG::envelope
