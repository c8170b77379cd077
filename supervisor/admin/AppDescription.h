#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "dme/store/ObjectView.h"
#include "framework/mo/Mo.h"
#include "supervisor/admin/Json.h"

// An application instance as people describe it: its identifier, its slot and its parts, such as
// package, resources and links. Parts are objects of the model below the instance; which stand
// where is one table, and the members of a part are its class's properties.

namespace supervisor::admin {

struct AppDescription {
  std::uint32_t slot = 0;
  std::unique_ptr<mo::Mo> instance;  ///< without a name, with its parts attached
};

/// The instance that a body describes, what it leaves out as a plain application has it. Throws a
/// ProblemError that names the first value that is unknown or of another kind, by its path.
AppDescription readApp(const Json& body);

/// The other way round: the description of the instance `dn`, given with what stands below it as
/// Engine::model() gives it.
Json describeApp(std::uint32_t slot, const std::string& dn,
                 const std::vector<dme::ObjectView>& objects);

}  // namespace supervisor::admin
