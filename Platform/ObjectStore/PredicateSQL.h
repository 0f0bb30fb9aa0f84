// Compiles predicates and key paths to SQL over the store's schema; used by
// the fetch executor and the batch requests only.
//
// The table of the fetched entity is "t0"; each to-one relationship on a key
// path adds one LEFT JOIN of its destination's table ("j1", "j2", ...), made
// once per path. Conditions keep the format language's two-valued logic:
// "== nil" is IS NULL, == and != are IS and IS NOT, and an ordered
// comparison or IN under a NOT is wrapped so that a NULL reads as false
// before it is negated. Object and object-ID constants become primary keys;
// a temporary ID matches no stored row. Constants are bound as parameters,
// in order, into bindings().
//
// SQL and the in-memory evaluation (Predicate::evaluateWithObject) must
// never disagree, so a comparison they would judge differently is refused:
// a constant or a second key path of another kind than the property (a
// number against a date, text against a number, anything but an object or
// object ID against a relationship), an ordered comparison of a
// relationship or of binary data, and any comparison of a transformable
// attribute but with nil. Numbers of every width and booleans compare with
// one another, as they do in memory. Refusals, unknown keys and key paths
// through to-many relationships throw StoreError managedObjectValidation
// (1550) with the entity under "NSValidationErrorEntity" and the key path
// under "NSValidationErrorKey".
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/Predicate.h"
#include "Platform/ObjectStore/StoreSchema.h"

namespace kestrona {

class PredicateSQLCompiler {
 public:
  // What a key path resolves to: its SQL expression and the property at
  // its end (one of attribute or relationship is set). For a to-one, entitySQL
  // is the destination's entity-code column, or the code itself when the
  // destination has no sub-entities.
  struct Column {
    std::string sql;
    std::string entitySQL;
    const AttributeDescription* attribute = nullptr;
    const RelationshipDescription* relationship = nullptr;
  };
  // One LEFT JOIN: its alias and the entity whose table it joins.
  struct Join {
    std::string alias;
    const EntityDescription* destination = nullptr;
  };

  PredicateSQLCompiler(const StoreSchema& schema, const EntityDescription& entity);

  Column column(const std::vector<std::string>& keyPath);
  Column column(const std::string& dottedKeyPath);
  std::string condition(const PredicateNode& node);
  // "<table> AS t0 LEFT JOIN ..." for the joins made so far.
  std::string fromClause() const;
  const std::vector<Join>& joins() const noexcept { return joins_; }
  std::vector<Value>& bindings() { return bindings_; }

 private:
  std::string condition(const PredicateNode& node, bool negated);
  std::string comparison(const PredicateNode& node, bool negated);
  std::string bind(const Value& value);

  const StoreSchema& schema_;
  const EntityDescription& entity_;
  std::map<std::string, std::string> joinAliases_;
  std::vector<std::string> joinClauses_;
  std::vector<Join> joins_;
  std::vector<Value> bindings_;
};

// Refuses, as above, a comparison by op of the property at keyPath (of
// entity, compiled to column) with constant; nil always passes.
void requireComparable(const EntityDescription& entity, const std::string& keyPath,
                       const PredicateSQLCompiler::Column& column, const Value& constant, PredicateOperator op);

}  // namespace kestrona
