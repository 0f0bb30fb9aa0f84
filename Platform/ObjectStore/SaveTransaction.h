// One save of a context, written to the file in one transaction.
//
// Under the connection's lock and the file's write lock (BEGIN IMMEDIATE):
// primary keys for the inserted objects, INSERT of inserted rows, UPDATE of
// the changed columns of updated rows (each raising the row's version),
// DELETE of deleted rows, COMMIT. Before it writes an updated row it reads
// it: a row gone, or one whose version moved on since the context read it,
// is a conflict that the request's merge policy resolves (see
// MergePolicyType); under the error policy, and for rows gone under every
// policy, the save fails with StoreError managedObjectMerge (133020)
// carrying a std::vector<RowConflict>. Deleting a row whose version moved
// on is a conflict under the error policy only. Any failure rolls the whole
// transaction back: nothing of the save is in the file. Other failures are
// persistentStoreSave (134030), with SQLite's error in the description.
#pragma once

#include "Platform/ObjectStore/PersistentStoreCoordinator.h"

namespace kestrona {

class StoreConnection;

PersistentStoreCoordinator::SaveResult runSaveTransaction(StoreConnection& connection,
                                                          const PersistentStoreCoordinator::SaveRequest& request);

}  // namespace kestrona
