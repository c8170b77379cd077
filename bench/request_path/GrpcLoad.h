#pragma once

#include "bench/load/Load.h"

namespace request_path {

/// A closed loop of gRPC calls, with one payload of a heartbeat's size.
load::Result loadGrpc(const load::Plan& plan);

}  // namespace request_path
