#include "serviceOrchAG/bridge/ResponseSync.h"

#include "framework/noxxml/AgFactory.h"

namespace zan_serviceOrchAG {

ResponseSync::ResponseSync(Response* answered)
    : response(answered), factory(std::make_unique<noxxml::AgFactory>()) {}

ResponseSync::~ResponseSync() = default;

}  // namespace zan_serviceOrchAG
