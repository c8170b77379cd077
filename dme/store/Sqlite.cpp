#include "dme/store/Sqlite.h"

#include <sqlite3.h>

namespace dme {

namespace {

tl::unexpected<Error> lastFailure(sqlite3* handle) {
  return failure(sqlite3_errmsg(handle), sqlite3_extended_errcode(handle));
}

}  // namespace

void Statement::Finalize::operator()(sqlite3_stmt* handle) const {
  sqlite3_finalize(handle);
}

void Statement::bind(int parameter, std::int64_t value) {
  sqlite3_bind_int64(handle_.get(), parameter, value);
}

void Statement::bind(int parameter, double value) {
  sqlite3_bind_double(handle_.get(), parameter, value);
}

void Statement::bind(int parameter, std::string_view value) {
  // A null pointer would bind NULL: an empty view still means an empty text.
  const char* bytes = value.data() != nullptr ? value.data() : "";
  sqlite3_bind_text64(handle_.get(), parameter, bytes, value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

Result<bool> Statement::step() {
  switch (sqlite3_step(handle_.get())) {
    case SQLITE_ROW:
      return true;
    case SQLITE_DONE:
      return false;
    default:
      return lastFailure(sqlite3_db_handle(handle_.get()));
  }
}

Result<void> Statement::run() {
  const Result<bool> stepped = step();
  reset();
  if (!stepped) {
    return tl::unexpected<Error>(stepped.error());
  }
  return {};
}

void Statement::reset() {
  sqlite3_reset(handle_.get());
  sqlite3_clear_bindings(handle_.get());
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

bool Statement::isInteger(int column) const {
  return sqlite3_column_type(handle_.get(), column) == SQLITE_INTEGER;
}

bool Statement::isReal(int column) const {
  return sqlite3_column_type(handle_.get(), column) == SQLITE_FLOAT;
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(handle_.get(), column);
}

double Statement::real(int column) const {
  return sqlite3_column_double(handle_.get(), column);
}

std::string_view Statement::text(int column) const {
  const unsigned char* bytes = sqlite3_column_text(handle_.get(), column);
  if (bytes == nullptr) {
    return {};
  }
  const int size = sqlite3_column_bytes(handle_.get(), column);
  return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

void Connection::Close::operator()(sqlite3* handle) const {
  sqlite3_close_v2(handle);
}

Result<Connection> Connection::open(const std::string& uri, int flags) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(uri.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  Connection connection(handle);
  if (code != SQLITE_OK) {
    // Without memory for a handle there is no text to ask it for.
    return handle != nullptr ? Result<Connection>(lastFailure(handle))
                             : Result<Connection>(failure(sqlite3_errstr(code), code));
  }
  sqlite3_extended_result_codes(handle, 1);
  return connection;
}

Result<Statement> Connection::prepare(std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(handle_.get(), sql.data(), static_cast<int>(sql.size()),
                                      &statement, nullptr);
  if (code != SQLITE_OK) {
    return lastFailure(handle_.get());
  }
  return Statement(statement);
}

Result<void> Connection::execute(const std::string& sql) {
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    return lastFailure(handle_.get());
  }
  return {};
}

Result<Statement> Connection::firstRow(std::string_view sql) {
  Result<Statement> statement = prepare(sql);
  if (!statement) {
    return statement;
  }
  const Result<bool> row = statement->step();
  if (!row) {
    return tl::unexpected<Error>(row.error());
  }
  if (!*row) {
    return failure("no row");
  }
  return statement;
}

Result<std::string> Connection::queryText(std::string_view sql) {
  return firstRow(sql).map([](const Statement& row) { return std::string(row.text(0)); });
}

Result<std::int64_t> Connection::queryInteger(std::string_view sql) {
  return firstRow(sql).map([](const Statement& row) { return row.integer(0); });
}

void Connection::setBusyTimeout(int milliseconds) {
  sqlite3_busy_timeout(handle_.get(), milliseconds);
}

void Connection::keepLogOnClose() {
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

}  // namespace dme
