#include "Platform/ObjectStore/SQLiteDatabase.h"

#include <sqlite3.h>

#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

SQLiteStatement::~SQLiteStatement() {
  if (owned_) sqlite3_finalize(statement_);
}

void SQLiteStatement::bind(int index, const Value& value) {
  int result = SQLITE_OK;
  if (value.isNil()) {
    result = sqlite3_bind_null(statement_, index);
  } else if (auto b = value.get<bool>()) {
    result = sqlite3_bind_int64(statement_, index, *b ? 1 : 0);
  } else if (auto i = value.get<std::int64_t>()) {
    result = sqlite3_bind_int64(statement_, index, *i);
  } else if (auto d = value.get<double>()) {
    result = sqlite3_bind_double(statement_, index, *d);
  } else if (auto s = value.get<std::string>()) {
    result = sqlite3_bind_text(statement_, index, s->data(), static_cast<int>(s->size()), SQLITE_TRANSIENT);
  } else if (auto date = value.get<Date>()) {
    result = sqlite3_bind_double(statement_, index, date->timeIntervalSince1970());
  } else if (auto data = value.get<Data>()) {
    result = sqlite3_bind_blob(statement_, index, data->bytes.data(), static_cast<int>(data->bytes.size()),
                               SQLITE_TRANSIENT);
  } else if (auto id = value.objectID()) {
    result = sqlite3_bind_int64(statement_, index, id->primaryKey());
  } else {
    throw StoreError(StoreErrorCode::persistentStoreOperation, "A list cannot be bound as one SQL value");
  }
  if (result != SQLITE_OK) {
    throw StoreError(StoreErrorCode::persistentStoreOperation, sqlite3_errmsg(database_),
                     {{StoreError::kSQLiteCodeKey, std::int64_t{result}}});
  }
}

bool SQLiteStatement::step() {
  int result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  std::string message = sqlite3_errmsg(database_);
  sqlite3_reset(statement_);
  throw StoreError(StoreErrorCode::persistentStoreOperation, message,
                   {{StoreError::kSQLiteCodeKey, std::int64_t{result}}});
}

void SQLiteStatement::reset() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

int SQLiteStatement::columnCount() const { return sqlite3_column_count(statement_); }
bool SQLiteStatement::isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
std::int64_t SQLiteStatement::int64(int column) const { return sqlite3_column_int64(statement_, column); }
double SQLiteStatement::real(int column) const { return sqlite3_column_double(statement_, column); }

std::string SQLiteStatement::text(int column) const {
  auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))) : std::string();
}

Data SQLiteStatement::blob(int column) const {
  auto bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
  auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return Data{bytes ? std::vector<std::uint8_t>(bytes, bytes + size) : std::vector<std::uint8_t>()};
}

Value SQLiteStatement::value(int column) const {
  switch (sqlite3_column_type(statement_, column)) {
    case SQLITE_INTEGER:
      return Value(int64(column));
    case SQLITE_FLOAT:
      return Value(real(column));
    case SQLITE_TEXT:
      return Value(text(column));
    case SQLITE_BLOB:
      return Value(blob(column));
    default:
      return Value();
  }
}

std::unique_ptr<SQLiteDatabase> SQLiteDatabase::open(const std::filesystem::path& path) {
  sqlite3* handle = nullptr;
  int result = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                               nullptr);
  if (result != SQLITE_OK) {
    std::string message = handle ? sqlite3_errmsg(handle) : "out of memory";
    sqlite3_close(handle);
    throw StoreError(StoreErrorCode::persistentStoreOpen, "The store at " + path.string() + " cannot be opened: " + message,
                     {{StoreError::kSQLiteCodeKey, std::int64_t{result}}});
  }
  std::unique_ptr<SQLiteDatabase> database(new SQLiteDatabase(handle));
  database->setBusyTimeout(kBusyTimeoutMilliseconds);
  return database;
}

SQLiteDatabase::~SQLiteDatabase() {
  statements_.clear();
  for (auto handle : handles_) sqlite3_finalize(handle);
  sqlite3_close(database_);
}

void SQLiteDatabase::fail(int resultCode, std::string_view what) const {
  throw StoreError(StoreErrorCode::persistentStoreOperation, std::string(what) + ": " + sqlite3_errmsg(database_),
                   {{StoreError::kSQLiteCodeKey, std::int64_t{resultCode}}});
}

void SQLiteDatabase::execute(std::string_view sql) {
  char* message = nullptr;
  int result = sqlite3_exec(database_, std::string(sql).c_str(), nullptr, nullptr, &message);
  if (result != SQLITE_OK) {
    std::string text = message ? message : "unknown failure";
    sqlite3_free(message);
    throw StoreError(StoreErrorCode::persistentStoreOperation, text,
                     {{StoreError::kSQLiteCodeKey, std::int64_t{result}}});
  }
}

SQLiteStatement& SQLiteDatabase::prepare(const std::string& sql) {
  auto found = statements_.find(sql);
  if (found != statements_.end()) {
    found->second->reset();
    return *found->second;
  }
  sqlite3_stmt* handle = nullptr;
  int result = sqlite3_prepare_v2(database_, sql.c_str(), static_cast<int>(sql.size()), &handle, nullptr);
  if (result != SQLITE_OK) fail(result, "Cannot prepare " + sql);
  handles_.push_back(handle);
  auto& statement = statements_[sql];
  statement = std::make_unique<SQLiteStatement>(database_, handle);
  return *statement;
}

std::unique_ptr<SQLiteStatement> SQLiteDatabase::prepareTransient(const std::string& sql) {
  sqlite3_stmt* handle = nullptr;
  int result = sqlite3_prepare_v2(database_, sql.c_str(), static_cast<int>(sql.size()), &handle, nullptr);
  if (result != SQLITE_OK) fail(result, "Cannot prepare " + sql);
  return std::make_unique<SQLiteStatement>(database_, handle, true);
}

int SQLiteDatabase::changes() const { return sqlite3_changes(database_); }

void SQLiteDatabase::setBusyTimeout(int milliseconds) { sqlite3_busy_timeout(database_, milliseconds); }

SQLiteTransaction::SQLiteTransaction(SQLiteDatabase& database) : database_(database) {
  database_.execute("BEGIN IMMEDIATE");
}

SQLiteTransaction::~SQLiteTransaction() {
  if (committed_) return;
  try {
    database_.execute("ROLLBACK");
  } catch (const StoreError&) {
    // SQLite has already rolled the transaction back after the failure.
  }
}

void SQLiteTransaction::commit() {
  database_.execute("COMMIT");
  committed_ = true;
}

std::int64_t sqliteResultCode(const Error& error) {
  const auto* code = error.userInfoValue<std::int64_t>(StoreError::kSQLiteCodeKey);
  return code ? *code : 0;
}

std::string quoteIdentifier(std::string_view name) {
  std::string quoted = "\"";
  for (char c : name) {
    quoted += c;
    if (c == '"') quoted += '"';
  }
  return quoted + "\"";
}

}  // namespace kestrona

