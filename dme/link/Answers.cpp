#include "dme/link/Answers.h"

namespace dme {

void Answers::fail(const MethodCall& call, std::uint32_t code, const base::String& reason) const {
  if (call.header.isResponseRequired()) {
    send_(call.peer, method::encodeFailure(call.header, {proc::kFrameworkBits, code, reason}),
          true);
  }
}

}  // namespace dme
