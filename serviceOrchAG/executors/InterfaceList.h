#pragma once

#include "framework/base/String.h"
#include "framework/noxxml/XMLConverter.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "model/sd/LduMo.h"
#include "model/sm/AppMo.h"

namespace zan_serviceOrchAG {

/// Adds to `list` an "interface" for each link of the device of this type. Without a device the
/// type does not count, and the interface to the chassis' own management is added if the
/// application has one. A value that is not set is left out and told in the log. `listName` is the
/// list's name there.
void getInterfaceList(const base::String& listName, const sm::AppMo& app,
                      const sd::AppInstanceMo& instance, const sd::LduMo* ldu,
                      noxxml::XMLConverter& converter, noxxml::AgElement* list,
                      sd::LinkInterfaceType type);

}  // namespace zan_serviceOrchAG
