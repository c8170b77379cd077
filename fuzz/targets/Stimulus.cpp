#include "fuzz/Target.h"
#include "fuzz/support/StimulusChecks.h"

// The bytes of a stimulus: header, calls and answers.

namespace fuzz {

void runStimulus(Input input) {
  checkStimulus(input);
}

}  // namespace fuzz
