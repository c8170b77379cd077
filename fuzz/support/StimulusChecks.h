#pragma once

#include <cstddef>

#include "fuzz/support/Manner.h"

namespace fuzz {

/// Fails unless the bytes are a call of a method of the model, whole, that encodes to these bytes
/// again.
void checkCall(const unsigned char* bytes, std::size_t size);

/// Reads the bytes as everything that a stimulus can be: a header, a call of each method of the
/// model, an answer to each. Fails when what was read encodes to other bytes.
void checkStimulus(Input bytes);

/// Reads the bytes as a configuration and as a set of them. Fails as above, and when the object
/// that the configuration describes is encoded as another one.
void checkConfigs(Input bytes);

}  // namespace fuzz
