// Filters over objects, written in the format language.
//
// Predicate::withFormat("task IN %@ AND end != nil", {taskIDs}) parses a
// format string: comparisons with =, ==, !=, <, <=, >, >= and IN; the
// constants nil, YES, NO, TRUE, FALSE (any case); AND, OR, NOT, &&, ||, !
// and parentheses; key paths through to-one relationships ("task.archived");
// and %@, which takes the next argument (a string, number, date, object,
// object ID or an array of them). Keywords and IN are case-insensitive.
// A format that cannot be parsed, or that has fewer arguments than %@,
// throws PredicateFormatError.
//
// Semantics are those of the format language, not SQL's: a missing value
// is nil; nil equals only nil; an ordered comparison with nil is false
// ("end >= %@" does not match a nil end, "end != nil" does); an object
// equals its own object ID. evaluateWithObject applies this in memory; the
// store compiles the same tree to SQL with the same results.
// Predicates are immutable values; one holding objects must stay on their
// context's queue.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class ManagedObject;

class PredicateFormatError : public Error {
 public:
  PredicateFormatError(std::string description, std::string format)
      : Error("PredicateFormatError", 0, std::move(description), {{"format", std::move(format)}}) {}
};

enum class PredicateOperator {
  equalTo,
  notEqualTo,
  lessThan,
  lessThanOrEqualTo,
  greaterThan,
  greaterThanOrEqualTo,
  in,
};

struct PredicateExpression {
  // A key path when keyPath is not empty; the constant otherwise.
  std::vector<std::string> keyPath;
  Value constant;
  bool isKeyPath() const noexcept { return !keyPath.empty(); }
};

struct PredicateNode {
  enum class Kind { comparison, conjunction, disjunction, negation, truePredicate, falsePredicate };
  Kind kind = Kind::truePredicate;
  PredicateOperator op = PredicateOperator::equalTo;
  PredicateExpression left;
  PredicateExpression right;
  std::vector<std::shared_ptr<const PredicateNode>> children;
};

// The meaning of one comparison in memory: what evaluateWithObject gives
// for left op right.
bool evaluateComparison(PredicateOperator op, const Value& left, const Value& right);

class Predicate {
 public:
  static Predicate withFormat(std::string_view format, std::vector<Value> arguments = {});
  static Predicate andPredicateWithSubpredicates(const std::vector<Predicate>& subpredicates);
  static Predicate orPredicateWithSubpredicates(const std::vector<Predicate>& subpredicates);
  static Predicate notPredicateWithSubpredicate(const Predicate& subpredicate);
  static Predicate withValue(bool value);

  bool evaluateWithObject(ManagedObject& object) const;
  const PredicateNode& root() const noexcept { return *root_; }
  // A readable form for logs: the format with its arguments filled in.
  std::string predicateFormat() const;

 private:
  explicit Predicate(std::shared_ptr<const PredicateNode> root) : root_(std::move(root)) {}
  std::shared_ptr<const PredicateNode> root_;
};

}  // namespace kestrona
