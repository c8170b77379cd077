#pragma once

#include <cstdint>
#include <string>

namespace zan_serviceOrchAG {

/// The answer to one blade request on its way from a handler to the worker that sends it.
struct Response {
  std::string body;          ///< the serialised reply document
  std::uint32_t status = 0;  ///< status code of the reply
};

}  // namespace zan_serviceOrchAG
