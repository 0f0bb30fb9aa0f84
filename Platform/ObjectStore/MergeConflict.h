// Conflict records, as a failed save reports them.
//
// A save with the default merge policy fails with StoreError
// managedObjectMerge (133020) when a row it updates or deletes changed in the
// store since the context read it (each row carries a version that every
// save raises). The error keeps the records under
// "NSPersistentStoreSaveConflictsErrorKey" as an ErrorUserInfoObject holding
// a std::vector<MergeConflict>, one per object, in the order of the save.
//
// The records hold live objects of the context that failed to save: they
// are read on that context's queue, and an error that leaves it is detached
// first (the store stack's detachedFromManagedObjects turns them into a
// count and URI strings). ConstraintConflict is the record of a uniqueness
// constraint; the store reports it in the same way under the same key.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class ManagedObject;

struct MergeConflict {
  // The object of the failing context whose row changed.
  std::shared_ptr<ManagedObject> sourceObject;
  // The object's values in the context, the values the context last read,
  // and the values stored now (empty when the row was deleted meanwhile);
  // attributes and to-ones (as object IDs) by property name.
  std::map<std::string, Value> objectSnapshot;
  std::map<std::string, Value> cachedSnapshot;
  std::map<std::string, Value> persistedSnapshot;
  // The row's version when the context read it, and in the store now (0
  // when the row is gone).
  std::int64_t oldVersionNumber = 0;
  std::int64_t newVersionNumber = 0;
};

struct ConstraintConflict {
  // The property names of the constraint.
  std::vector<std::string> constraint;
  // The objects that share the constrained values.
  std::vector<std::shared_ptr<ManagedObject>> conflictingObjects;
};

}  // namespace kestrona
