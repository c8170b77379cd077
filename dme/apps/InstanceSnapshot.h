#pragma once

#include "dme/chassis/Chassis.h"
#include "dme/store/ObjectStore.h"
#include "framework/method/Config.h"

namespace dme {

/// An application instance as a command to its blade is made of it: with everything that belongs
/// to it, its chassis and its blade, and its slot's number set.
method::Config instanceSnapshot(ObjectStore& store, const Chassis& chassis, const Object& instance);

/// The first attached configuration of the class, or null.
const method::Config* childOf(const method::Config& config, std::uint32_t classId);

}  // namespace dme
