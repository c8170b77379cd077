#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/msglyr/Message.h"
#include "sma/base/Element.h"
#include "sma/platform/Platform.h"

namespace sma {

/// The conforming request that an odd one departs from.
enum class BaseRequest { Heartbeat, Platform, AppFailure, Progress };

/// A request open to change, before it is put into parts.
struct Draft {
  std::string service;
  std::string command;
  std::string contentType;  ///< with its version
  Element document;
  std::optional<std::string> bytes;  ///< instead of the document
  unsigned parts = 5;
};

/// A request that is wrong, or at the edge of what is right, on purpose.
struct OddRequest {
  std::string_view name;  ///< by which scenarios name it, e.g. "platform-two-cpu"
  BaseRequest base = BaseRequest::Heartbeat;
  std::function<void(Draft&)> change;
};

/// All of them, in the order in which they are listed to people.
const std::vector<OddRequest>& oddRequests();
/// Null when there is none of that name.
const OddRequest* oddRequestByName(std::string_view name);

/// What a blade sends that has nothing odd. It has one application instance at least.
Draft conformingDraft(BaseRequest base, const BladePlatform& platform,
                      BladePlatform::Duration time);
msglyr::Message makeOddRequest(const OddRequest& odd, const BladePlatform& platform,
                               BladePlatform::Duration time, std::string_view messageId);

}  // namespace sma
