#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "dme/base/Result.h"
#include "dme/store/ChangeSet.h"
#include "dme/store/Sqlite.h"
#include "dme/store/StateLock.h"

namespace dme {

/// The engine's durable memory: the objects of the tree and their properties, in one SQLite file.
///
/// The file has exactly one connection in the whole system, this one: the state directory is
/// locked, and the connection keeps SQLite's exclusive lock as long as it lives. What write() has
/// reported as written survives the end of the process and of the machine.
///
/// Move-only; one thread at a time.
class Database {
 public:
  static constexpr const char* kFileName = "engine.db";
  static constexpr std::int64_t kSchema = 3;

  /// Opens the database in `stateDir`, making the directory and the file where they are missing.
  ///
  /// Fails, with a line for the operator, when the directory cannot be used, another process
  /// uses it, or the file is damaged, not ours or of a newer version. A file that is refused
  /// is left exactly as it was, and so are its neighbours. Blocks on the disk, and up to
  /// kBusyWaitMs on a program that has the file open.
  static Result<Database> open(const std::string& stateDir);
  static constexpr int kBusyWaitMs = 2000;

  /// Called for each object before its properties, parents before children.
  using ObjectVisitor = std::function<void(std::string_view dn, std::string_view className)>;
  using PropertyVisitor =
      std::function<void(std::string_view dn, std::string_view property, const Cell& value)>;
  Result<void> load(const ObjectVisitor& object, const PropertyVisitor& property);

  /// Makes all changes durable, or none of them. Fails, too, while the file or its log is not in
  /// its place: the next start would not find what is written to it. Blocks on the disk.
  Result<void> write(const ChangeSet& changes);

  /// Moves the write-ahead log into the file, so that the next start has nothing to replay.
  Result<void> checkpoint();

  const std::string& file() const { return file_; }
  Connection& connection() { return connection_; }

 private:
  Database(StateLock lock, Connection connection, std::string file);
  Result<void> prepareStatements();
  Result<void> transact(const ChangeSet& changes);
  /// Whether the names of the file and its log still lead to what the connection has open.
  Result<void> ensureInPlace();
  Result<void> apply(const std::string& dn, const ObjectChange& change);
  Result<void> setProperty(const std::string& dn, const std::string& name, const Cell& value);

  std::string file_;
  StateLock lock_;
  Connection connection_;  // before the statements: they go first
  std::optional<Statement> begin_;
  std::optional<Statement> commit_;
  std::optional<Statement> removeObjects_;
  std::optional<Statement> addObject_;
  std::optional<Statement> setProperty_;
  std::optional<Statement> clearProperty_;
};

}  // namespace dme
