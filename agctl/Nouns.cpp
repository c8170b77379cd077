#include <array>

#include "agctl/Verb.h"

namespace agctl {

std::span<const Noun> nouns() {
  static const std::array kNouns{
      Noun{"chassis", "the chassis itself", chassisVerbs()},
      Noun{"slot", "slots of the chassis and the blades in them", slotVerbs()},
      Noun{"app", "application instances", appVerbs()},
      Noun{"job", "what was ordered, and how far it has come", jobVerbs()},
      Noun{"timezone", "the time zone of the chassis' blades", timeZoneVerbs()},
      Noun{"fault", "faults that the supervisor plays, for tests", faultVerbs()},
      Noun{"completion", "completion of these command lines by a shell", completionVerbs()}};
  return kNouns;
}

}  // namespace agctl
