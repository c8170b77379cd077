#pragma once

#include <string>
#include <vector>

#include "supervisor/admin/Json.h"

namespace supervisor::admin {

/// What stands below the slot `dn` in the model, given as Engine::model() gives it:
///
///   monitor     what the blade reports of itself, with its "disks"; null before its first report
///   instances   application instances, "believed" by the engine or "reported" by the blade, each
///               as describeInstance()
///   operations  those of the slot itself
///
/// Each object is its "dn" and its set properties.
Json describeBelowSlot(const std::string& dn, const std::vector<dme::ObjectView>& objects);

/// The application instance `dn` with its "faults" and "operations"; null when it is not among the
/// objects.
Json describeInstance(const std::string& dn, const std::vector<dme::ObjectView>& objects);

}  // namespace supervisor::admin
