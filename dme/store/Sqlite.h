#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "dme/base/Result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace dme {

/// A prepared statement. Move-only; must go before its connection. One thread at a time.
///
/// Parameters count from 1 and columns from 0, as in SQLite itself.
class Statement {
 public:
  explicit Statement(sqlite3_stmt* handle) : handle_(handle) {}

  void bind(int parameter, std::int64_t value);
  void bind(int parameter, double value);
  /// The text is copied.
  void bind(int parameter, std::string_view value);

  /// True for a row, false at the end.
  Result<bool> step();
  /// Runs a statement that yields no rows and makes it ready for the next values.
  Result<void> run();
  /// Ready for the next execution, without values.
  void reset();

  bool isNull(int column) const;
  bool isInteger(int column) const;
  bool isReal(int column) const;
  std::int64_t integer(int column) const;
  double real(int column) const;
  /// Valid until the next step() or reset().
  std::string_view text(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* handle) const;
  };
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

/// A connection to a database file. Move-only. One thread at a time.
class Connection {
 public:
  /// `uri` is a file name or, with SQLITE_OPEN_URI in `flags`, a file: URI.
  static Result<Connection> open(const std::string& uri, int flags);

  Result<Statement> prepare(std::string_view sql);
  /// Runs statements whose rows, if any, do not matter.
  Result<void> execute(const std::string& sql);
  /// The first column of the first row; fails when there is no row.
  Result<std::int64_t> queryInteger(std::string_view sql);
  Result<std::string> queryText(std::string_view sql);

  /// How long an operation waits for another process's lock before it fails.
  void setBusyTimeout(int milliseconds);
  /// Closing leaves the write-ahead log as it is.
  void keepLogOnClose();
  sqlite3* handle() { return handle_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };
  explicit Connection(sqlite3* handle) : handle_(handle) {}

  /// Fails when there is no row.
  Result<Statement> firstRow(std::string_view sql);

  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace dme
