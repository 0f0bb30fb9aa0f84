// What a fetch asks for, and the batch requests.
//
// FetchRequest names its entity by name (or by description), and may add a
// predicate, sort descriptors, a fetch limit and the result shape. The
// dictionary shape (resultType dictionaryResultType) returns one map per row
// with the propertiesToFetch: attribute names, to-one relationship names
// (whose value is the destination's object ID) and expression descriptions
// ("sum:", "count:", "min:", "max:" over a key path), optionally grouped by
// propertiesToGroupBy and made distinct. Requests are plain values; the
// context that executes them checks them (see ManagedObjectContext.h).
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/Predicate.h"
#include "Platform/ObjectStore/SortDescriptor.h"

namespace kestrona {

class Expression {
 public:
  static Expression expressionForKeyPath(std::string keyPath) { return Expression(std::move(keyPath), {}); }
  // A function ("sum:", "count:", "min:", "max:") over one key-path argument.
  static Expression expressionForFunction(std::string function, const std::vector<Expression>& arguments) {
    return Expression(arguments.empty() ? std::string() : arguments.front().keyPath_, std::move(function));
  }
  const std::string& keyPath() const noexcept { return keyPath_; }
  // Empty for a key-path expression.
  const std::string& function() const noexcept { return function_; }

 private:
  Expression(std::string keyPath, std::string function) : keyPath_(std::move(keyPath)), function_(std::move(function)) {}
  std::string keyPath_;
  std::string function_;
};

struct ExpressionDescription {
  std::string name;
  Expression expression = Expression::expressionForKeyPath("");
  AttributeType expressionResultType = AttributeType::undefinedAttributeType;
};

using PropertyToFetch = std::variant<std::string, ExpressionDescription>;

enum class FetchRequestResultType : int {
  managedObjectResultType = 0,
  managedObjectIDResultType = 1,
  dictionaryResultType = 2,
  countResultType = 4,
};

struct FetchRequest {
  FetchRequest() = default;
  explicit FetchRequest(std::string name) : entityName(std::move(name)) {}
  static FetchRequest fetchRequestWithEntityName(std::string name) { return FetchRequest(std::move(name)); }

  std::string entityName;
  // Takes precedence over entityName when set.
  const EntityDescription* entity = nullptr;
  std::optional<Predicate> predicate;
  std::vector<SortDescriptor> sortDescriptors;
  std::size_t fetchLimit = 0;  // 0: no limit
  bool includesPropertyValues = true;
  bool returnsObjectsAsFaults = true;
  bool includesSubentities = true;
  std::vector<std::string> relationshipKeyPathsForPrefetching;
  FetchRequestResultType resultType = FetchRequestResultType::managedObjectResultType;
  std::vector<PropertyToFetch> propertiesToFetch;
  std::vector<std::string> propertiesToGroupBy;
  bool returnsDistinctResults = false;
};

enum class BatchDeleteRequestResultType : int { resultTypeStatusOnly = 0, resultTypeObjectIDs = 1, resultTypeCount = 2 };
enum class BatchUpdateRequestResultType : int {
  statusOnlyResultType = 0,
  updatedObjectIDsResultType = 1,
  updatedObjectsCountResultType = 2,
};

// Deletes the rows the fetch request matches, straight in the store: no
// delete rules run and no context sees the change until it refetches.
struct BatchDeleteRequest {
  FetchRequest fetchRequest;
  BatchDeleteRequestResultType resultType = BatchDeleteRequestResultType::resultTypeStatusOnly;
};

// Sets attributes of the rows that match, straight in the store.
struct BatchUpdateRequest {
  explicit BatchUpdateRequest(std::string name) : entityName(std::move(name)) {}
  std::string entityName;
  std::optional<Predicate> predicate;
  std::map<std::string, Value> propertiesToUpdate;
  BatchUpdateRequestResultType resultType = BatchUpdateRequestResultType::statusOnlyResultType;
};

using PersistentStoreRequest = std::variant<FetchRequest, BatchDeleteRequest, BatchUpdateRequest>;

// What execute() gives back; which fields are filled depends on the request
// and its result type.
struct PersistentStoreResult {
  std::vector<std::shared_ptr<ManagedObject>> objects;
  std::vector<std::map<std::string, Value>> dictionaries;
  std::vector<ManagedObjectID> objectIDs;
  std::optional<std::int64_t> count;
  bool status = true;
};

}  // namespace kestrona
