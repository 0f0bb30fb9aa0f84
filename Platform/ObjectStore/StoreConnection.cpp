#include "Platform/ObjectStore/StoreConnection.h"

#include <algorithm>

#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/ValueTransformer.h"

namespace kestrona {

namespace {

// Statements with inline key lists vary per call; they are not cached.
constexpr std::size_t kLongestCachedStatement = 1024;

}  // namespace

StoreConnection::StoreConnection(std::unique_ptr<SQLiteDatabase> database, std::unique_ptr<StoreSchema> schema,
                                 UUID identifier)
    : database_(std::move(database)), schema_(std::move(schema)), identifier_(identifier) {
  std::lock_guard lock(mutex_);
  readStatisticsLocked();
}

StoreConnection::~StoreConnection() {
  try {
    database_->execute("PRAGMA analysis_limit=1000; PRAGMA optimize");
  } catch (const StoreError&) {
    // Statistics are an optimisation; a store that cannot gather them is still whole.
  }
}

void StoreConnection::readStatisticsLocked() {
  try {
    auto statistics = database_->prepareTransient(
        "SELECT tbl, MAX(CAST(stat AS INTEGER)) FROM sqlite_stat1 GROUP BY tbl");
    while (statistics->step()) rowsAtAnalysis_[statistics->text(0)] = statistics->int64(1);
  } catch (const StoreError&) {
    // No statistics yet: every table counts as analysed at 0 rows.
  }
}

void StoreConnection::noteInsertedRowsLocked(const std::map<std::string, std::int64_t>& insertedPerTable) {
  for (const auto& [table, inserted] : insertedPerTable) {
    auto& since = rowsInsertedSinceAnalysis_[table];
    since += inserted;
    auto at = rowsAtAnalysis_[table];
    if (since < std::max(kRowsBeforeAnalysis, at)) continue;
    try {
      database_->execute("PRAGMA analysis_limit=1000; ANALYZE " + quoteIdentifier(table));
      rowsAtAnalysis_[table] = at + since;
      since = 0;
    } catch (const StoreError&) {
      // Busy or read-only: the next save tries again.
    }
  }
}

void StoreConnection::query(const std::string& sql, const std::vector<Value>& bindings,
                            const std::function<void(const SQLiteStatement&)>& row) const {
  std::lock_guard lock(mutex_);
  auto run = [&](SQLiteStatement& statement) {
    for (std::size_t i = 0; i < bindings.size(); ++i) statement.bind(static_cast<int>(i + 1), bindings[i]);
    while (statement.step()) row(statement);
    statement.reset();
  };
  if (sql.size() > kLongestCachedStatement) {
    run(*database_->prepareTransient(sql));
  } else {
    run(database_->prepare(sql));
  }
}

int StoreConnection::executeUpdate(const std::string& sql, const std::vector<Value>& bindings) {
  std::lock_guard lock(mutex_);
  SQLiteTransaction transaction(*database_);
  auto statement = database_->prepareTransient(sql);
  for (std::size_t i = 0; i < bindings.size(); ++i) statement->bind(static_cast<int>(i + 1), bindings[i]);
  statement->step();
  int changed = database_->changes();
  transaction.commit();
  return changed;
}

std::optional<PersistentStoreCoordinator::StoredRow> StoreConnection::loadRowLocked(const ManagedObjectID& id) {
  const auto& table = schema_->table(id.entity());
  auto& read = database_->prepare("SELECT " + schema_->selectList(table, "t0") + " FROM " +
                                  quoteIdentifier(table.name) + " AS t0 WHERE t0.pk = ?");
  read.bind(1, Value(id.primaryKey()));
  if (!read.step()) return std::nullopt;
  auto entity = schema_->entityForCode(read.int64(1));
  if (!entity) entity = &id.entity();
  PersistentStoreCoordinator::StoredRow row{decodeRow(*entity, read), decodeVersion(*entity, read)};
  read.reset();
  // The ID may name a parent entity, whose slots are the first ones.
  if (entity->slotCount() != id.entity().slotCount()) row.values.resize(id.entity().slotCount());
  return row;
}

std::int64_t StoreConnection::reserveKeysLocked(const std::string& table, std::int64_t count) {
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

std::optional<ManagedObjectID> StoreConnection::objectID(std::int64_t entityCode, std::int64_t primaryKey) const {
  auto entity = schema_->entityForCode(entityCode);
  if (!entity) return std::nullopt;
  return ManagedObjectID::permanent(identifier_, entity->entityPointer(), primaryKey);
}

Value StoreConnection::attributeValue(const AttributeDescription& attribute, const SQLiteStatement& row,
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

std::vector<Value> StoreConnection::decodeRow(const EntityDescription& entity, const SQLiteStatement& row,
                                              int offset, DecodedIDs* decoded) const {
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
    std::pair key{row.int64(first + layout.slotEntityColumn[slot]), row.int64(column)};
    if (decoded) {
      if (auto found = decoded->find(key); found != decoded->end()) {
        slots[slot] = found->second;
        continue;
      }
    }
    auto id = objectID(key.first, key.second);
    if (!id) continue;
    slots[slot] = *id;
    if (decoded) decoded->emplace(key, slots[slot]);
  }
  return slots;
}

std::int64_t StoreConnection::decodeVersion(const EntityDescription& entity, const SQLiteStatement& row,
                                            int offset) const {
  int column = offset + 2 + schema_->layout(entity).table->versionColumn;
  return row.isNull(column) ? 1 : row.int64(column);
}

}  // namespace kestrona
