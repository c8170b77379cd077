#include "dme/store/Database.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "dme/store/DatabaseFile.h"

namespace dme {

namespace {

bool exists(const std::string& file) {
  return ::access(file.c_str(), F_OK) == 0;
}

// A log without its database would be replayed into a new one.
Result<void> ensureFile(const std::string& file) {
  if (exists(file)) {
    return inspectDatabaseFile(file, Database::kSchema);
  }
  if (exists(file + "-wal")) {
    return failure(file + " is missing but its log " + file +
                   "-wal is there: put the database back, or move the log away to start with an "
                   "empty one");
  }
  return createDatabaseFile(file, Database::kSchema);
}

Result<Connection> connect(const std::string& file) {
  // A file that was copied into place may have come with another mode.
  ::chmod(file.c_str(), 0600);
  Result<Connection> connection = Connection::open(file, SQLITE_OPEN_READWRITE);
  if (!connection) {
    return connection;
  }
  connection->setBusyTimeout(Database::kBusyWaitMs);
  // The empty transaction takes the exclusive lock now instead of at the first change.
  const Result<void> set = connection->execute(
      "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
      "PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON;"
      "BEGIN EXCLUSIVE; COMMIT;");
  if (!set) {
    return tl::unexpected<Error>(set.error());
  }
  return connection;
}

// The tables are those of schema 1. A higher number keeps programs away that do not know all the
// classes that may be in them.
Result<void> markSchema(Connection& connection) {
  const Result<std::int64_t> schema = connection.queryInteger("PRAGMA user_version");
  if (schema && *schema == Database::kSchema) {
    return {};
  }
  return connection.execute("PRAGMA user_version = " + std::to_string(Database::kSchema));
}

Cell cellOf(const Statement& row, int column) {
  if (row.isInteger(column)) {
    return row.integer(column);
  }
  if (row.isReal(column)) {
    return row.real(column);
  }
  return row.isNull(column) ? Cell() : Cell(std::string(row.text(column)));
}

void bindCell(Statement& statement, int parameter, const Cell& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    statement.bind(parameter, *integer);
  } else if (const auto* real = std::get_if<double>(&value)) {
    statement.bind(parameter, *real);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    statement.bind(parameter, std::string_view(*text));
  }
}

}  // namespace

Database::Database(StateLock lock, Connection connection, std::string file)
    : file_(std::move(file)), lock_(std::move(lock)), connection_(std::move(connection)) {}

Result<Database> Database::open(const std::string& stateDir) {
  const std::string file = stateDir + "/" + kFileName;
  if (const Result<void> prepared = prepareStateDirectory(stateDir); !prepared) {
    return tl::unexpected<Error>(prepared.error());
  }
  Result<StateLock> lock = StateLock::acquire(stateDir);
  if (!lock) {
    return tl::unexpected<Error>(lock.error());
  }
  if (const Result<void> ensured = ensureFile(file); !ensured) {
    return tl::unexpected<Error>(ensured.error());
  }
  Result<Connection> connection = connect(file);
  if (!connection) {
    const bool busy = (connection.error().code & 0xff) == SQLITE_BUSY;
    return failure(file + " cannot be opened (" + connection.error().text + "): " +
                       (busy ? "close the other program that has it open"
                             : "check the file and the file system that it is on"),
                   connection.error().code);
  }
  if (const Result<void> marked = markSchema(*connection); !marked) {
    return failure(file + " cannot be written to (" + marked.error().text +
                       "): free some space on its file system",
                   marked.error().code);
  }
  Database database(std::move(*lock), std::move(*connection), file);
  if (const Result<void> prepared = database.prepareStatements(); !prepared) {
    return failure(file + " lacks its tables (" + prepared.error().text +
                       "): restore a copy of it, or move it away to start with an empty database",
                   prepared.error().code);
  }
  return database;
}

Result<void> Database::prepareStatements() {
  const auto prepare = [this](std::optional<Statement>& statement, const char* sql) {
    Result<Statement> prepared = connection_.prepare(sql);
    if (!prepared) {
      return Result<void>(tl::unexpected<Error>(prepared.error()));
    }
    statement.emplace(std::move(*prepared));
    return Result<void>();
  };
  return prepare(begin_, "BEGIN IMMEDIATE")
      .and_then([&] { return prepare(commit_, "COMMIT"); })
      .and_then([&] {
        // "0" follows "/": what lies between is below the object. Its properties go along.
        return prepare(removeObjects_,
                       "DELETE FROM object WHERE dn = ?1 OR (dn > ?1 || '/' AND dn < ?1 || '0')");
      })
      .and_then([&] {
        return prepare(
            addObject_,
            "INSERT INTO object (dn, class) VALUES (?1, ?2) ON CONFLICT (dn) DO NOTHING");
      })
      .and_then([&] {
        return prepare(setProperty_,
                       "INSERT INTO property (dn, name, value) VALUES (?1, ?2, ?3) "
                       "ON CONFLICT (dn, name) DO UPDATE SET value = excluded.value");
      })
      .and_then([&] {
        return prepare(clearProperty_, "DELETE FROM property WHERE dn = ?1 AND name = ?2");
      });
}

Result<void> Database::load(const ObjectVisitor& object, const PropertyVisitor& property) {
  Result<Statement> objects = connection_.prepare("SELECT dn, class FROM object ORDER BY dn");
  Result<Statement> properties =
      connection_.prepare("SELECT dn, name, value FROM property ORDER BY dn, name");
  if (!objects || !properties) {
    return tl::unexpected<Error>((objects ? properties : objects).error());
  }
  Result<bool> row = objects->step();
  for (; row && *row; row = objects->step()) {
    object(objects->text(0), objects->text(1));
  }
  if (!row) {
    return tl::unexpected<Error>(row.error());
  }
  for (row = properties->step(); row && *row; row = properties->step()) {
    property(properties->text(0), properties->text(1), cellOf(*properties, 2));
  }
  if (!row) {
    return tl::unexpected<Error>(row.error());
  }
  return {};
}

Result<void> Database::apply(const std::string& dn, const ObjectChange& change) {
  Result<void> outcome;
  if (change.isRemoved) {
    removeObjects_->bind(1, std::string_view(dn));
    outcome = removeObjects_->run();
  }
  if (outcome && !change.className.empty()) {
    addObject_->bind(1, std::string_view(dn));
    addObject_->bind(2, std::string_view(change.className));
    outcome = addObject_->run();
  }
  for (auto next = change.values.begin(); outcome && next != change.values.end(); ++next) {
    outcome = setProperty(dn, next->first, next->second);
  }
  return outcome;
}

Result<void> Database::setProperty(const std::string& dn, const std::string& name,
                                   const Cell& value) {
  const bool clears = std::holds_alternative<std::monostate>(value);
  Statement& statement = clears ? *clearProperty_ : *setProperty_;
  statement.bind(1, std::string_view(dn));
  statement.bind(2, std::string_view(name));
  bindCell(statement, 3, value);
  return statement.run();
}

Result<void> Database::write(const ChangeSet& changes) {
  // Looked at again afterwards: it may have gone meanwhile.
  return ensureInPlace().and_then([&] { return transact(changes); }).and_then([this] {
    return ensureInPlace();
  });
}

Result<void> Database::ensureInPlace() {
  int hasMoved = 0;
  sqlite3_file_control(connection_.handle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  const char* const suffix = hasMoved != 0 ? "" : "-wal";
  if (hasMoved != 0 || !exists(file_ + suffix)) {
    return failure(file_ + suffix +
                   " was deleted, moved or replaced while it is in use: put it back as it was; if "
                   "it is lost, restore a copy of the state directory and start again");
  }
  return {};
}

Result<void> Database::transact(const ChangeSet& changes) {
  Result<void> outcome = begin_->run();
  for (auto next = changes.objects().begin(); outcome && next != changes.objects().end(); ++next) {
    outcome = apply(next->first, next->second);
  }
  if (outcome) {
    outcome = commit_->run();
  }
  // Some failures have ended the transaction already; this one then fails without effect.
  if (!outcome && sqlite3_get_autocommit(connection_.handle()) == 0) {
    connection_.execute("ROLLBACK");
  }
  return outcome;
}

Result<void> Database::checkpoint() {
  return connection_.execute("PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace dme
