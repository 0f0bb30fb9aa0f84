// The open store file, as the store's own parts reach it: the one SQLite
// connection, the schema, the store's identifier, and the decoding of rows
// into slot values.
//
// Made by the coordinator when its store opens (StoreMigration.h) and owned
// by it; only the coordinator, the save transaction, the fetch executor and
// the batch requests use it, so no SQL reaches a public header. Threading:
// the connection is serialised by one mutex. query() and executeUpdate()
// take it themselves; the members ending in Locked need the caller to hold
// lock(), and the decoding members need no lock (they only read the
// immutable schema). Callbacks of query() run under the mutex and must not
// call back into the coordinator.
//
// Planner statistics: SQLite chooses its plans by the statistics ANALYZE
// keeps in the file. A store that grows without them groups through
// temporary B-trees instead of its covering indexes, so the connection
// counts the rows each save inserts and analyses a table (sampled, a few
// milliseconds) each time it has grown by as many rows as it held at the
// last analysis, and at least kRowsBeforeAnalysis; closing runs PRAGMA
// optimize. A failure to gather statistics is ignored: they only speed
// queries up.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/UUID.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"
#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreSchema.h"

namespace kestrona {

class StoreConnection {
 public:
  static constexpr std::int64_t kRowsBeforeAnalysis = 1000;

  StoreConnection(std::unique_ptr<SQLiteDatabase> database, std::unique_ptr<StoreSchema> schema, UUID identifier);
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;
  StoreConnection& operator=(const StoreConnection&) = delete;

  // The connection of a coordinator's store; fatal before it has one.
  static StoreConnection& of(const PersistentStoreCoordinator& coordinator) { return coordinator.connection(); }

  const UUID& storeIdentifier() const noexcept { return identifier_; }
  const StoreSchema& schema() const noexcept { return *schema_; }

  // Runs read-only SQL with bindings; row is called for each result row.
  void query(const std::string& sql, const std::vector<Value>& bindings,
             const std::function<void(const SQLiteStatement&)>& row) const;
  // Runs one writing statement in a transaction of its own; the number of
  // rows it changed.
  int executeUpdate(const std::string& sql, const std::vector<Value>& bindings);

  [[nodiscard]] std::unique_lock<std::mutex> lock() const { return std::unique_lock(mutex_); }
  SQLiteDatabase& databaseLocked() { return *database_; }
  // The stored row, or none when it is gone.
  std::optional<PersistentStoreCoordinator::StoredRow> loadRowLocked(const ManagedObjectID& id);
  // Hands out count primary keys of table; the first of them.
  std::int64_t reserveKeysLocked(const std::string& table, std::int64_t count);
  // Counts rows a committed save inserted, and analyses the tables that
  // have grown enough since their last analysis.
  void noteInsertedRowsLocked(const std::map<std::string, std::int64_t>& insertedPerTable);

  // The permanent ID of a row of the entity with code; none for a code the
  // model does not know.
  std::optional<ManagedObjectID> objectID(std::int64_t entityCode, std::int64_t primaryKey) const;
  // The destination IDs one read has decoded, by entity code and key, so
  // that the rows of a thousand entries of one task share one ID value.
  using DecodedIDs = std::map<std::pair<std::int64_t, std::int64_t>, Value>;
  // The slots of entity from a row laid out as StoreSchema::selectList,
  // starting at column offset (the row's pk); to-one IDs shared through
  // decoded when it is given.
  std::vector<Value> decodeRow(const EntityDescription& entity, const SQLiteStatement& row, int offset = 0,
                               DecodedIDs* decoded = nullptr) const;
  // The version of a row laid out as StoreSchema::selectList of entity's table.
  std::int64_t decodeVersion(const EntityDescription& entity, const SQLiteStatement& row, int offset = 0) const;
  // A stored column as the attribute's value; nil when a transformer
  // cannot read it.
  Value attributeValue(const AttributeDescription& attribute, const SQLiteStatement& row, int column) const;

 private:
  void readStatisticsLocked();

  mutable std::mutex mutex_;
  std::unique_ptr<SQLiteDatabase> database_;
  std::unique_ptr<StoreSchema> schema_;
  UUID identifier_;
  // Per table: rows at its last analysis, and rows inserted since.
  std::map<std::string, std::int64_t> rowsAtAnalysis_;
  std::map<std::string, std::int64_t> rowsInsertedSinceAnalysis_;
};

}  // namespace kestrona
