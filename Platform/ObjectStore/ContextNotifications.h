// The change notifications of contexts: names, user-info keys and the types
// of their values.
//
// Every context posts on NotificationCenter::defaultCenter(), on its own
// queue, with the context (a ManagedObjectContext*) as the object:
//
// - "NSManagedObjectContextWillSaveNotification" before every save, with no
//   user info, while insertedObjects(), updatedObjects(), deletedObjects()
//   and changedValues() still tell the pending state; also when nothing else
//   observes the context. A save with no changes posts nothing.
// - "NSManagedObjectContextDidSaveNotification" after a save reached its
//   parent (the store or a parent context), with ManagedObjectSet values
//   under "inserted", "updated" and "deleted" (each key present, possibly
//   empty). Deleted objects are no longer usable but keep their entity and
//   object ID.
// - "NSManagedObjectContextDidMergeChangesObjectIDsNotification" after a
//   context with automaticallyMergesChangesFromParent took in another
//   context's save, with ManagedObjectIDSet values under "insertedObjectIDs",
//   "updatedObjectIDs" and "deletedObjectIDs" (each present, possibly empty).
#pragma once

#include <memory>
#include <string_view>
#include <unordered_set>

#include "Platform/ObjectStore/ManagedObjectID.h"

namespace kestrona {

class ManagedObject;

using ManagedObjectSet = std::unordered_set<std::shared_ptr<ManagedObject>>;
using ManagedObjectIDSet = std::unordered_set<ManagedObjectID>;

// NSManagedObjectContextWillSaveNotification and its companions.
inline constexpr std::string_view NSManagedObjectContextWillSaveNotification =
    "NSManagedObjectContextWillSaveNotification";
inline constexpr std::string_view NSManagedObjectContextDidSaveNotification =
    "NSManagedObjectContextDidSaveNotification";
inline constexpr std::string_view NSManagedObjectContextDidMergeChangesObjectIDsNotification =
    "NSManagedObjectContextDidMergeChangesObjectIDsNotification";

inline constexpr std::string_view NSInsertedObjectsKey = "inserted";
inline constexpr std::string_view NSUpdatedObjectsKey = "updated";
inline constexpr std::string_view NSDeletedObjectsKey = "deleted";
inline constexpr std::string_view NSInsertedObjectIDsKey = "insertedObjectIDs";
inline constexpr std::string_view NSUpdatedObjectIDsKey = "updatedObjectIDs";
inline constexpr std::string_view NSDeletedObjectIDsKey = "deletedObjectIDs";

}  // namespace kestrona
