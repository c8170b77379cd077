#pragma once

#include <iosfwd>
#include <string>

namespace supervisor {

/// Prints the objects of a state directory as JSON: the object `dn` and those below it, the whole
/// tree for the empty name. A running supervisor is asked; without one the directory is read and
/// left exactly as it is.
///
/// Returns the exit code; when it is not kExitOk, nothing was printed on `out` and one line on
/// `err` says why. Blocks on the disk, and a few seconds on a supervisor that is just starting.
int dumpModel(const std::string& stateDir, const std::string& dn, std::ostream& out,
              std::ostream& err);

}  // namespace supervisor
