#pragma once

#include "framework/base/Buffer.h"

namespace proc {

/// Fills `cookie` with sixteen bytes that no other call of this process, of an earlier run of it or
/// of another process got. Thread-safe. Throws std::system_error when the system gives no random
/// numbers.
void makeCookie(base::Buffer& cookie);

}  // namespace proc
