#pragma once

#include <cstdint>
#include <string>

#include "dme/base/Result.h"

namespace dme {

/// The checks and the creation that come before the database file is opened for writing.
/// None of them changes a file that is there.

/// Makes the directory, readable by its owner only, unless it is there. Fails when it cannot be
/// made, is no directory or cannot be written to by this process.
Result<void> prepareStateDirectory(const std::string& directory);

/// Creates the database with its tables under another name and gives it its own when it is
/// complete, so that no process, however it ends, leaves half a database. Call under the
/// directory's lock.
Result<void> createDatabaseFile(const std::string& file, std::int64_t schema);

/// Reads the whole file and says whether this program may write to it. Changes neither the file
/// nor its write-ahead log and creates nothing beside them. Blocks on the disk.
Result<void> inspectDatabaseFile(const std::string& file, std::int64_t knownSchema);

}  // namespace dme
