#include "Platform/ObjectStore/PersistentStoreCoordinator.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/StoreSchema.h"
#include "Platform/ObjectStore/ValueTransformer.h"

namespace kestrona {

namespace {

constexpr std::string_view kURIScheme = "x-kestrona://";
constexpr const char* kUUIDKey = "NSStoreUUID";
constexpr const char* kTypeKey = "NSStoreType";

std::string literal(const Value& value) {
  if (value.isNil()) return "NULL";
  if (auto b = value.get<bool>()) return *b ? "1" : "0";
  if (auto i = value.get<std::int64_t>()) return std::to_string(*i);
  if (auto number = value.number()) return Value(*number).description();
  if (auto date = value.get<Date>()) return Value(date->timeIntervalSince1970()).description();
  if (auto text = value.get<std::string>()) {
    std::string quoted = "'";
    for (char c : *text) {
      quoted += c;
      if (c == '\'') quoted += '\'';
    }
    return quoted + "'";
  }
  return "NULL";
}

// A transaction that rolls back unless committed.
class Transaction {
 public:
  explicit Transaction(SQLiteDatabase& database) : database_(database) { database_.execute("BEGIN IMMEDIATE"); }
  ~Transaction() {
    if (!committed_) {
      try {
        database_.execute("ROLLBACK");
      } catch (const StoreError&) {
        // SQLite has already rolled the transaction back after the failure.
      }
    }
  }
  void commit() {
    database_.execute("COMMIT");
    committed_ = true;
  }

 private:
  SQLiteDatabase& database_;
  bool committed_ = false;
};

}  // namespace

std::shared_ptr<PersistentStoreCoordinator> PersistentStoreCoordinator::make(
    std::shared_ptr<const ManagedObjectModel> model) {
  precondition(model != nullptr, "A coordinator needs a model");
  return std::shared_ptr<PersistentStoreCoordinator>(new PersistentStoreCoordinator(std::move(model)));
}

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model)
    : model_(std::move(model)) {}

PersistentStoreCoordinator::~PersistentStoreCoordinator() {
  if (!database_) return;
  try {
    // Keeps the planner's statistics current for the next launch.
    database_->execute("PRAGMA analysis_limit=1000; PRAGMA optimize");
  } catch (const StoreError&) {
    // Statistics are an optimisation; a store that cannot gather them is still whole.
  }
}

const PersistentStore& PersistentStoreCoordinator::addPersistentStore(const std::filesystem::path& url,
                                                                       PersistentStoreOptions options) {
  std::lock_guard lock(mutex_);
  if (store_) {
    throw StoreError(StoreErrorCode::persistentStoreOperation, "The coordinator already has a store");
  }
  database_ = SQLiteDatabase::open(url);
  try {
    store_ = PersistentStore{std::string(PersistentStore::kSQLiteStoreType), url, UUID::random()};
    openSchema(options);
  } catch (...) {
    store_.reset();
    schema_.reset();
    database_.reset();
    throw;
  }
  return *store_;
}

void PersistentStoreCoordinator::openSchema(const PersistentStoreOptions& options) {
  auto& db = *database_;
  auto fail = [](StoreErrorCode code, const std::string& what) { throw StoreError(code, what); };
  Transaction transaction(db);
  try {
    db.execute(
        "CREATE TABLE IF NOT EXISTS kestrona_metadata (key TEXT PRIMARY KEY, value TEXT);"
        "CREATE TABLE IF NOT EXISTS kestrona_entities (name TEXT PRIMARY KEY, code INTEGER UNIQUE);"
        "CREATE TABLE IF NOT EXISTS kestrona_sequence (tbl TEXT PRIMARY KEY, next INTEGER)");
  } catch (const StoreError& error) {
    fail(StoreErrorCode::persistentStoreOpen, "The file is not a store: " + error.localizedDescription());
  }

  auto& readUUID = db.prepare("SELECT value FROM kestrona_metadata WHERE key = ?");
  readUUID.bind(1, Value(kUUIDKey));
  bool existing = readUUID.step();
  if (existing) {
    auto identifier = UUID::fromString(readUUID.text(0));
    readUUID.reset();
    if (!identifier) fail(StoreErrorCode::persistentStoreOpen, "The store's identifier is damaged");
    store_->identifier = *identifier;
  } else {
    readUUID.reset();
    auto& write = db.prepare("INSERT INTO kestrona_metadata (key, value) VALUES (?, ?)");
    write.bind(1, Value(kUUIDKey));
    write.bind(2, Value(store_->identifier.uuidString()));
    write.step();
  }

  std::map<std::string, std::int64_t, std::less<>> codes;
  std::int64_t nextCode = 1;
  auto& readCodes = db.prepare("SELECT name, code FROM kestrona_entities");
  while (readCodes.step()) {
    codes[readCodes.text(0)] = readCodes.int64(1);
    nextCode = std::max(nextCode, readCodes.int64(1) + 1);
  }
  bool needsMigration = false;
  for (const auto& entity : model_->entities()) {
    if (codes.count(entity->name())) continue;
    needsMigration = needsMigration || existing;
    codes[entity->name()] = nextCode;
    auto& write = db.prepare("INSERT INTO kestrona_entities (name, code) VALUES (?, ?)");
    write.bind(1, Value(entity->name()));
    write.bind(2, Value(nextCode));
    write.step();
    ++nextCode;
  }
  schema_ = std::make_unique<StoreSchema>(*model_, codes);

  for (const auto& table : schema_->tables()) {
    std::map<std::string, std::string> present;
    auto info = db.prepareTransient("PRAGMA table_info(" + quoteIdentifier(table.name) + ")");
    while (info->step()) present[info->text(1)] = info->text(2);
    std::string quotedTable = quoteIdentifier(table.name);
    if (present.empty()) {
      std::string sql = "CREATE TABLE " + quotedTable + " (pk INTEGER PRIMARY KEY, ent INTEGER NOT NULL";
      for (const auto& column : table.columns) {
        sql += ", " + quoteIdentifier(column.name) + " " + column.type + " DEFAULT " + literal(column.defaultValue);
      }
      db.execute(sql + ")");
      needsMigration = needsMigration || existing;
    } else {
      for (const auto& column : table.columns) {
        auto found = present.find(column.name);
        if (found == present.end()) {
          needsMigration = true;
          db.execute("ALTER TABLE " + quotedTable + " ADD COLUMN " + quoteIdentifier(column.name) + " " +
                     column.type + " DEFAULT " + literal(column.defaultValue));
        } else if (found->second != column.type) {
          fail(StoreErrorCode::migration, "The column \"" + column.name + "\" of \"" + table.name + "\" is " +
                                              found->second + " in the store and " + column.type + " in the model");
        }
      }
    }
    // Indexes: every to-one column, and those the model names.
    std::vector<std::vector<std::string>> indexes;
    std::set<std::string> seen;
    for (const auto& entity : model_->entities()) {
      if (&entity->rootEntity() != table.root) continue;
      for (const auto& [name, relationship] : entity->relationshipsByName()) {
        if (!relationship->isToMany()) indexes.push_back({name});
      }
      for (const auto& index : entity->indexes()) indexes.push_back(index);
    }
    for (const auto& columns : indexes) {
      std::string name = table.name;
      std::string list;
      for (const auto& column : columns) {
        name += "_" + column;
        list += (list.empty() ? "" : ", ") + quoteIdentifier(column);
      }
      if (!seen.insert(name).second) continue;
      db.execute("CREATE INDEX IF NOT EXISTS " + quoteIdentifier(name) + " ON " + quotedTable + " (" + list + ")");
    }
  }
  if (needsMigration && !(options.migratePersistentStoresAutomatically && options.inferMappingModelAutomatically)) {
    fail(StoreErrorCode::migration, "The store needs a migration to this model, and migration is switched off");
  }
  // Without statistics SQLite prefers a date index and a temporary B-tree
  // for grouped sums, several times slower than the covering index. A
  // sampled analysis costs a few milliseconds once per file.
  bool analysed = db.prepareTransient("SELECT 1 FROM sqlite_master WHERE name = 'sqlite_stat1'")->step();
  if (!analysed || needsMigration) db.execute("PRAGMA analysis_limit=1000; ANALYZE");
  transaction.commit();
}

std::vector<PersistentStore> PersistentStoreCoordinator::persistentStores() const {
  std::lock_guard lock(mutex_);
  if (!store_) return {};
  return {*store_};
}

const UUID& PersistentStoreCoordinator::storeIdentifier() const {
  precondition(store_.has_value(), "The coordinator has no store");
  return store_->identifier;
}

const StoreSchema& PersistentStoreCoordinator::schema() const {
  precondition(schema_ != nullptr, "The coordinator has no store");
  return *schema_;
}

std::optional<ManagedObjectID> PersistentStoreCoordinator::managedObjectIDForURIRepresentation(
    std::string_view uri) const {
  if (!store_ || uri.substr(0, kURIScheme.size()) != kURIScheme) return std::nullopt;
  uri.remove_prefix(kURIScheme.size());
  auto firstSlash = uri.find('/');
  if (firstSlash == std::string_view::npos) return std::nullopt;
  auto identifier = UUID::fromString(uri.substr(0, firstSlash));
  if (!identifier || *identifier != store_->identifier) return std::nullopt;
  uri.remove_prefix(firstSlash + 1);
  auto secondSlash = uri.find('/');
  if (secondSlash == std::string_view::npos) return std::nullopt;
  auto entity = model_->entity(uri.substr(0, secondSlash));
  auto key = uri.substr(secondSlash + 1);
  if (!entity || key.size() < 2 || key[0] != 'p') return std::nullopt;
  std::int64_t primaryKey = 0;
  auto [end, error] = std::from_chars(key.data() + 1, key.data() + key.size(), primaryKey);
  if (error != std::errc() || end != key.data() + key.size() || primaryKey <= 0) return std::nullopt;
  return ManagedObjectID::permanent(store_->identifier, entity->entityPointer(), primaryKey);
}

std::map<std::string, std::string> PersistentStoreCoordinator::metadata() const {
  std::lock_guard lock(mutex_);
  std::map<std::string, std::string> result;
  if (!store_) return result;
  auto& read = database_->prepare("SELECT key, value FROM kestrona_metadata");
  while (read.step()) result[read.text(0)] = read.text(1);
  result[kTypeKey] = store_->type;
  return result;
}

void PersistentStoreCoordinator::setMetadata(const std::map<std::string, std::string>& metadata) {
  std::lock_guard lock(mutex_);
  precondition(store_.has_value(), "The coordinator has no store");
  Transaction transaction(*database_);
  auto& clear = database_->prepare("DELETE FROM kestrona_metadata WHERE key != ?");
  clear.bind(1, Value(kUUIDKey));
  clear.step();
  for (const auto& [key, value] : metadata) {
    if (key == kUUIDKey || key == kTypeKey) continue;
    auto& write = database_->prepare("INSERT INTO kestrona_metadata (key, value) VALUES (?, ?)");
    write.bind(1, Value(key));
    write.bind(2, Value(value));
    write.step();
  }
  transaction.commit();
}

Value PersistentStoreCoordinator::attributeValue(const AttributeDescription& attribute, const SQLiteStatement& row,
                                                 int column) const {
  if (row.isNull(column)) return Value();
  switch (attribute.attributeType()) {
    case AttributeType::booleanAttributeType:
      return Value(row.int64(column) != 0);
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType:
      return Value(row.int64(column));
    case AttributeType::doubleAttributeType:
      return Value(row.real(column));
    case AttributeType::dateAttributeType:
      return Value(Date(row.real(column)));
    case AttributeType::stringAttributeType:
      return Value(row.text(column));
    case AttributeType::transformableAttributeType: {
      auto transformer = ValueTransformer::valueTransformerForName(attribute.valueTransformerName());
      if (!transformer) return Value();
      try {
        return transformer->reverseTransformedValue(row.blob(column));
      } catch (const std::exception&) {
        return Value();
      }
    }
    default:
      return Value(row.blob(column));
  }
}

Value PersistentStoreCoordinator::storedValue(const AttributeDescription& attribute, const Value& value) const {
  if (value.isNil() || attribute.attributeType() != AttributeType::transformableAttributeType) return value;
  auto transformer = ValueTransformer::valueTransformerForName(attribute.valueTransformerName());
  if (!transformer) {
    throw StoreError(StoreErrorCode::persistentStoreSave,
                     "No value transformer named \"" + attribute.valueTransformerName() + "\"");
  }
  try {
    return Value(transformer->transformedValue(value));
  } catch (const std::exception& error) {
    throw StoreError(StoreErrorCode::persistentStoreSave, "The value transformer \"" +
                                                              attribute.valueTransformerName() +
                                                              "\" refused a value: " + error.what());
  }
}

std::vector<Value> PersistentStoreCoordinator::decodeRow(const EntityDescription& entity, const SQLiteStatement& row,
                                                         int offset) const {
  const auto& layout = schema_->layout(entity);
  std::size_t count = entity.slotCount();
  std::vector<Value> slots(count);
  int first = offset + 2;
  for (std::size_t slot = 0; slot < count; ++slot) {
    int column = first + layout.slotColumn[slot];
    if (auto attribute = layout.slotAttribute[slot]) {
      slots[slot] = attributeValue(*attribute, row, column);
      continue;
    }
    if (row.isNull(column)) continue;
    auto destination = schema_->entityForCode(row.int64(first + layout.slotEntityColumn[slot]));
    if (!destination) continue;
    slots[slot] = ManagedObjectID::permanent(store_->identifier, destination->entityPointer(), row.int64(column));
  }
  return slots;
}

std::int64_t PersistentStoreCoordinator::decodeVersion(const EntityDescription& entity, const SQLiteStatement& row,
                                                       int offset) const {
  int column = offset + 2 + schema_->layout(entity).table->versionColumn;
  return row.isNull(column) ? 1 : row.int64(column);
}

std::optional<PersistentStoreCoordinator::StoredRow> PersistentStoreCoordinator::loadRow(const ManagedObjectID& id) const {
  if (id.isTemporaryID()) return std::nullopt;
  std::lock_guard lock(mutex_);
  return loadRowLocked(id);
}

std::optional<PersistentStoreCoordinator::StoredRow> PersistentStoreCoordinator::loadRowLocked(
    const ManagedObjectID& id) const {
  const auto& table = schema_->table(id.entity());
  auto& read = database_->prepare("SELECT " + schema_->selectList(table, "t0") + " FROM " +
                                  quoteIdentifier(table.name) + " AS t0 WHERE t0.pk = ?");
  read.bind(1, Value(id.primaryKey()));
  if (!read.step()) return std::nullopt;
  auto entity = schema_->entityForCode(read.int64(1));
  if (!entity) entity = &id.entity();
  StoredRow row{decodeRow(*entity, read), decodeVersion(*entity, read)};
  read.reset();
  // The ID may name a parent entity, whose slots are the first ones.
  if (entity->slotCount() != id.entity().slotCount()) row.values.resize(id.entity().slotCount());
  return row;
}

bool PersistentStoreCoordinator::rowExists(const ManagedObjectID& id) const {
  if (id.isTemporaryID()) return false;
  std::lock_guard lock(mutex_);
  const auto& table = schema_->table(id.entity());
  auto& read = database_->prepare("SELECT 1 FROM " + quoteIdentifier(table.name) + " WHERE pk = ?");
  read.bind(1, Value(id.primaryKey()));
  bool exists = read.step();
  read.reset();
  return exists;
}

std::vector<ManagedObjectID> PersistentStoreCoordinator::relatedObjectIDs(
    const ManagedObjectID& owner, const RelationshipDescription& relationship) const {
  std::vector<ManagedObjectID> result;
  if (owner.isTemporaryID()) return result;
  std::lock_guard lock(mutex_);
  const auto& table = schema_->table(relationship.destinationEntity());
  auto& read = database_->prepare("SELECT pk, ent FROM " + quoteIdentifier(table.name) + " WHERE " +
                                  quoteIdentifier(relationship.inverseRelationship().name()) + " = ?");
  read.bind(1, Value(owner.primaryKey()));
  while (read.step()) {
    auto entity = schema_->entityForCode(read.int64(1));
    if (entity) result.push_back(ManagedObjectID::permanent(store_->identifier, entity->entityPointer(), read.int64(0)));
  }
  return result;
}

std::int64_t PersistentStoreCoordinator::reserveKeys(const std::string& table, std::int64_t count) {
  auto& read = database_->prepare("SELECT next FROM kestrona_sequence WHERE tbl = ?");
  read.bind(1, Value(table));
  std::int64_t first = 1;
  if (read.step()) {
    first = read.int64(0);
    read.reset();
  } else {
    read.reset();
    auto& highest = database_->prepare("SELECT COALESCE(MAX(pk), 0) FROM " + quoteIdentifier(table));
    highest.step();
    first = highest.int64(0) + 1;
    highest.reset();
  }
  auto& write = database_->prepare("INSERT OR REPLACE INTO kestrona_sequence (tbl, next) VALUES (?, ?)");
  write.bind(1, Value(table));
  write.bind(2, Value(first + count));
  write.step();
  return first;
}

std::vector<ManagedObjectID> PersistentStoreCoordinator::obtainPermanentIDs(
    const std::vector<ManagedObjectID>& temporaryIDs) {
  std::lock_guard lock(mutex_);
  precondition(store_.has_value(), "The coordinator has no store");
  std::vector<ManagedObjectID> result;
  result.reserve(temporaryIDs.size());
  try {
    Transaction transaction(*database_);
    for (const auto& id : temporaryIDs) {
      if (!id.isTemporaryID()) {
        result.push_back(id);
        continue;
      }
      auto key = reserveKeys(schema_->table(id.entity()).name, 1);
      result.push_back(ManagedObjectID::permanent(store_->identifier, id.entityPointer(), key));
    }
    transaction.commit();
  } catch (const StoreError& error) {
    throw StoreError(StoreErrorCode::persistentStoreSave,
                     "Permanent IDs cannot be made: " + error.localizedDescription(), error.userInfo());
  }
  return result;
}

PersistentStoreCoordinator::SaveResult PersistentStoreCoordinator::save(const SaveRequest& request) {
  std::lock_guard lock(mutex_);
  precondition(store_.has_value(), "The coordinator has no store");
  SaveResult result;
  auto& permanentIDs = result.permanentIDs;
  auto resolve = [&permanentIDs](const ManagedObjectID& id) -> ManagedObjectID {
    if (!id.isTemporaryID()) return id;
    auto found = permanentIDs.find(id);
    if (found == permanentIDs.end()) {
      throw StoreError(StoreErrorCode::persistentStoreSave,
                       "A relationship points at an object that is not saved: " + id.description());
    }
    return found->second;
  };
  try {
    Transaction transaction(*database_);
    for (const auto& insert : request.inserted) {
      if (!insert.objectID.isTemporaryID()) continue;
      auto key = reserveKeys(schema_->table(insert.objectID.entity()).name, 1);
      permanentIDs.emplace(insert.objectID,
                           ManagedObjectID::permanent(store_->identifier, insert.objectID.entityPointer(), key));
    }
    auto bindSlot = [&](SQLiteStatement& statement, int& parameter, std::size_t slot, const Value& value,
                        const StoreSchema::Layout& layout) {
      if (layout.slotEntityColumn[slot] >= 0) {
        if (value.isNil()) {
          statement.bind(parameter++, Value());
          statement.bind(parameter++, Value());
        } else {
          auto id = resolve(*value.objectID());
          statement.bind(parameter++, Value(id.primaryKey()));
          statement.bind(parameter++, Value(schema_->entityCode(id.entity())));
        }
        return;
      }
      const AttributeDescription* attribute = layout.slotAttribute[slot];
      statement.bind(parameter++, attribute ? storedValue(*attribute, value) : value);
    };
    auto columnsOf = [&](const StoreSchema::Layout& layout, std::size_t slot) {
      std::string columns = quoteIdentifier(layout.table->columns[static_cast<std::size_t>(layout.slotColumn[slot])].name);
      if (layout.slotEntityColumn[slot] >= 0) {
        columns += ", " + quoteIdentifier(layout.table->columns[static_cast<std::size_t>(layout.slotEntityColumn[slot])].name);
      }
      return columns;
    };
    for (const auto& insert : request.inserted) {
      const auto& entity = insert.objectID.entity();
      const auto& layout = schema_->layout(entity);
      std::string columns = "pk, ent";
      std::string placeholders = "?, ?";
      for (std::size_t slot = 0; slot < entity.slotCount(); ++slot) {
        columns += ", " + columnsOf(layout, slot);
        placeholders += layout.slotEntityColumn[slot] >= 0 ? ", ?, ?" : ", ?";
      }
      auto& statement = database_->prepare("INSERT INTO " + quoteIdentifier(layout.table->name) + " (" + columns +
                                           ") VALUES (" + placeholders + ")");
      int parameter = 1;
      statement.bind(parameter++, Value(resolve(insert.objectID).primaryKey()));
      statement.bind(parameter++, Value(schema_->entityCode(entity)));
      for (std::size_t slot = 0; slot < entity.slotCount(); ++slot) {
        bindSlot(statement, parameter, slot, insert.values[slot], layout);
      }
      statement.step();
    }
    std::vector<RowConflict> conflicts;
    for (const auto& update : request.updated) {
      // The row as stored now, against what the context read: the write
      // lock is held, so nobody changes it between this read and the write.
      std::vector<std::size_t> slots = update.changedSlots;
      auto stored = loadRowLocked(update.objectID);
      bool conflicted = !stored;
      if (stored && update.version != 0) {
        conflicted = stored->version != update.version;
      } else if (stored && update.snapshot.size() == stored->values.size()) {
        for (std::size_t slot = 0; slot < stored->values.size(); ++slot) {
          if (!(stored->values[slot] == update.snapshot[slot])) conflicted = true;
        }
      }
      if (conflicted) {
        if (request.mergePolicy == MergePolicyType::errorMergePolicyType || !stored) {
          conflicts.push_back(RowConflict{update.objectID, std::move(stored), update.version});
          continue;
        }
        const auto& storedValues = stored->values;
        std::vector<Value> merged = storedValues;
        switch (request.mergePolicy) {
          case MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType:
            slots.erase(std::remove_if(slots.begin(), slots.end(),
                                       [&](std::size_t slot) {
                                         return !(storedValues[slot] == update.snapshot[slot]);
                                       }),
                        slots.end());
            break;
          case MergePolicyType::overwriteMergePolicyType:
            slots.clear();
            for (std::size_t slot = 0; slot < update.values.size(); ++slot) slots.push_back(slot);
            break;
          case MergePolicyType::rollbackMergePolicyType:
            slots.clear();
            break;
          default:
            break;
        }
        for (auto slot : slots) merged[slot] = update.values[slot];
        result.mergedRows.emplace(update.objectID, std::move(merged));
      }
      if (slots.empty()) {
        result.versions[update.objectID] = stored ? stored->version : update.version;
        continue;
      }
      const auto& entity = update.objectID.entity();
      const auto& layout = schema_->layout(entity);
      const auto& table = *layout.table;
      std::string assignments;
      for (auto slot : slots) {
        assignments += (assignments.empty() ? "" : ", ") +
                       quoteIdentifier(table.columns[static_cast<std::size_t>(layout.slotColumn[slot])].name) + " = ?";
        if (layout.slotEntityColumn[slot] >= 0) {
          assignments += ", " +
                         quoteIdentifier(table.columns[static_cast<std::size_t>(layout.slotEntityColumn[slot])].name) +
                         " = ?";
        }
      }
      std::string version = quoteIdentifier(StoreSchema::kVersionColumn);
      assignments += ", " + version + " = " + version + " + 1";
      auto& statement = database_->prepare("UPDATE " + quoteIdentifier(table.name) + " SET " + assignments +
                                           " WHERE pk = ?");
      int parameter = 1;
      for (auto slot : slots) bindSlot(statement, parameter, slot, update.values[slot], layout);
      statement.bind(parameter, Value(update.objectID.primaryKey()));
      statement.step();
      result.versions[update.objectID] = (stored ? stored->version : update.version) + 1;
    }
    // Deleting a row changed since it was read would drop that change
    // unseen; only the error policy refuses it (the other policies let this
    // context's decision stand). A row already gone needs no deleting.
    if (request.mergePolicy == MergePolicyType::errorMergePolicyType) {
      for (const auto& deletion : request.deleted) {
        if (deletion.objectID.isTemporaryID() || deletion.version == 0) continue;
        auto stored = loadRowLocked(deletion.objectID);
        if (stored && stored->version != deletion.version) {
          conflicts.push_back(RowConflict{deletion.objectID, std::move(stored), deletion.version});
        }
      }
    }
    if (!conflicts.empty()) {
      auto count = conflicts.size();
      throw StoreError(StoreErrorCode::managedObjectMerge,
                       "Could not merge changes: " + std::to_string(count) +
                           " objects were changed or deleted in the store meanwhile",
                       {{StoreError::kSaveConflictsKey, ErrorUserInfoObject(std::move(conflicts))}});
    }
    for (const auto& [temporary, permanent] : permanentIDs) result.versions[permanent] = 1;
    for (const auto& deletion : request.deleted) {
      const auto& id = deletion.objectID;
      if (id.isTemporaryID()) continue;
      auto& statement =
          database_->prepare("DELETE FROM " + quoteIdentifier(schema_->table(id.entity()).name) + " WHERE pk = ?");
      statement.bind(1, Value(id.primaryKey()));
      statement.step();
    }
    transaction.commit();
  } catch (const StoreError& error) {
    if (error.kind() == StoreErrorCode::persistentStoreSave || error.kind() == StoreErrorCode::managedObjectMerge) {
      throw;
    }
    throw StoreError(StoreErrorCode::persistentStoreSave, "The save failed: " + error.localizedDescription(),
                     error.userInfo());
  }
  return result;
}

void PersistentStoreCoordinator::registerContext(const ManagedObjectContext* context,
                                                 std::weak_ptr<ManagedObjectContext> reference) {
  std::lock_guard lock(contextsMutex_);
  for (auto& [registered, weak] : contexts_) {
    if (registered == context) {
      weak = std::move(reference);
      return;
    }
  }
  contexts_.emplace_back(context, std::move(reference));
}

void PersistentStoreCoordinator::unregisterContext(const ManagedObjectContext* context) {
  std::lock_guard lock(contextsMutex_);
  contexts_.erase(std::remove_if(contexts_.begin(), contexts_.end(),
                                 [context](const auto& entry) { return entry.first == context; }),
                  contexts_.end());
}

std::vector<std::shared_ptr<ManagedObjectContext>> PersistentStoreCoordinator::registeredContexts() const {
  std::lock_guard lock(contextsMutex_);
  std::vector<std::shared_ptr<ManagedObjectContext>> result;
  result.reserve(contexts_.size());
  for (const auto& [registered, weak] : contexts_) {
    if (auto context = weak.lock()) result.push_back(std::move(context));
  }
  return result;
}

void PersistentStoreCoordinator::query(const std::string& sql, const std::vector<Value>& bindings,
                                       const std::function<void(const SQLiteStatement&)>& row) const {
  std::lock_guard lock(mutex_);
  precondition(database_ != nullptr, "The coordinator has no store");
  auto run = [&](SQLiteStatement& statement) {
    for (std::size_t i = 0; i < bindings.size(); ++i) statement.bind(static_cast<int>(i + 1), bindings[i]);
    while (statement.step()) row(statement);
    statement.reset();
  };
  // Statements with inline key lists vary per call and are not kept.
  if (sql.size() > 1024) {
    run(*database_->prepareTransient(sql));
  } else {
    run(database_->prepare(sql));
  }
}

int PersistentStoreCoordinator::executeUpdate(const std::string& sql, const std::vector<Value>& bindings) {
  std::lock_guard lock(mutex_);
  precondition(database_ != nullptr, "The coordinator has no store");
  Transaction transaction(*database_);
  auto statement = database_->prepareTransient(sql);
  for (std::size_t i = 0; i < bindings.size(); ++i) statement->bind(static_cast<int>(i + 1), bindings[i]);
  statement->step();
  int changed = database_->changes();
  transaction.commit();
  return changed;
}

}  // namespace kestrona
