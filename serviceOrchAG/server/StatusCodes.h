#pragma once

namespace zan_serviceOrchAG {

/// Status codes of replies and of exchanges with a blade. 100 to 514 travel on the wire; 576 to
/// 581 are the gateway's own, for an exchange that failed on this side.
namespace status {
inline constexpr unsigned kSuccess = 100;
inline constexpr unsigned kInvalidCommand = 500;
inline constexpr unsigned kInvalidContentType = 501;
inline constexpr unsigned kParsingError = 503;
inline constexpr unsigned kWrongParameterValue = 505;
inline constexpr unsigned kTimeOut = 506;
inline constexpr unsigned kOperationFailed = 508;
inline constexpr unsigned kUnknownError = 509;
inline constexpr unsigned kNotRegistered = 510;
inline constexpr unsigned kNotRecognized = 511;
inline constexpr unsigned kNoChannel = 576;
inline constexpr unsigned kExchangeFailed = 577;
inline constexpr unsigned kNoAnswer = 578;
inline constexpr unsigned kIncompleteAnswer = 579;
inline constexpr unsigned kNoClient = 580;
inline constexpr unsigned kBladeNotValid = 581;
}  // namespace status

/// The job status value that the management engine uses for a status code: 1 to 18 for the codes
/// that travel on the wire, 0 for every other number.
unsigned getSdJobStatusCode(unsigned code);

/// The fixed text of a status code, "Unknown status code" for a number that is none. Agents and
/// operators match these texts, so they stay as they are. Never null, lives as long as the process.
const char* getStatusCodeText(unsigned code);

}  // namespace zan_serviceOrchAG
