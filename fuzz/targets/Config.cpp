#include "fuzz/Target.h"
#include "fuzz/support/StimulusChecks.h"

// The bytes of a configuration, and of a set of them, as arguments of methods carry them.

namespace fuzz {

void runConfig(Input input) {
  checkConfigs(input);
}

}  // namespace fuzz
