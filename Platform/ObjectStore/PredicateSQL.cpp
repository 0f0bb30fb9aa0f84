#include "Platform/ObjectStore/PredicateSQL.h"

#include <algorithm>

#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

[[noreturn]] void unsupported(const std::string& why) {
  throw StoreError(StoreErrorCode::managedObjectValidation, "The predicate cannot be run by the store: " + why);
}

std::string joined(const std::vector<std::string>& keyPath) {
  std::string path;
  for (const auto& component : keyPath) path += (path.empty() ? "" : ".") + component;
  return path;
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

const char* sqlOperator(PredicateOperator op) {
  switch (op) {
    case PredicateOperator::equalTo:
      return "IS";
    case PredicateOperator::notEqualTo:
      return "IS NOT";
    case PredicateOperator::lessThan:
      return "<";
    case PredicateOperator::lessThanOrEqualTo:
      return "<=";
    case PredicateOperator::greaterThan:
      return ">";
    case PredicateOperator::greaterThanOrEqualTo:
      return ">=";
    case PredicateOperator::in:
      return "IN";
  }
  return "IS";
}

PredicateOperator mirrored(PredicateOperator op) {
  switch (op) {
    case PredicateOperator::lessThan:
      return PredicateOperator::greaterThan;
    case PredicateOperator::lessThanOrEqualTo:
      return PredicateOperator::greaterThanOrEqualTo;
    case PredicateOperator::greaterThan:
      return PredicateOperator::lessThan;
    case PredicateOperator::greaterThanOrEqualTo:
      return PredicateOperator::lessThanOrEqualTo;
    default:
      return op;
  }
}

}  // namespace

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
  for (std::size_t i = 0; i < keyPath.size(); ++i) {
    const auto& key = keyPath[i];
    bool last = i + 1 == keyPath.size();
    const auto& layout = schema_.layout(*entity);
    const auto& columns = layout.table->columns;
    if (auto attribute = entity->attribute(key)) {
      if (!last) unsupported("\"" + joined(keyPath) + "\" goes on past an attribute");
      return Column{alias + "." + quoteIdentifier(columns[static_cast<std::size_t>(layout.slotColumn[attribute->slot()])].name),
                    "", attribute, nullptr};
    }
    auto relationship = entity->relationship(key);
    if (!relationship) unsupported("\"" + entity->name() + "\" has no property \"" + key + "\"");
    if (relationship->isToMany()) unsupported("\"" + joined(keyPath) + "\" goes through a to-many relationship");
    std::string keyColumn = alias + "." + quoteIdentifier(columns[static_cast<std::size_t>(layout.slotColumn[relationship->slot()])].name);
    if (last) {
      // A destination without sub-entities has one entity code: no column
      // needs reading (or grouping) for it.
      const auto& destination = relationship->destinationEntity();
      std::string entitySQL =
          destination.subentities().empty()
              ? std::to_string(schema_.entityCode(destination))
              : alias + "." +
                    quoteIdentifier(columns[static_cast<std::size_t>(layout.slotEntityColumn[relationship->slot()])].name);
      return Column{keyColumn, entitySQL, nullptr, relationship};
    }
    path += (path.empty() ? "" : ".") + key;
    auto found = joinAliases_.find(path);
    if (found == joinAliases_.end()) {
      std::string joinAlias = "j";
      joinAlias += std::to_string(joins_.size() + 1);
      const auto& destination = schema_.table(relationship->destinationEntity());
      joins_.push_back(" LEFT JOIN " + quoteIdentifier(destination.name) + " AS " + joinAlias + " ON " + joinAlias +
                       ".pk = " + keyColumn);
      found = joinAliases_.emplace(path, joinAlias).first;
      if (i == 0) joinedFirst_.push_back(relationship);
    }
    alias = found->second;
    entity = &relationship->destinationEntity();
  }
  unsupported("an empty key path");
}

std::string PredicateSQLCompiler::fromClause() const {
  std::string from = quoteIdentifier(schema_.table(entity_).name) + " AS t0";
  for (const auto& join : joins_) from += join;
  return from;
}

std::string PredicateSQLCompiler::bind(const Value& value) {
  bindings_.push_back(value);
  return "?";
}

std::string PredicateSQLCompiler::condition(const PredicateNode& node) { return condition(node, false); }

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
    // Constants on both sides (or a constant IN a key path, which needs a
    // to-many and is not supported): decide now.
    if (other->isKeyPath()) unsupported("IN over a key path");
    Value left = key->constant;
    Value right = other->constant;
    bool result = false;
    switch (op) {
      case PredicateOperator::equalTo:
        result = left == right;
        break;
      case PredicateOperator::notEqualTo:
        result = !(left == right);
        break;
      default: {
        auto order = left <=> right;
        result = (op == PredicateOperator::lessThan && order == std::partial_ordering::less) ||
                 (op == PredicateOperator::lessThanOrEqualTo &&
                  (order == std::partial_ordering::less || order == std::partial_ordering::equivalent)) ||
                 (op == PredicateOperator::greaterThan && order == std::partial_ordering::greater) ||
                 (op == PredicateOperator::greaterThanOrEqualTo &&
                  (order == std::partial_ordering::greater || order == std::partial_ordering::equivalent));
      }
    }
    return result ? "1" : "0";
  }

  std::string left = column(key->keyPath).sql;
  if (other->isKeyPath()) {
    if (op == PredicateOperator::in) unsupported("IN over a key path");
    std::string right = column(other->keyPath).sql;
    if (op == PredicateOperator::equalTo || op == PredicateOperator::notEqualTo) {
      return "(" + left + " " + sqlOperator(op) + " " + right + ")";
    }
    return twoValued("(" + left + " " + sqlOperator(op) + " " + right + ")");
  }

  const Value& constant = other->constant;
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
      auto stored = storedConstant(member);
      if (!stored) continue;
      list += (list.empty() ? "" : ", ") + bind(*stored);
    }
    if (list.empty()) return "0";
    return twoValued("(" + left + " IN (" + list + "))");
  }
  if (constant.isNil()) {
    switch (op) {
      case PredicateOperator::equalTo:
        return "(" + left + " IS NULL)";
      case PredicateOperator::notEqualTo:
        return "(" + left + " IS NOT NULL)";
      default:
        return "0";
    }
  }
  auto stored = storedConstant(constant);
  if (!stored) {
    // A temporary ID: no stored row points at it.
    return op == PredicateOperator::notEqualTo ? "1" : "0";
  }
  if (op == PredicateOperator::equalTo || op == PredicateOperator::notEqualTo) {
    return "(" + left + " " + sqlOperator(op) + " " + bind(*stored) + ")";
  }
  return twoValued("(" + left + " " + sqlOperator(op) + " " + bind(*stored) + ")");
}

}  // namespace kestrona
