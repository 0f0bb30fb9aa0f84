// Batch requests: deletes and updates straight on the stored rows.
//
// A BatchDeleteRequest deletes the rows its fetch request matches, a
// BatchUpdateRequest sets attributes of the rows its predicate matches,
// each in one statement and one transaction; what the context holds
// (pending changes included) plays no part. No delete rules run and no
// context is told, not even the executing one: contexts take the change in
// when they fetch again or refresh. Both count for optimistic locking: an
// update raises the version of every row it changes and a delete leaves no
// row, so a context that read a row before and saves a change of it later
// meets a conflict, as it would with any other writer.
//
// Failures: StoreError managedObjectValidation (1550) for an unknown
// entity, a key that is not an attribute of it, a transformable attribute,
// or a value of another type than the attribute's (naming the key under
// "NSValidationErrorKey"); the predicate is checked as for a fetch.
// Internal to the store; used on the context's queue.
#pragma once

#include "Platform/ObjectStore/FetchRequest.h"

namespace kestrona {

class ManagedObjectContext;

class BatchRequestExecutor {
 public:
  static PersistentStoreResult execute(ManagedObjectContext& context, const BatchDeleteRequest& request);
  static PersistentStoreResult execute(ManagedObjectContext& context, const BatchUpdateRequest& request);
};

}  // namespace kestrona
