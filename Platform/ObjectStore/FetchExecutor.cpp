// Fetches, counts, dictionary fetches and batch requests of a context.
//
// Every request runs in two parts that are merged: the compiled SQL over the
// stored rows that the context has not touched, and the same predicate
// evaluated in memory over the objects it has (inserted, changed, deleted,
// and rows whose to-one destination on a key path of the predicate is
// changed). With no pending changes the SQL runs alone, as written.
#include <algorithm>
#include <cctype>
#include <set>

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/PredicateSQL.h"
#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/StoreSchema.h"

namespace kestrona {

namespace {

enum class Aggregate { none, sum, count, min, max };

Aggregate aggregateNamed(const std::string& function) {
  if (function == "sum:") return Aggregate::sum;
  if (function == "count:") return Aggregate::count;
  if (function == "min:") return Aggregate::min;
  if (function == "max:") return Aggregate::max;
  throw StoreError(StoreErrorCode::managedObjectValidation, "The function \"" + function + "\" is not supported");
}

}  // namespace

class BatchRequestExecutor {
 public:
  static PersistentStoreResult execute(ManagedObjectContext& context, const PersistentStoreRequest& request);
};

class FetchExecutor {
 public:
  FetchExecutor(ManagedObjectContext& context, const FetchRequest& request)
      : context_(context),
        request_(request),
        coordinator_(context.persistentStoreCoordinator()->connection()),
        entity_(context.requestEntity(request)),
        schema_(coordinator_.schema()),
        compiler_(schema_, entity_) {
    if (context.parentContext()) {
      throw StoreError(StoreErrorCode::persistentStoreOperation,
                       "Dictionary results are not offered in a child context; fetch them in its parent");
    }
    if (request.predicate) where_ = compiler_.condition(request.predicate->root());
    collectPending();
  }

  std::vector<std::shared_ptr<ManagedObject>> objects();
  std::size_t count();
  std::vector<std::map<std::string, Value>> dictionaries();

 private:
  bool entityMatches(const EntityDescription& entity) const {
    return request_.includesSubentities ? entity.isKindOfEntity(entity_) : entity.name() == entity_.name();
  }
  void collectPending();
  // "WHERE ..." with the entity filter and the exclusion of pending rows.
  std::string whereClause() const;
  std::string orderClause();
  bool matches(ManagedObject& object) const {
    return !request_.predicate || request_.predicate->evaluateWithObject(object);
  }
  void sortObjects(std::vector<std::shared_ptr<ManagedObject>>& objects) const;

  struct Property {
    std::string name;
    std::string keyPath;
    Aggregate aggregate = Aggregate::none;
    AttributeType resultType = AttributeType::undefinedAttributeType;
    PredicateSQLCompiler::Column column;
  };
  // Sums grouped by one to-one relationship with few destinations run as one
  // range query per destination on the covering index instead of GROUP BY,
  // which sorts through a temporary B-tree. False when the request has
  // another shape; rows is then untouched.
  bool groupedPerKey(const std::vector<Property>& properties, const std::vector<std::size_t>& groupBy,
                     std::vector<std::vector<Value>>& rows);

  ManagedObjectContext& context_;
  const FetchRequest& request_;
  StoreConnection& coordinator_;
  const EntityDescription& entity_;
  const StoreSchema& schema_;
  PredicateSQLCompiler compiler_;
  std::string where_;
  // Keys of stored rows decided in memory, and the objects to test there.
  std::set<std::int64_t> pendingKeys_;
  std::vector<std::shared_ptr<ManagedObject>> candidates_;
};

const EntityDescription& ManagedObjectContext::requestEntity(const FetchRequest& request) const {
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to fetch");
  const auto& name = request.entity ? request.entity->name() : request.entityName;
  auto entity = coordinator->managedObjectModel().entity(name);
  if (!entity) {
    throw StoreError(StoreErrorCode::managedObjectValidation, "The model has no entity named \"" + name + "\"");
  }
  return *entity;
}

void FetchExecutor::collectPending() {
  const auto& root = entity_.rootEntity();
  std::set<ManagedObject*> seen;
  for (const auto& object : context_.changedObjects()) {
    if (&object->entity().rootEntity() != &root && object->entity().rootEntity().name() != root.name()) continue;
    if (!object->objectID().isTemporaryID()) pendingKeys_.insert(object->objectID().primaryKey());
    if (!object->isDeleted() && entityMatches(object->entity())) {
      candidates_.push_back(object);
      seen.insert(object.get());
    }
  }
  // Rows whose destination on a key path of the predicate is changed here:
  // the store would judge them by the destination's stored values.
  for (const auto* relationship : compiler_.joinedRelationships()) {
    std::vector<Value> destinations;
    const auto& destinationRoot = relationship->destinationEntity().rootEntity();
    for (const auto& object : context_.changedObjects()) {
      if (object->entity().rootEntity().name() != destinationRoot.name()) continue;
      if (!object->objectID().isTemporaryID()) destinations.emplace_back(object->objectID().primaryKey());
    }
    if (destinations.empty()) continue;
    std::string list;
    for (std::size_t i = 0; i < destinations.size(); ++i) list += i ? ", ?" : "?";
    PredicateSQLCompiler local(schema_, entity_);
    auto keyColumn = local.column(std::vector<std::string>{relationship->name()});
    std::vector<ManagedObjectID> ids;
    coordinator_.query("SELECT t0.pk, t0.ent FROM " + local.fromClause() + " WHERE " + keyColumn.sql + " IN (" + list + ")",
                        destinations, [&](const SQLiteStatement& row) {
                          if (auto entity = schema_.entityForCode(row.int64(1)); entity && entityMatches(*entity)) {
                            ids.push_back(ManagedObjectID::permanent(coordinator_.storeIdentifier(),
                                                                     entity->entityPointer(), row.int64(0)));
                          }
                        });
    for (const auto& id : ids) {
      if (pendingKeys_.insert(id.primaryKey()).second) {
        auto object = context_.objectWithID(id);
        if (seen.insert(object.get()).second && !object->isDeleted()) candidates_.push_back(object);
      }
    }
  }
}

std::string FetchExecutor::whereClause() const {
  std::vector<std::string> conditions;
  if (!where_.empty()) conditions.push_back(where_);
  auto codes = schema_.entityCodes(entity_, request_.includesSubentities);
  auto all = schema_.entityCodes(entity_.rootEntity(), true);
  if (codes.size() != all.size()) {
    std::string list;
    for (auto code : codes) list += (list.empty() ? "" : ", ") + std::to_string(code);
    conditions.push_back("t0.ent IN (" + list + ")");
  }
  if (!pendingKeys_.empty()) {
    std::string list;
    for (auto key : pendingKeys_) list += (list.empty() ? "" : ", ") + std::to_string(key);
    conditions.push_back("t0.pk NOT IN (" + list + ")");
  }
  std::string clause;
  for (const auto& condition : conditions) clause += (clause.empty() ? " WHERE " : " AND ") + condition;
  return clause;
}

std::string FetchExecutor::orderClause() {
  std::string clause;
  for (const auto& descriptor : request_.sortDescriptors) {
    clause += (clause.empty() ? " ORDER BY " : ", ") + compiler_.column(descriptor.key).sql +
              (descriptor.ascending ? " ASC" : " DESC");
  }
  return clause;
}

bool precedesInSortOrder(const Value& left, const Value& right, bool ascending) {
  if (left.isNil() || right.isNil()) {
    if (left.isNil() == right.isNil()) return false;
    return ascending ? left.isNil() : right.isNil();
  }
  auto order = left <=> right;
  return ascending ? order == std::partial_ordering::less : order == std::partial_ordering::greater;
}

namespace {

void sortByDescriptors(std::vector<std::shared_ptr<ManagedObject>>& objects,
                       const std::vector<SortDescriptor>& descriptors) {
  if (descriptors.empty()) return;
  std::stable_sort(objects.begin(), objects.end(), [&descriptors](const auto& lhs, const auto& rhs) {
    for (const auto& descriptor : descriptors) {
      Value left = lhs->valueForKeyPath(descriptor.key);
      Value right = rhs->valueForKeyPath(descriptor.key);
      if (precedesInSortOrder(left, right, descriptor.ascending)) return true;
      if (precedesInSortOrder(right, left, descriptor.ascending)) return false;
    }
    return false;
  });
}

}  // namespace

void FetchExecutor::sortObjects(std::vector<std::shared_ptr<ManagedObject>>& objects) const {
  sortByDescriptors(objects, request_.sortDescriptors);
}

std::vector<std::shared_ptr<ManagedObject>> FetchExecutor::objects() {
  std::string order = orderClause();
  const auto& table = schema_.table(entity_);
  std::string select = request_.includesPropertyValues ? schema_.selectList(table, "t0") : "t0.pk, t0.ent";
  std::string sql = "SELECT " + select + " FROM " + compiler_.fromClause() + whereClause() + order;
  if (request_.fetchLimit > 0) sql += " LIMIT " + std::to_string(request_.fetchLimit);

  struct Row {
    ManagedObjectID id;
    std::vector<Value> values;
    std::int64_t version = 0;
  };
  std::vector<Row> rows;
  // Every entity of the hierarchy shares the table, so the version column
  // is the same for each row.
  const int versionColumn = 2 + table.versionColumn;
  coordinator_.query(sql, compiler_.bindings(), [&](const SQLiteStatement& row) {
    auto entity = schema_.entityForCode(row.int64(1));
    if (!entity) return;
    bool values = request_.includesPropertyValues;
    rows.push_back({ManagedObjectID::permanent(coordinator_.storeIdentifier(), entity->entityPointer(), row.int64(0)),
                    values ? coordinator_.decodeRow(*entity, row) : std::vector<Value>(),
                    values && !row.isNull(versionColumn) ? row.int64(versionColumn) : 0});
  });
  std::vector<std::shared_ptr<ManagedObject>> result;
  result.reserve(rows.size() + candidates_.size());
  for (auto& row : rows) {
    result.push_back(
        context_.registerFetched(row.id, std::move(row.values), row.version, request_.returnsObjectsAsFaults));
  }
  bool merged = false;
  for (const auto& candidate : candidates_) {
    if (matches(*candidate)) {
      result.push_back(candidate);
      merged = true;
    }
  }
  if (merged) {
    sortObjects(result);
    if (request_.fetchLimit > 0 && result.size() > request_.fetchLimit) result.resize(request_.fetchLimit);
  }

  // Prefetching: load the destinations of the named relationships in one
  // query each, so that reading them does not touch the store per object.
  for (const auto& key : request_.relationshipKeyPathsForPrefetching) {
    auto relationship = entity_.relationship(key);
    if (!relationship || result.empty()) continue;
    const auto& destination = schema_.table(relationship->destinationEntity());
    std::string list;
    std::vector<Value> keys;
    std::string column;
    if (relationship->isToMany()) {
      for (const auto& object : result) {
        if (!object->objectID().isTemporaryID()) keys.emplace_back(object->objectID().primaryKey());
      }
      column = quoteIdentifier(relationship->inverseRelationship().name());
    } else {
      for (const auto& object : result) {
        if (auto id = object->valueForKeyPath(relationship->name()).objectID(); id && !id->isTemporaryID()) {
          keys.emplace_back(id->primaryKey());
        }
      }
      column = "pk";
    }
    if (keys.empty()) continue;
    for (std::size_t i = 0; i < keys.size(); ++i) list += i ? ", ?" : "?";
    std::vector<Row> destinations;
    coordinator_.query("SELECT " + schema_.selectList(destination, "t0") + " FROM " + quoteIdentifier(destination.name) +
                            " AS t0 WHERE t0." + column + " IN (" + list + ")",
                        keys, [&](const SQLiteStatement& row) {
                          auto entity = schema_.entityForCode(row.int64(1));
                          if (!entity) return;
                          destinations.push_back({ManagedObjectID::permanent(coordinator_.storeIdentifier(),
                                                                             entity->entityPointer(), row.int64(0)),
                                                  coordinator_.decodeRow(*entity, row),
                                                  coordinator_.decodeVersion(*entity, row)});
                        });
    for (auto& row : destinations) context_.registerFetched(row.id, std::move(row.values), row.version, false);
  }
  return result;
}

std::size_t FetchExecutor::count() {
  std::size_t total = 0;
  coordinator_.query("SELECT COUNT(*) FROM " + compiler_.fromClause() + whereClause(), compiler_.bindings(),
                      [&total](const SQLiteStatement& row) { total = static_cast<std::size_t>(row.int64(0)); });
  for (const auto& candidate : candidates_) {
    if (matches(*candidate)) ++total;
  }
  if (request_.fetchLimit > 0) total = std::min(total, request_.fetchLimit);
  return total;
}

namespace {

Value typed(const Value& value, AttributeType type) {
  auto number = value.number();
  if (!number) return value;
  switch (type) {
    case AttributeType::doubleAttributeType:
      return Value(*number);
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType:
      return Value(value.get<std::int64_t>() ? *value.get<std::int64_t>() : static_cast<std::int64_t>(*number));
    case AttributeType::booleanAttributeType:
      return Value(*number != 0);
    case AttributeType::dateAttributeType:
      return Value(Date(*number));
    default:
      return value;
  }
}

Value combine(Aggregate aggregate, const Value& total, const Value& value) {
  switch (aggregate) {
    case Aggregate::sum: {
      if (value.isNil()) return total;
      if (total.isNil()) return value;
      auto li = total.get<std::int64_t>();
      auto ri = value.get<std::int64_t>();
      if (li && ri) return Value(*li + *ri);
      return Value(total.number().value_or(0) + value.number().value_or(0));
    }
    case Aggregate::count:
      return Value(total.get<std::int64_t>() ? *total.get<std::int64_t>() + *value.get<std::int64_t>()
                                             : *value.get<std::int64_t>());
    case Aggregate::min:
      if (value.isNil()) return total;
      return total.isNil() || (value <=> total) == std::partial_ordering::less ? value : total;
    case Aggregate::max:
      if (value.isNil()) return total;
      return total.isNil() || (value <=> total) == std::partial_ordering::greater ? value : total;
    case Aggregate::none:
      return total.isNil() ? value : total;
  }
  return total;
}

}  // namespace

bool FetchExecutor::groupedPerKey(const std::vector<Property>& properties, const std::vector<std::size_t>& groupBy,
                                  std::vector<std::vector<Value>>& rows) {
  constexpr std::int64_t kMostKeys = 500;
  if (groupBy.size() != 1 || request_.returnsDistinctResults || request_.fetchLimit > 0 ||
      !request_.sortDescriptors.empty()) {
    return false;
  }
  const auto& group = properties[groupBy.front()];
  if (!group.column.relationship || group.keyPath.find('.') != std::string::npos) return false;
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (i != groupBy.front() && properties[i].aggregate == Aggregate::none) return false;
  }
  const auto& destination = group.column.relationship->destinationEntity();
  const auto& table = schema_.table(destination);
  std::vector<std::pair<std::int64_t, std::int64_t>> keys;
  std::int64_t total = 0;
  coordinator_.query("SELECT COUNT(*) FROM " + quoteIdentifier(table.name), {},
                      [&total](const SQLiteStatement& row) { total = row.int64(0); });
  if (total > kMostKeys) return false;
  coordinator_.query("SELECT pk, ent FROM " + quoteIdentifier(table.name), {}, [&keys](const SQLiteStatement& row) {
    keys.emplace_back(row.int64(0), row.int64(1));
  });

  std::string select = "COUNT(*)";
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (i == groupBy.front()) continue;
    static const char* functions[] = {"", "SUM(", "COUNT(", "MIN(", "MAX("};
    select += std::string(", ") + functions[static_cast<int>(properties[i].aggregate)] + properties[i].column.sql + ")";
  }
  std::string where = whereClause();
  std::string base = "SELECT " + select + " FROM " + compiler_.fromClause() + where + (where.empty() ? " WHERE " : " AND ");
  auto runGroup = [&](const std::string& sql, const std::vector<Value>& bindings, const Value& key) {
    coordinator_.query(sql, bindings, [&](const SQLiteStatement& row) {
      if (row.int64(0) == 0) return;
      std::vector<Value> values;
      int column = 1;
      for (std::size_t i = 0; i < properties.size(); ++i) {
        values.push_back(i == groupBy.front() ? key : row.value(column++));
      }
      rows.push_back(std::move(values));
    });
  };
  std::string perKey = base + group.column.sql + " = ?";
  std::vector<Value> bindings = compiler_.bindings();
  bindings.emplace_back();
  for (const auto& [key, code] : keys) {
    auto entity = schema_.entityForCode(code);
    if (!entity) continue;
    bindings.back() = Value(key);
    runGroup(perKey, bindings,
             Value(ManagedObjectID::permanent(coordinator_.storeIdentifier(), entity->entityPointer(), key)));
  }
  runGroup(base + group.column.sql + " IS NULL", compiler_.bindings(), Value());
  return true;
}

std::vector<std::map<std::string, Value>> FetchExecutor::dictionaries() {
  std::vector<Property> properties;
  auto addProperty = [&](const PropertyToFetch& property) {
    Property resolved;
    if (auto name = std::get_if<std::string>(&property)) {
      resolved.name = *name;
      resolved.keyPath = *name;
    } else {
      const auto& description = std::get<ExpressionDescription>(property);
      resolved.name = description.name;
      resolved.keyPath = description.expression.keyPath();
      if (!description.expression.function().empty()) {
        resolved.aggregate = aggregateNamed(description.expression.function());
      }
      resolved.resultType = description.expressionResultType;
    }
    resolved.column = compiler_.column(resolved.keyPath);
    if (resolved.column.relationship && resolved.aggregate != Aggregate::none &&
        resolved.aggregate != Aggregate::count) {
      throw StoreError(StoreErrorCode::managedObjectValidation, "Only count: applies to a relationship");
    }
    properties.push_back(std::move(resolved));
  };
  for (const auto& property : request_.propertiesToFetch) addProperty(property);
  if (properties.empty()) {
    for (const auto& [name, attribute] : entity_.attributesByName()) addProperty(PropertyToFetch(name));
  }
  std::vector<std::size_t> groupBy;
  for (const auto& key : request_.propertiesToGroupBy) {
    auto found = std::find_if(properties.begin(), properties.end(), [&key](const Property& p) { return p.name == key; });
    if (found == properties.end()) {
      throw StoreError(StoreErrorCode::managedObjectValidation,
                       "The group-by key \"" + key + "\" is not among the properties to fetch");
    }
    groupBy.push_back(static_cast<std::size_t>(found - properties.begin()));
  }
  bool aggregating = std::any_of(properties.begin(), properties.end(),
                                 [](const Property& p) { return p.aggregate != Aggregate::none; });

  std::string select;
  std::string group;
  for (const auto& property : properties) {
    std::string expression = property.column.sql;
    switch (property.aggregate) {
      case Aggregate::sum:
        expression = "SUM(" + expression + ")";
        break;
      case Aggregate::count:
        expression = "COUNT(" + expression + ")";
        break;
      case Aggregate::min:
        expression = "MIN(" + expression + ")";
        break;
      case Aggregate::max:
        expression = "MAX(" + expression + ")";
        break;
      case Aggregate::none:
        break;
    }
    select += (select.empty() ? "" : ", ") + expression;
    if (property.column.relationship && property.aggregate == Aggregate::none) {
      select += ", " + property.column.entitySQL;
    }
  }
  for (auto index : groupBy) {
    group += (group.empty() ? " GROUP BY " : ", ") + properties[index].column.sql;
    const auto& entitySQL = properties[index].column.entitySQL;
    bool literal = !entitySQL.empty() && std::isdigit(static_cast<unsigned char>(entitySQL.front()));
    if (properties[index].column.relationship && !literal) group += ", " + entitySQL;
  }
  std::string order = orderClause();
  std::string sql = "SELECT " + std::string(request_.returnsDistinctResults ? "DISTINCT " : "") + select + " FROM " +
                    compiler_.fromClause() + whereClause() + group + order;
  bool merging = std::any_of(candidates_.begin(), candidates_.end(), [this](const auto& c) { return matches(*c); });
  if (request_.fetchLimit > 0 && !merging) sql += " LIMIT " + std::to_string(request_.fetchLimit);

  auto valueOf = [this](const Property& property, const SQLiteStatement& row, int& column) -> Value {
    int index = column++;
    if (property.aggregate != Aggregate::none) return row.value(index);
    if (property.column.relationship) {
      int entityColumn = column++;
      if (row.isNull(index)) return Value();
      auto entity = schema_.entityForCode(row.int64(entityColumn));
      if (!entity) return Value();
      return Value(ManagedObjectID::permanent(coordinator_.storeIdentifier(), entity->entityPointer(), row.int64(index)));
    }
    return coordinator_.attributeValue(*property.column.attribute, row, index);
  };

  std::vector<std::vector<Value>> rows;
  if (!groupedPerKey(properties, groupBy, rows)) {
    coordinator_.query(sql, compiler_.bindings(), [&](const SQLiteStatement& row) {
      std::vector<Value> values;
      int column = 0;
      for (const auto& property : properties) values.push_back(valueOf(property, row, column));
      rows.push_back(std::move(values));
    });
  }
  // An aggregate over no stored rows still gives its one row, which the
  // pending objects then add to.
  if (aggregating && groupBy.empty() && rows.size() == 1) {
    for (std::size_t i = 0; i < properties.size(); ++i) {
      if (properties[i].aggregate == Aggregate::count && rows[0][i].isNil()) rows[0][i] = Value(std::int64_t{0});
    }
  }

  if (merging) {
    auto sameGroup = [&groupBy](const std::vector<Value>& lhs, const std::vector<Value>& rhs) {
      for (auto index : groupBy) {
        if (!(lhs[index] == rhs[index]) || lhs[index].isNil() != rhs[index].isNil()) return false;
      }
      return true;
    };
    for (const auto& candidate : candidates_) {
      if (!matches(*candidate)) continue;
      std::vector<Value> values;
      for (const auto& property : properties) {
        Value value = candidate->valueForKeyPath(property.keyPath);
        if (auto object = value.get<Value::Object>()) value = Value((*object)->objectID());
        if (property.aggregate == Aggregate::count) value = Value(std::int64_t{value.isNil() ? 0 : 1});
        values.push_back(std::move(value));
      }
      if (!aggregating) {
        if (request_.returnsDistinctResults &&
            std::any_of(rows.begin(), rows.end(), [&values](const auto& row) { return row == values; })) {
          continue;
        }
        rows.push_back(std::move(values));
        continue;
      }
      auto existing = std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return sameGroup(row, values); });
      if (existing == rows.end()) {
        rows.push_back(std::move(values));
        continue;
      }
      for (std::size_t i = 0; i < properties.size(); ++i) {
        (*existing)[i] = combine(properties[i].aggregate, (*existing)[i], values[i]);
      }
    }
    if (!request_.sortDescriptors.empty()) {
      std::stable_sort(rows.begin(), rows.end(), [&](const auto& lhs, const auto& rhs) {
        for (const auto& descriptor : request_.sortDescriptors) {
          auto found = std::find_if(properties.begin(), properties.end(),
                                    [&descriptor](const Property& p) { return p.name == descriptor.key; });
          if (found == properties.end()) continue;
          auto index = static_cast<std::size_t>(found - properties.begin());
          if (precedesInSortOrder(lhs[index], rhs[index], descriptor.ascending)) return true;
          if (precedesInSortOrder(rhs[index], lhs[index], descriptor.ascending)) return false;
        }
        return false;
      });
    }
    if (request_.fetchLimit > 0 && rows.size() > request_.fetchLimit) rows.resize(request_.fetchLimit);
  }

  std::vector<std::map<std::string, Value>> result;
  result.reserve(rows.size());
  for (const auto& row : rows) {
    std::map<std::string, Value> dictionary;
    for (std::size_t i = 0; i < properties.size(); ++i) {
      if (row[i].isNil()) continue;
      dictionary[properties[i].name] =
          properties[i].resultType == AttributeType::undefinedAttributeType ? row[i] : typed(row[i], properties[i].resultType);
    }
    result.push_back(std::move(dictionary));
  }
  return result;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::fetch(const FetchRequest& request) {
  if (parent_) return fetchThroughParent(request);
  return FetchExecutor(*this, request).objects();
}

// A child context asks its parent, which sees its own pending changes, and
// then decides the objects it has changed itself in memory.
std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::fetchThroughParent(const FetchRequest& request) {
  const auto& entity = requestEntity(request);
  auto matchesEntity = [&](const EntityDescription& candidate) {
    return request.includesSubentities ? candidate.isKindOfEntity(entity) : candidate.name() == entity.name();
  };
  std::vector<std::shared_ptr<ManagedObject>> candidates;
  std::size_t touched = 0;
  for (const auto& object : changed_) {
    if (!matchesEntity(object->entity())) continue;
    ++touched;
    if (!object->deleted_ && (!request.predicate || request.predicate->evaluateWithObject(*object))) {
      candidates.push_back(object);
    }
  }
  FetchRequest parentRequest = request;
  parentRequest.fetchLimit = request.fetchLimit > 0 ? request.fetchLimit + touched : 0;
  parentRequest.relationshipKeyPathsForPrefetching.clear();
  parentRequest.resultType = FetchRequestResultType::managedObjectResultType;
  auto parent = parent_;
  auto ids = parent->performAndWaitReturning([&parent, &parentRequest] {
    std::vector<ManagedObjectID> found;
    for (const auto& object : parent->fetch(parentRequest)) found.push_back(object->objectID());
    return found;
  });
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& id : ids) {
    auto object = objectRegisteredForID(id);
    if (object && changed_.count(object)) continue;
    result.push_back(object ? object : objectWithID(id));
  }
  if (!candidates.empty()) {
    result.insert(result.end(), candidates.begin(), candidates.end());
    sortByDescriptors(result, request.sortDescriptors);
  }
  if (request.fetchLimit > 0 && result.size() > request.fetchLimit) result.resize(request.fetchLimit);
  return result;
}

std::vector<std::map<std::string, Value>> ManagedObjectContext::fetchDictionaries(const FetchRequest& request) {
  return FetchExecutor(*this, request).dictionaries();
}

std::size_t ManagedObjectContext::count(const FetchRequest& request) {
  if (parent_) {
    FetchRequest bare = request;
    bare.includesPropertyValues = false;
    return fetchThroughParent(bare).size();
  }
  return FetchExecutor(*this, request).count();
}

PersistentStoreResult ManagedObjectContext::execute(const PersistentStoreRequest& request) {
  PersistentStoreResult result;
  if (auto fetchRequest = std::get_if<FetchRequest>(&request)) {
    switch (fetchRequest->resultType) {
      case FetchRequestResultType::dictionaryResultType:
        result.dictionaries = fetchDictionaries(*fetchRequest);
        break;
      case FetchRequestResultType::countResultType:
        result.count = static_cast<std::int64_t>(count(*fetchRequest));
        break;
      case FetchRequestResultType::managedObjectIDResultType:
        for (const auto& object : fetch(*fetchRequest)) result.objectIDs.push_back(object->objectID());
        break;
      case FetchRequestResultType::managedObjectResultType:
        result.objects = fetch(*fetchRequest);
        break;
    }
    return result;
  }
  return BatchRequestExecutor::execute(*this, request);
}

PersistentStoreResult BatchRequestExecutor::execute(ManagedObjectContext& context, const PersistentStoreRequest& request) {
  PersistentStoreResult result;
  auto owner = context.persistentStoreCoordinator();
  precondition(owner != nullptr, "A context needs a coordinator to execute a request");
  auto* coordinator = &owner->connection();
  const auto& schema = coordinator->schema();
  // Batch requests work on the stored rows only, whatever this context holds.
  auto storedRows = [&](const EntityDescription& entity, const std::optional<Predicate>& predicate,
                        PredicateSQLCompiler& compiler) {
    std::string where = predicate ? compiler.condition(predicate->root()) : std::string("1");
    auto codes = schema.entityCodes(entity, true);
    std::string list;
    for (auto code : codes) list += (list.empty() ? "" : ", ") + std::to_string(code);
    return "SELECT t0.pk FROM " + compiler.fromClause() + " WHERE " + where + " AND t0.ent IN (" + list + ")";
  };
  auto matchingIDs = [&](const EntityDescription& entity, const std::string& rowsSQL, const std::vector<Value>& bindings) {
    std::vector<ManagedObjectID> ids;
    const auto& table = schema.table(entity);
    coordinator->query("SELECT pk, ent FROM " + quoteIdentifier(table.name) + " WHERE pk IN (" + rowsSQL + ")", bindings,
                       [&](const SQLiteStatement& row) {
                         if (auto concrete = schema.entityForCode(row.int64(1))) {
                           ids.push_back(ManagedObjectID::permanent(coordinator->storeIdentifier(),
                                                                    concrete->entityPointer(), row.int64(0)));
                         }
                       });
    return ids;
  };
  if (auto deleteRequest = std::get_if<BatchDeleteRequest>(&request)) {
    const auto& entity = context.requestEntity(deleteRequest->fetchRequest);
    PredicateSQLCompiler compiler(schema, entity);
    std::string rows = storedRows(entity, deleteRequest->fetchRequest.predicate, compiler);
    if (deleteRequest->resultType == BatchDeleteRequestResultType::resultTypeObjectIDs) {
      result.objectIDs = matchingIDs(entity, rows, compiler.bindings());
    }
    int deleted = coordinator->executeUpdate(
        "DELETE FROM " + quoteIdentifier(schema.table(entity).name) + " WHERE pk IN (" + rows + ")", compiler.bindings());
    if (deleteRequest->resultType == BatchDeleteRequestResultType::resultTypeCount) result.count = deleted;
    return result;
  }
  const auto& updateRequest = std::get<BatchUpdateRequest>(request);
  FetchRequest named(updateRequest.entityName);
  const auto& entity = context.requestEntity(named);
  const auto& layout = schema.layout(entity);
  std::string assignments;
  std::vector<Value> values;
  for (const auto& [key, value] : updateRequest.propertiesToUpdate) {
    auto attribute = entity.attribute(key);
    if (!attribute) {
      throw StoreError(StoreErrorCode::managedObjectValidation,
                       "A batch update can only set attributes; \"" + key + "\" is not one of " + entity.name());
    }
    assignments += (assignments.empty() ? "" : ", ") +
                   quoteIdentifier(layout.table->columns[static_cast<std::size_t>(layout.slotColumn[attribute->slot()])].name) +
                   " = ?";
    values.push_back(value);
  }
  if (assignments.empty()) return result;
  PredicateSQLCompiler compiler(schema, entity);
  std::string rows = storedRows(entity, updateRequest.predicate, compiler);
  if (updateRequest.resultType == BatchUpdateRequestResultType::updatedObjectIDsResultType) {
    result.objectIDs = matchingIDs(entity, rows, compiler.bindings());
  }
  values.insert(values.end(), compiler.bindings().begin(), compiler.bindings().end());
  int updated = coordinator->executeUpdate(
      "UPDATE " + quoteIdentifier(layout.table->name) + " SET " + assignments + " WHERE pk IN (" + rows + ")", values);
  if (updateRequest.resultType == BatchUpdateRequestResultType::updatedObjectsCountResultType) result.count = updated;
  return result;
}

}  // namespace kestrona
