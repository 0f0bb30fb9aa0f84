// A thin owner of one SQLite connection and its prepared statements.
//
// Used by the coordinator only; callers above it never see SQL. Every
// failing SQLite call throws a StoreError (persistentStoreOperation, or the
// code the caller passes) with the SQLite result code in user info under
// StoreError::kSQLiteCodeKey and SQLite's message in the description.
// Statements are cached by text. Not thread-safe: the coordinator serialises
// every use under its own mutex.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/ObjectStore/Value.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kestrona {

// One prepared statement; reset when the Statement is reused.
class SQLiteStatement {
 public:
  SQLiteStatement(sqlite3* database, sqlite3_stmt* statement, bool owned = false)
      : database_(database), statement_(statement), owned_(owned) {}
  ~SQLiteStatement();
  SQLiteStatement(const SQLiteStatement&) = delete;
  SQLiteStatement& operator=(const SQLiteStatement&) = delete;

  // Binds parameter index (1-based). Dates bind as REAL seconds, booleans
  // as 0/1, object IDs as their primary key.
  void bind(int index, const Value& value);
  // Steps once; true while a row is available.
  bool step();
  void reset();

  int columnCount() const;
  bool isNull(int column) const;
  std::int64_t int64(int column) const;
  double real(int column) const;
  std::string text(int column) const;
  Data blob(int column) const;
  // The column as stored: nil, integer, double, text or data.
  Value value(int column) const;

 private:
  sqlite3* database_;
  sqlite3_stmt* statement_;
  bool owned_;
};

class SQLiteDatabase {
 public:
  // Opens or creates the file (with its folder's existence assumed) and sets
  // the busy timeout. Nothing is written to the file: journal mode and
  // schema are the opener's to decide once it knows the file is a store.
  static std::unique_ptr<SQLiteDatabase> open(const std::filesystem::path& path);
  ~SQLiteDatabase();
  SQLiteDatabase(const SQLiteDatabase&) = delete;
  SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;

  void execute(std::string_view sql);
  // A cached prepared statement, reset and with its bindings cleared.
  SQLiteStatement& prepare(const std::string& sql);
  // A statement of its own, finalised when dropped: for SQL that is made
  // per call (lists of keys) and should not fill the cache.
  std::unique_ptr<SQLiteStatement> prepareTransient(const std::string& sql);
  int changes() const;
  // How long a statement waits for another connection's lock before it
  // fails with SQLITE_BUSY.
  void setBusyTimeout(int milliseconds);
  static constexpr int kBusyTimeoutMilliseconds = 5000;

  [[noreturn]] void fail(int resultCode, std::string_view what) const;

 private:
  explicit SQLiteDatabase(sqlite3* database) : database_(database) {}

  sqlite3* database_;
  std::unordered_map<std::string, std::unique_ptr<SQLiteStatement>> statements_;
  std::vector<sqlite3_stmt*> handles_;
};

// A write transaction (BEGIN IMMEDIATE: the write lock is taken at once)
// that rolls back unless committed.
class SQLiteTransaction {
 public:
  explicit SQLiteTransaction(SQLiteDatabase& database);
  ~SQLiteTransaction();
  SQLiteTransaction(const SQLiteTransaction&) = delete;
  SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;
  void commit();

 private:
  SQLiteDatabase& database_;
  bool committed_ = false;
};

// The SQLite result code a StoreError of this layer carries; 0 when none.
std::int64_t sqliteResultCode(const Error& error);

// Quotes an identifier for SQL: "name".
std::string quoteIdentifier(std::string_view name);

}  // namespace kestrona
