#include "Platform/ObjectStore/FetchExecutor.h"

#include <algorithm>
#include <deque>

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

StoreConnection& connectionOf(ManagedObjectContext& context) {
  if (context.parentContext()) {
    throw StoreError(StoreErrorCode::persistentStoreOperation,
                     "Dictionary results are not offered in a child context; fetch them in its parent");
  }
  auto coordinator = context.persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to fetch");
  return StoreConnection::of(*coordinator);
}

std::string joinedKeys(const std::set<std::int64_t>& keys) {
  std::string list;
  for (auto key : keys) list += (list.empty() ? "" : ", ") + std::to_string(key);
  return list;
}

}  // namespace

FetchExecutor::FetchExecutor(ManagedObjectContext& context, const FetchRequest& request,
                             const std::vector<std::string>& keyPaths)
    : context_(context),
      request_(request),
      connection_(connectionOf(context)),
      entity_(context.requestEntity(request)),
      compiler_(connection_.schema(), entity_) {
  if (request.predicate) where_ = compiler_.condition(request.predicate->root());
  for (const auto& descriptor : request.sortDescriptors) column(descriptor.key, "sort key");
  for (const auto& keyPath : keyPaths) column(keyPath, "property to fetch");
  collectPending();
}

PredicateSQLCompiler::Column FetchExecutor::column(const std::string& keyPath, std::string_view role) {
  try {
    return compiler_.column(keyPath);
  } catch (const StoreError& error) {
    throw StoreError(error.kind(), "The " + std::string(role) + " \"" + keyPath + "\" cannot be used: " +
                                       error.localizedDescription(),
                     error.userInfo());
  }
}

bool FetchExecutor::entityMatches(const EntityDescription& entity) const {
  return request_.includesSubentities ? entity.isKindOfEntity(entity_) : entity.name() == entity_.name();
}

bool FetchExecutor::matches(ManagedObject& object) const {
  return !request_.predicate || request_.predicate->evaluateWithObject(object);
}

std::vector<std::shared_ptr<ManagedObject>> FetchExecutor::matchingCandidates() const {
  std::vector<std::shared_ptr<ManagedObject>> matching;
  for (const auto& candidate : candidates_) {
    if (matches(*candidate)) matching.push_back(candidate);
  }
  return matching;
}

void FetchExecutor::collectPending() {
  const auto& root = entity_.rootEntity();
  std::set<ManagedObject*> seen;
  for (const auto& object : context_.changedObjects()) {
    if (object->entity().rootEntity().name() != root.name()) continue;
    if (!object->objectID().isTemporaryID()) pendingKeys_.insert(object->objectID().primaryKey());
    if (!object->isDeleted() && entityMatches(object->entity())) {
      candidates_.push_back(object);
      seen.insert(object.get());
    }
  }
  // Rows whose destination on a joined key path is changed here: the store
  // would judge them by the destination's stored values.
  for (const auto& join : compiler_.joins()) {
    std::set<std::int64_t> destinations;
    for (const auto& object : context_.changedObjects()) {
      if (object->entity().rootEntity().name() != join.destination->rootEntity().name()) continue;
      if (!object->objectID().isTemporaryID()) destinations.insert(object->objectID().primaryKey());
    }
    if (destinations.empty()) continue;
    std::vector<ManagedObjectID> ids;
    connection_.query("SELECT t0.pk, t0.ent FROM " + compiler_.fromClause() + " WHERE " + join.alias + ".pk IN (" +
                          joinedKeys(destinations) + ")",
                      {}, [&](const SQLiteStatement& row) {
                        auto id = connection_.objectID(row.int64(1), row.int64(0));
                        if (id && entityMatches(id->entity())) ids.push_back(std::move(*id));
                      });
    for (const auto& id : ids) {
      if (!pendingKeys_.insert(id.primaryKey()).second) continue;
      auto object = context_.objectWithID(id);
      if (seen.insert(object.get()).second && !object->isDeleted()) candidates_.push_back(object);
    }
  }
}

std::string FetchExecutor::whereClause() const {
  std::vector<std::string> conditions;
  if (!where_.empty()) conditions.push_back(where_);
  const auto& schema = connection_.schema();
  auto codes = schema.entityCodes(entity_, request_.includesSubentities);
  if (codes.size() != schema.entityCodes(entity_.rootEntity(), true).size()) {
    std::string list;
    for (auto code : codes) list += (list.empty() ? "" : ", ") + std::to_string(code);
    conditions.push_back("t0.ent IN (" + list + ")");
  }
  if (!pendingKeys_.empty()) conditions.push_back("t0.pk NOT IN (" + joinedKeys(pendingKeys_) + ")");
  std::string clause;
  for (const auto& condition : conditions) clause += (clause.empty() ? " WHERE " : " AND ") + condition;
  return clause;
}

std::string FetchExecutor::orderClause() {
  std::string clause;
  for (const auto& descriptor : request_.sortDescriptors) {
    clause += (clause.empty() ? " ORDER BY " : ", ") + column(descriptor.key, "sort key").sql +
              (descriptor.ascending ? " ASC" : " DESC");
  }
  return clause;
}

std::vector<std::shared_ptr<ManagedObject>> FetchExecutor::objects() {
  const auto& schema = connection_.schema();
  const auto& table = schema.table(entity_);
  const bool values = request_.includesPropertyValues;
  std::string sql = "SELECT " + (values ? schema.selectList(table, "t0") : std::string("t0.pk, t0.ent")) + " FROM " +
                    compiler_.fromClause() + whereClause() + orderClause();
  if (request_.fetchLimit > 0) sql += " LIMIT " + std::to_string(request_.fetchLimit);

  // Rows are registered as objects once the connection's lock is free; a
  // deque holds them meanwhile without copying them as it grows.
  struct Row {
    std::int64_t key = 0;
    const EntityDescription* entity = nullptr;
    std::vector<Value> values;
    std::int64_t version = 0;
  };
  std::deque<Row> rows;
  StoreConnection::DecodedIDs decoded;
  connection_.query(sql, compiler_.bindings(), [&](const SQLiteStatement& row) {
    const auto* entity = connection_.schema().entityForCode(row.int64(1));
    if (!entity) return;
    rows.push_back({row.int64(0), entity, values ? connection_.decodeRow(*entity, row, 0, &decoded) : std::vector<Value>(),
                    values ? connection_.decodeVersion(*entity, row) : 0});
  });
  std::vector<std::shared_ptr<ManagedObject>> result;
  result.reserve(rows.size() + candidates_.size());
  while (!rows.empty()) {
    auto& row = rows.front();
    auto id = ManagedObjectID::permanent(connection_.storeIdentifier(), row.entity->entityPointer(), row.key);
    result.push_back(context_.registerFetched(id, std::move(row.values), row.version, request_.returnsObjectsAsFaults));
    rows.pop_front();
  }
  auto matching = matchingCandidates();
  if (!matching.empty()) {
    result.insert(result.end(), matching.begin(), matching.end());
    sortByDescriptors(result, request_.sortDescriptors);
    if (request_.fetchLimit > 0 && result.size() > request_.fetchLimit) result.resize(request_.fetchLimit);
  }
  prefetch(result);
  return result;
}

// Loads the destinations of the named relationships in one query each, so
// that reading them does not touch the store once per object.
void FetchExecutor::prefetch(const std::vector<std::shared_ptr<ManagedObject>>& objects) {
  const auto& schema = connection_.schema();
  for (const auto& key : request_.relationshipKeyPathsForPrefetching) {
    auto relationship = entity_.relationship(key);
    if (!relationship || objects.empty()) continue;
    std::set<std::int64_t> keys;
    std::string column = "pk";
    if (relationship->isToMany()) {
      for (const auto& object : objects) {
        if (!object->objectID().isTemporaryID()) keys.insert(object->objectID().primaryKey());
      }
      column = quoteIdentifier(relationship->inverseRelationship().name());
    } else {
      for (const auto& object : objects) {
        if (auto id = object->valueForKeyPath(relationship->name()).objectID(); id && !id->isTemporaryID()) {
          keys.insert(id->primaryKey());
        }
      }
    }
    if (keys.empty()) continue;
    const auto& destination = schema.table(relationship->destinationEntity());
    std::vector<std::pair<ManagedObjectID, PersistentStoreCoordinator::StoredRow>> rows;
    connection_.query("SELECT " + schema.selectList(destination, "t0") + " FROM " + quoteIdentifier(destination.name) +
                          " AS t0 WHERE t0." + column + " IN (" + joinedKeys(keys) + ")",
                      {}, [&](const SQLiteStatement& row) {
                        auto id = connection_.objectID(row.int64(1), row.int64(0));
                        if (!id) return;
                        const auto& entity = id->entity();
                        rows.emplace_back(std::move(*id), PersistentStoreCoordinator::StoredRow{
                                                              connection_.decodeRow(entity, row),
                                                              connection_.decodeVersion(entity, row)});
                      });
    for (auto& [id, row] : rows) context_.registerFetched(id, std::move(row.values), row.version, false);
  }
}

std::size_t FetchExecutor::count() {
  std::size_t total = 0;
  connection_.query("SELECT COUNT(*) FROM " + compiler_.fromClause() + whereClause(), compiler_.bindings(),
                    [&total](const SQLiteStatement& row) { total = static_cast<std::size_t>(row.int64(0)); });
  total += matchingCandidates().size();
  if (request_.fetchLimit > 0) total = std::min(total, request_.fetchLimit);
  return total;
}

}  // namespace kestrona
