#pragma once

#include <optional>
#include <string>
#include <vector>

#include "dme/base/Result.h"
#include "dme/store/ObjectView.h"
#include "framework/mo/Dn.h"

namespace dme {

/// Reads the object tree of a state directory that no process uses, however the last one ended:
/// the object `dn` and those below it in the order of their names' bytes, the whole tree for the
/// empty name, nothing for an unknown one.
///
/// The directory stays as it is to the last byte, time stamp and entry: database and log are
/// copied to a directory of this process's own, readable by its user only and gone on return, and
/// the log is replayed there.
///
/// Nothing (std::nullopt) when a process uses the directory: that one has to be asked. Fails, with
/// one line for the operator, when there is no database, when it cannot be read, or as
/// Database::open does. Blocks on the disk; keeps a process that starts on this directory waiting
/// while it copies.
Result<std::optional<std::vector<ObjectView>>> readStoppedModel(const std::string& stateDir,
                                                                const mo::Dn& dn);

}  // namespace dme
