#include "Platform/ObjectStore/DictionaryFetch.h"

#include <algorithm>
#include <cctype>

#include "Platform/ObjectStore/FetchExecutor.h"
#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

enum class Aggregate { none, sum, count, min, max };

constexpr const char* kSQLFunctions[] = {"", "SUM", "COUNT", "MIN", "MAX"};

struct Property {
  std::string name;
  std::string keyPath;
  Aggregate aggregate = Aggregate::none;
  AttributeType resultType = AttributeType::undefinedAttributeType;
  PredicateSQLCompiler::Column column;
};

Aggregate aggregateNamed(const std::string& function, const std::string& name) {
  if (function.empty()) return Aggregate::none;
  if (function == "sum:") return Aggregate::sum;
  if (function == "count:") return Aggregate::count;
  if (function == "min:") return Aggregate::min;
  if (function == "max:") return Aggregate::max;
  throw StoreError(StoreErrorCode::managedObjectValidation,
                   "The property to fetch \"" + name + "\" uses the function \"" + function + "\", which is not supported",
                   {{StoreError::kKeyKey, name}});
}

Property describe(const PropertyToFetch& property) {
  Property described;
  if (auto name = std::get_if<std::string>(&property)) {
    described.name = *name;
    described.keyPath = *name;
    return described;
  }
  const auto& description = std::get<ExpressionDescription>(property);
  described.name = description.name;
  described.keyPath = description.expression.keyPath();
  described.aggregate = aggregateNamed(description.expression.function(), description.name);
  described.resultType = description.expressionResultType;
  return described;
}

std::vector<Property> describedProperties(const FetchRequest& request) {
  std::vector<Property> properties;
  for (const auto& property : request.propertiesToFetch) properties.push_back(describe(property));
  return properties;
}

std::vector<std::string> keyPathsOf(const FetchRequest& request) {
  std::vector<std::string> keyPaths;
  for (const auto& property : describedProperties(request)) keyPaths.push_back(property.keyPath);
  return keyPaths;
}

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

// A sum or count over no rows.
Value zeroOf(const Property& property) {
  const auto* attribute = property.column.attribute;
  bool integral = property.aggregate == Aggregate::count ||
                  (attribute && attribute->attributeType() != AttributeType::doubleAttributeType);
  return integral ? Value(std::int64_t{0}) : Value(0.0);
}

Value combine(Aggregate aggregate, const Value& total, const Value& value) {
  if (value.isNil()) return total;
  if (total.isNil()) return value;
  switch (aggregate) {
    case Aggregate::sum:
    case Aggregate::count: {
      auto left = total.get<std::int64_t>();
      auto right = value.get<std::int64_t>();
      if (left && right) return Value(*left + *right);
      return Value(total.number().value_or(0) + value.number().value_or(0));
    }
    case Aggregate::min:
      return (value <=> total) == std::partial_ordering::less ? value : total;
    case Aggregate::max:
      return (value <=> total) == std::partial_ordering::greater ? value : total;
    case Aggregate::none:
      return total;
  }
  return total;
}

class DictionaryFetch {
 public:
  DictionaryFetch(ManagedObjectContext& context, const FetchRequest& request)
      : request_(request), executor_(context, request, keyPathsOf(request)), connection_(executor_.connection()) {
    properties_ = describedProperties(request);
    if (properties_.empty()) {
      for (const auto& [name, attribute] : executor_.entity().attributesByName()) {
        properties_.push_back(describe(PropertyToFetch(name)));
      }
    }
    for (auto& property : properties_) {
      property.column = executor_.column(property.keyPath, "property to fetch");
      if (property.column.relationship && property.aggregate != Aggregate::none &&
          property.aggregate != Aggregate::count) {
        throw StoreError(StoreErrorCode::managedObjectValidation,
                         "The property to fetch \"" + property.name + "\" aggregates a relationship; only count: can",
                         {{StoreError::kKeyKey, property.name}});
      }
    }
    for (const auto& key : request.propertiesToGroupBy) {
      auto found = std::find_if(properties_.begin(), properties_.end(), [&key](const Property& p) { return p.name == key; });
      if (found == properties_.end()) {
        throw StoreError(StoreErrorCode::managedObjectValidation,
                         "The group-by key \"" + key + "\" is not among the properties to fetch",
                         {{StoreError::kKeyKey, key}});
      }
      groupBy_.push_back(static_cast<std::size_t>(found - properties_.begin()));
    }
    aggregating_ = std::any_of(properties_.begin(), properties_.end(),
                               [](const Property& p) { return p.aggregate != Aggregate::none; });
  }

  std::vector<std::map<std::string, Value>> run() {
    auto matching = executor_.matchingCandidates();
    std::vector<std::vector<Value>> rows;
    if (!groupedPerKey(rows)) {
      std::string sql = "SELECT " + std::string(request_.returnsDistinctResults ? "DISTINCT " : "") + selectList() +
                        " FROM " + executor_.fromClause() + executor_.whereClause() + groupClause() +
                        executor_.orderClause();
      if (request_.fetchLimit > 0 && matching.empty()) sql += " LIMIT " + std::to_string(request_.fetchLimit);
      connection_.query(sql, executor_.bindings(), [&](const SQLiteStatement& row) {
        std::vector<Value> values;
        int column = 0;
        for (const auto& property : properties_) values.push_back(columnValue(property, row, column));
        rows.push_back(std::move(values));
      });
    }
    // An aggregate over no stored rows still gives its one row, which the
    // pending objects then add to.
    if (aggregating_ && groupBy_.empty() && rows.size() == 1) {
      for (std::size_t i = 0; i < properties_.size(); ++i) {
        bool additive = properties_[i].aggregate == Aggregate::sum || properties_[i].aggregate == Aggregate::count;
        if (additive && rows[0][i].isNil()) rows[0][i] = zeroOf(properties_[i]);
      }
    }
    if (!matching.empty()) {
      merge(rows, matching);
      sort(rows);
      if (request_.fetchLimit > 0 && rows.size() > request_.fetchLimit) rows.resize(request_.fetchLimit);
    }
    return dictionaries(rows);
  }

 private:
  std::string selectList() const {
    std::string select;
    for (const auto& property : properties_) {
      std::string expression = property.column.sql;
      if (property.aggregate != Aggregate::none) {
        expression = std::string(kSQLFunctions[static_cast<int>(property.aggregate)]) + "(" + expression + ")";
      }
      select += (select.empty() ? "" : ", ") + expression;
      if (property.column.relationship && property.aggregate == Aggregate::none) {
        select += ", " + property.column.entitySQL;
      }
    }
    return select;
  }

  std::string groupClause() const {
    std::string group;
    for (auto index : groupBy_) {
      const auto& column = properties_[index].column;
      group += (group.empty() ? " GROUP BY " : ", ") + column.sql;
      bool literal = !column.entitySQL.empty() && std::isdigit(static_cast<unsigned char>(column.entitySQL.front()));
      if (column.relationship && !literal) group += ", " + column.entitySQL;
    }
    return group;
  }

  // An aggregate as its attribute's type: a date's minimum is a date, which
  // compares with the pending objects' dates.
  Value aggregateValue(const Property& property, const SQLiteStatement& row, int column) const {
    bool extreme = property.aggregate == Aggregate::min || property.aggregate == Aggregate::max;
    if (extreme && property.column.attribute) return connection_.attributeValue(*property.column.attribute, row, column);
    return row.value(column);
  }

  Value columnValue(const Property& property, const SQLiteStatement& row, int& column) const {
    int index = column++;
    if (property.aggregate != Aggregate::none) return aggregateValue(property, row, index);
    if (property.column.relationship) {
      int entityColumn = column++;
      if (row.isNull(index)) return Value();
      auto id = connection_.objectID(row.int64(entityColumn), row.int64(index));
      return id ? Value(*id) : Value();
    }
    return connection_.attributeValue(*property.column.attribute, row, index);
  }

  // Sums grouped by one to-one relationship with few destinations run as
  // one range query per destination. False when the request has another
  // shape; rows is then untouched.
  bool groupedPerKey(std::vector<std::vector<Value>>& rows) {
    if (groupBy_.size() != 1 || request_.returnsDistinctResults || request_.fetchLimit > 0 ||
        !request_.sortDescriptors.empty()) {
      return false;
    }
    const auto groupIndex = groupBy_.front();
    const auto& group = properties_[groupIndex];
    if (!group.column.relationship || group.keyPath.find('.') != std::string::npos) return false;
    for (std::size_t i = 0; i < properties_.size(); ++i) {
      if (i != groupIndex && properties_[i].aggregate == Aggregate::none) return false;
    }
    const auto& table = connection_.schema().table(group.column.relationship->destinationEntity());
    std::int64_t total = 0;
    connection_.query("SELECT COUNT(*) FROM " + quoteIdentifier(table.name), {},
                      [&total](const SQLiteStatement& row) { total = row.int64(0); });
    if (total > kMostGroupKeys) return false;
    std::vector<ManagedObjectID> keys;
    connection_.query("SELECT pk, ent FROM " + quoteIdentifier(table.name), {}, [&](const SQLiteStatement& row) {
      if (auto id = connection_.objectID(row.int64(1), row.int64(0))) keys.push_back(std::move(*id));
    });

    std::string select = "COUNT(*)";
    for (std::size_t i = 0; i < properties_.size(); ++i) {
      if (i == groupIndex) continue;
      select += std::string(", ") + kSQLFunctions[static_cast<int>(properties_[i].aggregate)] + "(" +
                properties_[i].column.sql + ")";
    }
    std::string where = executor_.whereClause();
    std::string base =
        "SELECT " + select + " FROM " + executor_.fromClause() + where + (where.empty() ? " WHERE " : " AND ");
    auto runGroup = [&](const std::string& sql, const std::vector<Value>& bindings, const Value& key) {
      connection_.query(sql, bindings, [&](const SQLiteStatement& row) {
        if (row.int64(0) == 0) return;
        std::vector<Value> values;
        int column = 1;
        for (std::size_t i = 0; i < properties_.size(); ++i) {
          values.push_back(i == groupIndex ? key : aggregateValue(properties_[i], row, column++));
        }
        rows.push_back(std::move(values));
      });
    };
    std::vector<Value> bindings = executor_.bindings();
    bindings.emplace_back();
    for (const auto& key : keys) {
      bindings.back() = Value(key.primaryKey());
      runGroup(base + group.column.sql + " = ?", bindings, Value(key));
    }
    runGroup(base + group.column.sql + " IS NULL", executor_.bindings(), Value());
    return true;
  }

  bool sameGroup(const std::vector<Value>& lhs, const std::vector<Value>& rhs) const {
    return std::all_of(groupBy_.begin(), groupBy_.end(), [&](std::size_t index) {
      return lhs[index] == rhs[index] && lhs[index].isNil() == rhs[index].isNil();
    });
  }

  void merge(std::vector<std::vector<Value>>& rows, const std::vector<std::shared_ptr<ManagedObject>>& matching) const {
    for (const auto& candidate : matching) {
      std::vector<Value> values;
      for (const auto& property : properties_) {
        Value value = candidate->valueForKeyPath(property.keyPath);
        if (auto object = value.get<Value::Object>()) value = Value((*object)->objectID());
        if (property.aggregate == Aggregate::count) value = Value(std::int64_t{value.isNil() ? 0 : 1});
        values.push_back(std::move(value));
      }
      if (!aggregating_) {
        if (!request_.returnsDistinctResults || std::find(rows.begin(), rows.end(), values) == rows.end()) {
          rows.push_back(std::move(values));
        }
        continue;
      }
      auto existing = std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return sameGroup(row, values); });
      if (existing == rows.end()) {
        rows.push_back(std::move(values));
        continue;
      }
      for (std::size_t i = 0; i < properties_.size(); ++i) {
        (*existing)[i] = combine(properties_[i].aggregate, (*existing)[i], values[i]);
      }
    }
  }

  void sort(std::vector<std::vector<Value>>& rows) const {
    std::vector<std::pair<std::size_t, bool>> keys;
    for (const auto& descriptor : request_.sortDescriptors) {
      auto found = std::find_if(properties_.begin(), properties_.end(),
                                [&descriptor](const Property& p) { return p.name == descriptor.key; });
      if (found != properties_.end()) keys.emplace_back(found - properties_.begin(), descriptor.ascending);
    }
    if (keys.empty()) return;
    std::stable_sort(rows.begin(), rows.end(), [&keys](const auto& lhs, const auto& rhs) {
      for (const auto& [index, ascending] : keys) {
        if (precedesInSortOrder(lhs[index], rhs[index], ascending)) return true;
        if (precedesInSortOrder(rhs[index], lhs[index], ascending)) return false;
      }
      return false;
    });
  }

  std::vector<std::map<std::string, Value>> dictionaries(const std::vector<std::vector<Value>>& rows) const {
    std::vector<std::map<std::string, Value>> result;
    result.reserve(rows.size());
    for (const auto& row : rows) {
      std::map<std::string, Value> dictionary;
      for (std::size_t i = 0; i < properties_.size(); ++i) {
        if (row[i].isNil()) continue;
        const auto type = properties_[i].resultType;
        dictionary[properties_[i].name] = type == AttributeType::undefinedAttributeType ? row[i] : typed(row[i], type);
      }
      result.push_back(std::move(dictionary));
    }
    return result;
  }

  const FetchRequest& request_;
  FetchExecutor executor_;
  StoreConnection& connection_;
  std::vector<Property> properties_;
  std::vector<std::size_t> groupBy_;
  bool aggregating_ = false;
};

}  // namespace

std::vector<std::map<std::string, Value>> fetchDictionaryResults(ManagedObjectContext& context,
                                                                 const FetchRequest& request) {
  return DictionaryFetch(context, request).run();
}

}  // namespace kestrona
