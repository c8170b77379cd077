#include "dme/store/DatabaseFile.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "dme/store/Sqlite.h"

namespace dme {

namespace {

// Marks a file as ours, in SQLite's header field for it: "ZDME".
constexpr std::int64_t kApplicationId = 0x5A444D45;

constexpr const char* kTables = R"sql(
  CREATE TABLE object (
    dn TEXT NOT NULL PRIMARY KEY,
    class TEXT NOT NULL
  ) STRICT, WITHOUT ROWID;
  CREATE TABLE property (
    dn TEXT NOT NULL REFERENCES object (dn) ON DELETE CASCADE,
    name TEXT NOT NULL,
    value ANY NOT NULL,
    PRIMARY KEY (dn, name)
  ) STRICT, WITHOUT ROWID;
)sql";

tl::unexpected<Error> refuse(const std::string& file, const std::string& cause,
                             const std::string& remedy, int code = 0) {
  return failure(file + " " + cause + ": " + remedy, code);
}

tl::unexpected<Error> damaged(const std::string& file, const std::string& finding, int code = 0) {
  return refuse(file, "is damaged (" + finding + ") and was left as it is",
                "restore a copy of it, or move it away to start with an empty database", code);
}

// A failed look into the file: damage where SQLite says so, else whatever kept it from reading.
tl::unexpected<Error> unreadable(const std::string& file, const Error& error) {
  const int primary = error.code & 0xff;
  if (primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB) {
    return damaged(file, error.text, error.code);
  }
  if (primary == SQLITE_BUSY) {
    return refuse(file, "is in use by another program (" + error.text + ")",
                  "close that program and start again", error.code);
  }
  return refuse(file, "cannot be read (" + error.text + ")",
                "give it and its directory to the user that runs this program", error.code);
}

off_t sizeOf(const std::string& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 ? status.st_size : -1;
}

// A file: URI may not contain these characters as they are.
std::string uriOf(const std::string& file) {
  std::string uri = "file:";
  for (const char character : file) {
    if (character == '%' || character == '?' || character == '#') {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(character));
      uri += escaped;
    } else {
      uri += character;
    }
  }
  return uri;
}

// Opens the file so that looking at it leaves no trace. A log that an earlier process left has to
// be read with it: the exclusive mode keeps SQLite's index of the log in memory, which takes a
// lock that only a connection with the right to write can get. Without a log, "immutable" keeps
// SQLite from creating an empty one.
Result<Connection> openWithoutTrace(const std::string& file) {
  const bool hasLog = sizeOf(file + "-wal") > 0;
  Result<Connection> connection = hasLog ? Connection::open(file, SQLITE_OPEN_READWRITE)
                                         : Connection::open(uriOf(file) + "?mode=ro&immutable=1",
                                                            SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  if (!connection) {
    return connection;
  }
  connection->keepLogOnClose();
  const Result<void> exclusive =
      connection->execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA query_only = ON");
  if (!exclusive) {
    return tl::unexpected<Error>(exclusive.error());
  }
  return connection;
}

Result<void> fillNewDatabase(const std::string& file, std::int64_t schema) {
  Result<Connection> connection =
      Connection::open(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  if (!connection) {
    return tl::unexpected<Error>(connection.error());
  }
  return connection->execute("PRAGMA synchronous = FULL; PRAGMA journal_mode = WAL; BEGIN;" +
                             std::string(kTables) +
                             "PRAGMA application_id = " + std::to_string(kApplicationId) +
                             "; PRAGMA user_version = " + std::to_string(schema) +
                             "; COMMIT; PRAGMA wal_checkpoint(TRUNCATE);");
}

// The entry of a renamed file is durable when its directory is.
bool syncPath(const std::string& path, int flags) {
  const int descriptor = ::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return false;
  }
  const bool synced = ::fsync(descriptor) == 0;
  ::close(descriptor);
  return synced;
}

}  // namespace

Result<void> prepareStateDirectory(const std::string& directory) {
  if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
    return refuse(directory, "cannot be created (" + lastSystemError() + ")",
                  "create it and give it to the user that runs this program");
  }
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return refuse(directory, "is not a directory", "configure a directory for the engine's state");
  }
  if (::faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    return refuse(directory, "is not writable (" + lastSystemError() + ")",
                  "give it to the user that runs this program");
  }
  return {};
}

Result<void> createDatabaseFile(const std::string& file, std::int64_t schema) {
  const std::string draft = file + ".new";
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    ::unlink((draft + suffix).c_str());  // what a process that died in here has left
  }
  // SQLite would create the file readable by everybody; its log gets the mode of the file.
  const int descriptor =
      ::open(draft.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) {
    return refuse(file, "cannot be created (" + lastSystemError() + ")",
                  "give its directory to the user that runs this program");
  }
  ::close(descriptor);
  if (const Result<void> filled = fillNewDatabase(draft, schema); !filled) {
    ::unlink(draft.c_str());
    return refuse(file, "cannot be created (" + filled.error().text + ")",
                  "free some space on its file system", filled.error().code);
  }
  const std::string directory = file.substr(0, file.rfind('/'));
  if (!syncPath(draft, 0) || ::rename(draft.c_str(), file.c_str()) != 0 ||
      !syncPath(directory, O_DIRECTORY)) {
    return refuse(file, "cannot be created (" + lastSystemError() + ")",
                  "check the file system that it is on");
  }
  return {};
}

Result<void> inspectDatabaseFile(const std::string& file, std::int64_t knownSchema) {
  if (::faccessat(AT_FDCWD, file.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
    return refuse(file, "is not writable (" + lastSystemError() + ")",
                  "give it to the user that runs this program");
  }
  if (sizeOf(file) == 0) {
    return damaged(file, "it is empty");
  }
  Result<Connection> connection = openWithoutTrace(file);
  if (!connection) {
    return unreadable(file, connection.error());
  }
  const Result<std::int64_t> application = connection->queryInteger("PRAGMA application_id");
  const Result<std::int64_t> schema = connection->queryInteger("PRAGMA user_version");
  if (!application || !schema) {
    return unreadable(file, (application ? schema : application).error());
  }
  if (*application != kApplicationId) {
    return refuse(file, "is a database of another program",
                  "move it away, or configure another state directory");
  }
  if (*schema > knownSchema) {
    return refuse(file,
                  "was written by a newer version (schema " + std::to_string(*schema) +
                      ", this program knows " + std::to_string(knownSchema) + ")",
                  "install that version, or move the file away to start with an empty database");
  }
  // With a log the rest may be there: a power cut can come while the log is moved into the file.
  const Result<std::int64_t> page = connection->queryInteger("PRAGMA page_size");
  if (page && *page > 0 && sizeOf(file) % *page != 0 && sizeOf(file + "-wal") <= 0) {
    return damaged(file, "it ends within a page");
  }
  const Result<std::string> verdict = connection->queryText("PRAGMA quick_check(1)");
  if (!verdict) {
    return unreadable(file, verdict.error());
  }
  if (*verdict != "ok") {
    return damaged(file, verdict->substr(verdict->rfind('\n') + 1));
  }
  return {};
}

}  // namespace dme
