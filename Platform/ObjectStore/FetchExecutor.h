// Runs one fetch request of a context: objects and counts here, the
// dictionary results in DictionaryFetch.h on top of it.
//
// Every request runs in two parts that are merged: the compiled SQL over
// the stored rows the context has not touched, and the same predicate
// evaluated in memory over the objects it has. The objects decided in
// memory are the context's inserted and changed objects of the entity, and
// the stored rows whose destination on any key path of the request
// (predicate, sort descriptors, fetched and grouped properties) the context
// has changed: the store would judge those by the destination's stored
// values. With no pending changes the SQL runs alone, as written.
//
// Failures: an unknown entity, and a key path that cannot be used (no such
// property, through a to-many, on past an attribute), throw StoreError
// managedObjectValidation (1550) naming the key path under
// "NSValidationErrorKey" and the entity under "NSValidationErrorEntity";
// the description says whether it was the predicate, a sort key or a
// property to fetch. A predicate constant of the wrong type for its key
// path is refused the same way (see PredicateSQL.h). A child context has no
// executor (it asks its parent); asked for one, it throws
// persistentStoreOperation.
//
// Internal to the store; used on the context's queue, for one request.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ObjectStore/FetchRequest.h"
#include "Platform/ObjectStore/PredicateSQL.h"

namespace kestrona {

class ManagedObject;
class ManagedObjectContext;
class StoreConnection;

class FetchExecutor {
 public:
  // Compiles the request's predicate and sort keys, and keyPaths (the
  // properties of a dictionary fetch), then collects what is decided in
  // memory.
  FetchExecutor(ManagedObjectContext& context, const FetchRequest& request,
                const std::vector<std::string>& keyPaths = {});

  std::vector<std::shared_ptr<ManagedObject>> objects();
  std::size_t count();

  // ---- For the dictionary fetch ----
  const FetchRequest& request() const noexcept { return request_; }
  const EntityDescription& entity() const noexcept { return entity_; }
  StoreConnection& connection() const noexcept { return connection_; }
  // The column of a key path compiled before; role names it in errors.
  PredicateSQLCompiler::Column column(const std::string& keyPath, std::string_view role);
  std::vector<Value>& bindings() { return compiler_.bindings(); }
  std::string fromClause() const { return compiler_.fromClause(); }
  // " WHERE ..." with the predicate, the entity filter and the exclusion of
  // the rows decided in memory; empty when there is nothing to say.
  std::string whereClause() const;
  std::string orderClause();
  // The objects decided in memory that match the predicate.
  std::vector<std::shared_ptr<ManagedObject>> matchingCandidates() const;

 private:
  bool entityMatches(const EntityDescription& entity) const;
  bool matches(ManagedObject& object) const;
  void collectPending();
  void prefetch(const std::vector<std::shared_ptr<ManagedObject>>& objects);

  ManagedObjectContext& context_;
  const FetchRequest& request_;
  StoreConnection& connection_;
  const EntityDescription& entity_;
  PredicateSQLCompiler compiler_;
  std::string where_;
  // Keys of stored rows decided in memory, and the objects to test there.
  std::set<std::int64_t> pendingKeys_;
  std::vector<std::shared_ptr<ManagedObject>> candidates_;
};

}  // namespace kestrona
