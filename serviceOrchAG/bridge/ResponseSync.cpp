#include "serviceOrchAG/bridge/ResponseSync.h"

#include "framework/mo/Mo.h"
#include "framework/noxxml/AgFactory.h"

namespace zan_serviceOrchAG {

ResponseSync::ResponseSync(Response* answered)
    : response(answered), factory(std::make_unique<noxxml::AgFactory>()) {}

ResponseSync::~ResponseSync() {
  if (config != nullptr) {
    mo::Mo::deleteObjectByConfig(config, 0);
  }
}

}  // namespace zan_serviceOrchAG
