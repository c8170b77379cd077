#pragma once

namespace agctl {

/// The script completion.bash, which makes bash ask this program what can come next.
extern const char* const kBashCompletion;

}  // namespace agctl
