#include "Platform/ObjectStore/PredicateSQL.h"

#include <algorithm>

#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

std::string joined(const std::vector<std::string>& keyPath) {
  std::string path;
  for (const auto& component : keyPath) path += (path.empty() ? "" : ".") + component;
  return path;
}

[[noreturn]] void refuse(const EntityDescription& entity, const std::string& keyPath, const std::string& why) {
  throw StoreError(StoreErrorCode::managedObjectValidation, why,
                   {{StoreError::kEntityKey, entity.name()}, {StoreError::kKeyKey, keyPath}});
}

// The kinds of value that compare alike in SQL and in memory.
enum class Kind { number, date, text, data, object, list, opaque };

const char* describe(Kind kind) {
  static const char* names[] = {"a number", "a date", "text", "binary data", "an object", "a list",
                                "a transformed value"};
  return names[static_cast<int>(kind)];
}

Kind kindOf(const PredicateSQLCompiler::Column& column) {
  if (column.relationship) return Kind::object;
  switch (column.attribute->attributeType()) {
    case AttributeType::booleanAttributeType:
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType:
    case AttributeType::doubleAttributeType:
      return Kind::number;
    case AttributeType::dateAttributeType:
      return Kind::date;
    case AttributeType::stringAttributeType:
      return Kind::text;
    case AttributeType::binaryDataAttributeType:
      return Kind::data;
    default:
      return Kind::opaque;
  }
}

Kind kindOf(const Value& value) {
  if (value.number()) return Kind::number;
  if (value.get<Date>()) return Kind::date;
  if (value.get<std::string>()) return Kind::text;
  if (value.get<Data>()) return Kind::data;
  if (value.objectID()) return Kind::object;
  return Kind::list;
}

bool isOrdered(PredicateOperator op) {
  return op == PredicateOperator::lessThan || op == PredicateOperator::lessThanOrEqualTo ||
         op == PredicateOperator::greaterThan || op == PredicateOperator::greaterThanOrEqualTo;
}

bool orders(Kind kind) { return kind == Kind::number || kind == Kind::date || kind == Kind::text; }

// Whether two kinds compare alike in SQL and in memory under op.
bool comparable(Kind property, Kind other, PredicateOperator op) {
  return property == other && property != Kind::opaque && property != Kind::list && (!isOrdered(op) || orders(property));
}

// The stored form of a constant: booleans as integers, dates as seconds,
// objects and IDs as keys. None for a temporary ID, which no row has.
std::optional<Value> storedConstant(const Value& value) {
  if (auto b = value.get<bool>()) return Value(std::int64_t{*b ? 1 : 0});
  if (auto date = value.get<Date>()) return Value(date->timeIntervalSince1970());
  if (auto id = value.objectID()) {
    if (id->isTemporaryID()) return std::nullopt;
    return Value(id->primaryKey());
  }
  return value;
}

// Per operator, in declaration order: its SQL, and the operator with the
// sides swapped.
struct OperatorForm {
  const char* sql;
  PredicateOperator mirrored;
};
constexpr OperatorForm kOperatorForms[] = {
    {"IS", PredicateOperator::equalTo},
    {"IS NOT", PredicateOperator::notEqualTo},
    {"<", PredicateOperator::greaterThan},
    {"<=", PredicateOperator::greaterThanOrEqualTo},
    {">", PredicateOperator::lessThan},
    {">=", PredicateOperator::lessThanOrEqualTo},
    {"IN", PredicateOperator::in},
};

const char* sqlOperator(PredicateOperator op) { return kOperatorForms[static_cast<int>(op)].sql; }
PredicateOperator mirrored(PredicateOperator op) { return kOperatorForms[static_cast<int>(op)].mirrored; }

}  // namespace

void requireComparable(const EntityDescription& entity, const std::string& keyPath,
                       const PredicateSQLCompiler::Column& column, const Value& constant, PredicateOperator op) {
  if (constant.isNil()) return;
  if (auto members = constant.get<Value::Array>(); members && op == PredicateOperator::in) {
    for (const auto& member : *members) requireComparable(entity, keyPath, column, member, PredicateOperator::equalTo);
    return;
  }
  auto property = kindOf(column);
  auto kind = kindOf(constant);
  if (comparable(property, kind, op)) return;
  refuse(entity, keyPath,
         property == kind ? entity.name() + "." + keyPath + ", " + describe(property) + ", cannot be compared by " +
                                sqlOperator(op)
                          : "A predicate compares " + entity.name() + "." + keyPath + ", " + describe(property) +
                                ", with " + constant.description() + ", " + describe(kind));
}

PredicateSQLCompiler::PredicateSQLCompiler(const StoreSchema& schema, const EntityDescription& entity)
    : schema_(schema), entity_(entity) {}

PredicateSQLCompiler::Column PredicateSQLCompiler::column(const std::string& dottedKeyPath) {
  std::vector<std::string> keyPath;
  std::string_view rest = dottedKeyPath;
  while (true) {
    auto dot = rest.find('.');
    keyPath.emplace_back(rest.substr(0, dot));
    if (dot == std::string_view::npos) break;
    rest.remove_prefix(dot + 1);
  }
  return column(keyPath);
}

PredicateSQLCompiler::Column PredicateSQLCompiler::column(const std::vector<std::string>& keyPath) {
  const EntityDescription* entity = &entity_;
  std::string alias = "t0";
  std::string path;
  const std::string whole = joined(keyPath);
  for (std::size_t i = 0; i < keyPath.size(); ++i) {
    const auto& key = keyPath[i];
    bool last = i + 1 == keyPath.size();
    const auto& layout = schema_.layout(*entity);
    const auto& columns = layout.table->columns;
    auto columnName = [&](int index) { return quoteIdentifier(columns[static_cast<std::size_t>(index)].name); };
    if (auto attribute = entity->attribute(key)) {
      if (!last) refuse(entity_, whole, "The key path \"" + whole + "\" goes on past the attribute \"" + key + "\"");
      return Column{alias + "." + columnName(layout.slotColumn[attribute->slot()]), "", attribute, nullptr};
    }
    auto relationship = entity->relationship(key);
    if (!relationship) refuse(entity_, whole, "\"" + entity->name() + "\" has no property \"" + key + "\"");
    if (relationship->isToMany()) {
      refuse(entity_, whole, "The key path \"" + whole + "\" goes through the to-many relationship \"" + key + "\"");
    }
    std::string keyColumn = alias + "." + columnName(layout.slotColumn[relationship->slot()]);
    const auto& destination = relationship->destinationEntity();
    if (last) {
      // A destination without sub-entities has one entity code: no column
      // needs reading (or grouping) for it.
      std::string entitySQL = destination.subentities().empty()
                                  ? std::to_string(schema_.entityCode(destination))
                                  : alias + "." + columnName(layout.slotEntityColumn[relationship->slot()]);
      return Column{keyColumn, entitySQL, nullptr, relationship};
    }
    path += (path.empty() ? "" : ".") + key;
    auto found = joinAliases_.find(path);
    if (found == joinAliases_.end()) {
      std::string joinAlias = "j" + std::to_string(joins_.size() + 1);
      joinClauses_.push_back(" LEFT JOIN " + quoteIdentifier(schema_.table(destination).name) + " AS " + joinAlias +
                             " ON " + joinAlias + ".pk = " + keyColumn);
      joins_.push_back(Join{joinAlias, &destination});
      found = joinAliases_.emplace(path, joinAlias).first;
    }
    alias = found->second;
    entity = &destination;
  }
  refuse(entity_, whole, "An empty key path");
}

std::string PredicateSQLCompiler::fromClause() const {
  std::string from = quoteIdentifier(schema_.table(entity_).name) + " AS t0";
  for (const auto& join : joinClauses_) from += join;
  return from;
}

std::string PredicateSQLCompiler::bind(const Value& value) {
  bindings_.push_back(value);
  return "?";
}

std::string PredicateSQLCompiler::condition(const PredicateNode& node) {
  try {
    return condition(node, false);
  } catch (const StoreError& error) {
    throw StoreError(error.kind(), "The predicate cannot be run by the store: " + error.localizedDescription(),
                     error.userInfo());
  }
}

std::string PredicateSQLCompiler::condition(const PredicateNode& node, bool negated) {
  switch (node.kind) {
    case PredicateNode::Kind::truePredicate:
      return "1";
    case PredicateNode::Kind::falsePredicate:
      return "0";
    case PredicateNode::Kind::negation:
      return "NOT (" + condition(*node.children.front(), !negated) + ")";
    case PredicateNode::Kind::conjunction:
    case PredicateNode::Kind::disjunction: {
      std::string text = "(";
      for (std::size_t i = 0; i < node.children.size(); ++i) {
        if (i) text += node.kind == PredicateNode::Kind::conjunction ? " AND " : " OR ";
        text += condition(*node.children[i], negated);
      }
      return text + ")";
    }
    case PredicateNode::Kind::comparison:
      return comparison(node, negated);
  }
  return "0";
}

std::string PredicateSQLCompiler::comparison(const PredicateNode& node, bool negated) {
  PredicateOperator op = node.op;
  const PredicateExpression* key = &node.left;
  const PredicateExpression* other = &node.right;
  if (!key->isKeyPath() && other->isKeyPath() && op != PredicateOperator::in) {
    std::swap(key, other);
    op = mirrored(op);
  }
  // Two valued: a NULL comparison reads as false even under a NOT.
  auto twoValued = [negated](const std::string& sql) { return negated ? "COALESCE(" + sql + ", 0)" : sql; };
  if (!key->isKeyPath()) {
    // A constant IN a key path would need a to-many, which is not supported.
    if (other->isKeyPath()) refuse(entity_, joined(other->keyPath), "IN over a key path is not supported");
    // Constants on both sides: decided now, by the in-memory rules.
    return evaluateComparison(op, key->constant, other->constant) ? "1" : "0";
  }

  const std::string keyPath = joined(key->keyPath);
  const Column left = column(key->keyPath);
  if (other->isKeyPath()) {
    if (op == PredicateOperator::in) refuse(entity_, keyPath, "IN over a key path is not supported");
    const Column right = column(other->keyPath);
    if (!comparable(kindOf(left), kindOf(right), op)) {
      refuse(entity_, keyPath, "A predicate compares " + keyPath + ", " + describe(kindOf(left)) + ", with " +
                                   joined(other->keyPath) + ", " + describe(kindOf(right)));
    }
    std::string sql = "(" + left.sql + " " + sqlOperator(op) + " " + right.sql + ")";
    return isOrdered(op) ? twoValued(sql) : sql;
  }

  const Value& constant = other->constant;
  requireComparable(entity_, keyPath, left, constant, op);
  if (op == PredicateOperator::in) {
    const Value::Array* members = constant.get<Value::Array>();
    Value::Array single;
    if (!members) {
      if (constant.isNil()) return "0";
      single.push_back(constant);
      members = &single;
    }
    std::string list;
    for (const auto& member : *members) {
      if (member.isNil()) continue;
      if (auto stored = storedConstant(member)) list += (list.empty() ? "" : ", ") + bind(*stored);
    }
    if (list.empty()) return "0";
    return twoValued("(" + left.sql + " IN (" + list + "))");
  }
  if (constant.isNil()) {
    if (op == PredicateOperator::equalTo) return "(" + left.sql + " IS NULL)";
    if (op == PredicateOperator::notEqualTo) return "(" + left.sql + " IS NOT NULL)";
    return "0";
  }
  auto stored = storedConstant(constant);
  // A temporary ID: no stored row points at it.
  if (!stored) return op == PredicateOperator::notEqualTo ? "1" : "0";
  std::string sql = "(" + left.sql + " " + sqlOperator(op) + " " + bind(*stored) + ")";
  return isOrdered(op) ? twoValued(sql) : sql;
}

}  // namespace kestrona
