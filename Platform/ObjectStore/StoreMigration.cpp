#include "Platform/ObjectStore/StoreMigration.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/StoreSchema.h"

namespace kestrona {

namespace {

constexpr const char* kUUIDKey = "NSStoreUUID";

std::string literal(const Value& value) {
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

StoreError notAStore(const std::filesystem::path& url, const std::string& why, ErrorUserInfo userInfo = {}) {
  return StoreError(StoreErrorCode::persistentStoreOpen, "The file at " + url.string() + " is not a store: " + why,
                    std::move(userInfo));
}

// What the file holds now.
struct FileState {
  bool isStore = false;
  std::optional<UUID> identifier;
  std::map<std::string, std::int64_t, std::less<>> codes;
  // Table → column → declared type.
  std::map<std::string, std::map<std::string, std::string>> columns;
  std::set<std::string> indexes;
  bool hasStatistics = false;
};

FileState readFileState(SQLiteDatabase& database, const std::filesystem::path& url) {
  FileState state;
  std::set<std::string> tables;
  auto master = database.prepareTransient("SELECT type, name FROM sqlite_master");
  while (master->step()) {
    auto type = master->text(0);
    if (type == "table") tables.insert(master->text(1));
    if (type == "index") state.indexes.insert(master->text(1));
  }
  state.hasStatistics = tables.count("sqlite_stat1") > 0;
  if (!tables.count("kestrona_metadata")) {
    bool foreign = std::any_of(tables.begin(), tables.end(),
                               [](const std::string& table) { return !table.starts_with("sqlite_"); });
    if (foreign) throw notAStore(url, "it holds the tables of another program");
    return state;
  }
  state.isStore = true;
  auto uuid = database.prepareTransient("SELECT value FROM kestrona_metadata WHERE key = '" + std::string(kUUIDKey) + "'");
  if (uuid->step()) state.identifier = UUID::fromString(uuid->text(0));
  if (!state.identifier) throw notAStore(url, "its identifier is damaged");
  auto codes = database.prepareTransient("SELECT name, code FROM kestrona_entities");
  while (codes->step()) state.codes[codes->text(0)] = codes->int64(1);
  for (const auto& table : tables) {
    auto info = database.prepareTransient("PRAGMA table_info(" + quoteIdentifier(table) + ")");
    auto& columns = state.columns[table];
    while (info->step()) columns[info->text(1)] = info->text(2);
  }
  return state;
}

// The indexes of a table: every to-one column, and those the model names;
// by index name, the quoted column list.
std::map<std::string, std::string> wantedIndexes(const ManagedObjectModel& model, const StoreSchema::Table& table) {
  std::vector<std::vector<std::string>> lists;
  for (const auto& entity : model.entities()) {
    if (&entity->rootEntity() != table.root) continue;
    for (const auto& [name, relationship] : entity->relationshipsByName()) {
      if (!relationship->isToMany()) lists.push_back({name});
    }
    for (const auto& index : entity->indexes()) lists.push_back(index);
  }
  std::map<std::string, std::string> indexes;
  for (const auto& columns : lists) {
    std::string name = table.name;
    std::string list;
    for (const auto& column : columns) {
      name += "_" + column;
      list += (list.empty() ? "" : ", ") + quoteIdentifier(column);
    }
    indexes.emplace(name, list);
  }
  return indexes;
}

struct MigrationPlan {
  std::vector<std::string> statements;
  std::map<std::string, std::int64_t, std::less<>> codes;
  UUID identifier = UUID::random();
  // Whether the plan changes a store that exists, beyond its indexes.
  bool changesExistingStore = false;
};

MigrationPlan planMigration(const ManagedObjectModel& model, const FileState& state) {
  MigrationPlan plan;
  plan.codes = state.codes;
  if (state.identifier) plan.identifier = *state.identifier;
  if (!state.isStore) {
    plan.statements = {
        "CREATE TABLE kestrona_metadata (key TEXT PRIMARY KEY, value TEXT)",
        "CREATE TABLE kestrona_entities (name TEXT PRIMARY KEY, code INTEGER UNIQUE)",
        "CREATE TABLE kestrona_sequence (tbl TEXT PRIMARY KEY, next INTEGER)",
        "INSERT INTO kestrona_metadata (key, value) VALUES (" + literal(Value(kUUIDKey)) + ", " +
            literal(Value(plan.identifier.uuidString())) + ")"};
  }
  std::int64_t nextCode = 1;
  for (const auto& [name, code] : plan.codes) nextCode = std::max(nextCode, code + 1);
  for (const auto& entity : model.entities()) {
    if (plan.codes.count(entity->name())) continue;
    plan.codes[entity->name()] = nextCode;
    plan.statements.push_back("INSERT INTO kestrona_entities (name, code) VALUES (" + literal(Value(entity->name())) +
                              ", " + std::to_string(nextCode++) + ")");
    plan.changesExistingStore = plan.changesExistingStore || state.isStore;
  }
  StoreSchema schema(model, plan.codes);
  for (const auto& table : schema.tables()) {
    std::string quotedTable = quoteIdentifier(table.name);
    auto present = state.columns.find(table.name);
    if (present == state.columns.end()) {
      std::string sql = "CREATE TABLE " + quotedTable + " (pk INTEGER PRIMARY KEY, ent INTEGER NOT NULL";
      for (const auto& column : table.columns) {
        sql += ", " + quoteIdentifier(column.name) + " " + column.type + " DEFAULT " + literal(column.defaultValue);
      }
      plan.statements.push_back(sql + ")");
      plan.changesExistingStore = plan.changesExistingStore || state.isStore;
    } else {
      for (const auto& column : table.columns) {
        auto found = present->second.find(column.name);
        if (found == present->second.end()) {
          plan.statements.push_back("ALTER TABLE " + quotedTable + " ADD COLUMN " + quoteIdentifier(column.name) + " " +
                                    column.type + " DEFAULT " + literal(column.defaultValue));
          plan.changesExistingStore = true;
        } else if (found->second != column.type) {
          throw StoreError(StoreErrorCode::migration, "The column \"" + column.name + "\" of \"" + table.name +
                                                          "\" is " + found->second + " in the store and " +
                                                          column.type + " in the model");
        }
      }
    }
    for (const auto& [name, columns] : wantedIndexes(model, table)) {
      if (state.indexes.count(name)) continue;
      plan.statements.push_back("CREATE INDEX " + quoteIdentifier(name) + " ON " + quotedTable + " (" + columns + ")");
    }
  }
  return plan;
}

void refuseUnlessAllowed(const MigrationPlan& plan, const PersistentStoreOptions& options) {
  if (plan.changesExistingStore &&
      !(options.migratePersistentStoresAutomatically && options.inferMappingModelAutomatically)) {
    throw StoreError(StoreErrorCode::migration,
                     "The store needs a migration to this model, and migration is switched off");
  }
}

FileState readFileStateOrRefuse(SQLiteDatabase& database, const std::filesystem::path& url) {
  try {
    return readFileState(database, url);
  } catch (const StoreError& error) {
    if (error.kind() == StoreErrorCode::persistentStoreOpen) throw;
    throw notAStore(url, error.localizedDescription(), error.userInfo());
  }
}

// Without statistics SQLite prefers a date index and a temporary B-tree for
// grouped sums, several times slower than the covering index. A sampled
// analysis costs a few milliseconds, but it writes: it is done only when no
// other process holds the write lock.
void analyseIfUnlocked(SQLiteDatabase& database) {
  database.setBusyTimeout(0);
  try {
    SQLiteTransaction transaction(database);
    database.execute("PRAGMA analysis_limit=1000; ANALYZE");
    transaction.commit();
  } catch (const StoreError&) {
    // Another process is writing; the connection analyses as the store grows.
  }
  database.setBusyTimeout(SQLiteDatabase::kBusyTimeoutMilliseconds);
}

}  // namespace

OpenedStoreFile openStoreFile(const std::filesystem::path& url, const ManagedObjectModel& model,
                              const PersistentStoreOptions& options) {
  auto database = SQLiteDatabase::open(url);
  // One read transaction, so that the state is one moment of the file.
  database->execute("BEGIN");
  auto state = readFileStateOrRefuse(*database, url);
  database->execute("COMMIT");
  auto plan = planMigration(model, state);
  refuseUnlessAllowed(plan, options);
  try {
    database->execute("PRAGMA journal_mode=WAL");
    database->execute("PRAGMA synchronous=FULL");
    if (!plan.statements.empty()) {
      SQLiteTransaction transaction(*database);
      state = readFileStateOrRefuse(*database, url);
      plan = planMigration(model, state);
      refuseUnlessAllowed(plan, options);
      for (const auto& statement : plan.statements) database->execute(statement);
      if (!plan.statements.empty()) database->execute("PRAGMA analysis_limit=1000; ANALYZE");
      transaction.commit();
    } else if (!state.hasStatistics) {
      analyseIfUnlocked(*database);
    }
  } catch (const StoreError& error) {
    if (error.kind() != StoreErrorCode::persistentStoreOperation) throw;
    throw StoreError(StoreErrorCode::persistentStoreOpen,
                     "The store at " + url.string() + " cannot be opened: " + error.localizedDescription(),
                     error.userInfo());
  }
  return {std::move(database), std::make_unique<StoreSchema>(model, plan.codes), plan.identifier};
}

}  // namespace kestrona
