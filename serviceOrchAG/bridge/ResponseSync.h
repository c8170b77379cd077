#pragma once

#include <memory>
#include <string>

#include "framework/base/Buffer.h"
#include "framework/os/CriticalSection.h"
#include "framework/os/WaitableEvent.h"

namespace mo {
class Mo;
}
namespace noxxml {
class AgFactory;
}

namespace zan_serviceOrchAG {

struct Response;

/// Where a request handler waits for the management engine's answer to one method call.
///
/// It lives on the handler's stack and is filed under the call's cookie in MsgHandlerBase. The
/// callback of the answer finds it there, writes the results under `lock`, sets `event` and
/// releases `lock`. The handler reads the results only when the wait on `event` has succeeded, and
/// withdraws the cookie before the object goes; it is then destroyed with `lock` held.
class ResponseSync {
 public:
  /// `response` is the answer to the blade's request, borrowed and never freed here.
  explicit ResponseSync(Response* response);
  ~ResponseSync();
  ResponseSync(const ResponseSync&) = delete;
  ResponseSync& operator=(const ResponseSync&) = delete;

  Response* response;
  base::Buffer cookie;
  os::WaitableEvent event;
  os::CriticalSection lock;
  mo::Mo* config = nullptr;  ///< an object that the handler may attach; freed with this one

  // Results, guarded by lock.
  bool result = false;         ///< the call succeeded; for a blade validation: the blade is valid
  bool shouldRetry = false;    ///< blade validation: the blade should register again
  std::string token;           ///< blade validation: the token that the engine holds
  std::string imagePath;       ///< platform image: its URL
  unsigned int imageSize = 0;  ///< platform image: size in bytes
  std::string checksum;        ///< platform image

  std::unique_ptr<noxxml::AgFactory> factory;  ///< for the handler's reply
  std::string text;
};

}  // namespace zan_serviceOrchAG
