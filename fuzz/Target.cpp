#include "fuzz/Target.h"

#include <algorithm>
#include <array>

namespace fuzz {

std::span<const Target> targets() {
  static constexpr std::array kTargets{
      Target{"adminBody", &runAdminBody},
      Target{"answer", &runAnswer},
      Target{"appFailure", &runAppFailure},
      Target{"commandProgress", &runCommandProgress},
      Target{"config", &runConfig},
      Target{"engine", &runEngine},
      Target{"heartbeat", &runHeartbeat},
      Target{"inbound", &runInbound},
      Target{"platformInfo", &runPlatformInfo},
      Target{"register", &runRegister},
      Target{"request", &runRequest},
      Target{"stimulus", &runStimulus},
      Target{"xml", &runXml},
  };
  return kTargets;
}

const Target* findTarget(std::string_view name) {
  const auto all = targets();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [name](const Target& each) { return each.name == name; });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace fuzz
