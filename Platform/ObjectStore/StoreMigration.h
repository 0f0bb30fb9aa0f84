// Opening a store file: telling a store from any other file, and bringing
// its schema to the model.
//
// openStoreFile reads the file first, without any lock another process could
// be holding: SQLite's own tables, the store's housekeeping tables, the
// columns and indexes of every entity table. A file that is not SQLite, or
// that holds tables but not the store's, is refused with StoreError
// persistentStoreOpen (134080) before anything is written to it, its
// journal mode included. Otherwise the file is switched to WAL with
// synchronous=FULL and compared with the model; only when something must
// change (a new file, a new entity, table, column or index) does the open
// take the write lock (BEGIN IMMEDIATE), read the file again under it
// (another process may have migrated it meanwhile) and change it, all in
// one transaction. So a store that is current opens in milliseconds while
// another process writes to it.
//
// Migration adds: entity codes, tables, columns (with their defaults, rows
// of an older file get them), the row version column, indexes. A column the
// model no longer names stays, unused. A retyped column fails with
// StoreError migration (134110), and so does any change of an existing
// store other than an index while migratePersistentStoresAutomatically or
// inferMappingModelAutomatically is off; the file then stays as it was.
//
// Planner statistics: a migration analyses the file (sampled) in its
// transaction; a current store without statistics is analysed only when
// the write lock is free at once, and otherwise later by its connection
// (StoreConnection.h).
#pragma once

#include <filesystem>
#include <memory>

#include "Platform/Foundation/UUID.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"

namespace kestrona {

class SQLiteDatabase;
class StoreSchema;

struct OpenedStoreFile {
  std::unique_ptr<SQLiteDatabase> database;
  std::unique_ptr<StoreSchema> schema;
  UUID identifier;
};

OpenedStoreFile openStoreFile(const std::filesystem::path& url, const ManagedObjectModel& model,
                              const PersistentStoreOptions& options);

}  // namespace kestrona
