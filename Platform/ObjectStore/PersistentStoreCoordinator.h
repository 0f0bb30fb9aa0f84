// The coordinator: one model and one SQLite store file.
//
// A coordinator is made with a model (make), then given its store with
// addPersistentStore(url, options). Opening creates the file when needed,
// refuses a file that is not a store without changing it, and brings the
// schema of an older store to the model, taking the file's write lock only
// when something must change (see StoreMigration.h and
// docs/architecture.md). A removed or retyped property, or migration
// switched off while the file needs it, fails the open with StoreError
// migration (134110); a file that is not a store fails with
// persistentStoreOpen (134080). Only one store per coordinator.
//
// The store keeps its identifier (a UUID made when the file is created) and
// free metadata in the file. managedObjectIDForURIRepresentation turns a
// permanent URI of this store back into an ID, and gives none for a URI of
// another store, an unknown entity or a temporary ID.
//
// The section "for contexts" is the contexts' road to the file; it is not
// for other callers, and no SQL passes through it. Threading: every public
// call may come from any thread; the file is used under one mutex, and a
// save holds it for its whole transaction. Contexts whose parent is the
// coordinator register themselves (weakly, ContextRegistry.h) so that a save
// of one can reach the others.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/UUID.h"
#include "Platform/ObjectStore/ContextRegistry.h"
#include "Platform/ObjectStore/ManagedObjectID.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class ManagedObjectContext;
class StoreConnection;

// How a save resolves a row that changed in the store since the context
// read it (its version moved on): errorMergePolicyType fails the save
// (StoreError managedObjectMerge, 133020, with conflict records under
// "NSPersistentStoreSaveConflictsErrorKey", see MergeConflict.h); the
// by-property policies keep, for each property, the context's change
// (object trump) or the stored value (store trump), and take the store's
// values for properties the context did not change; overwrite writes the
// context's object whole; rollback keeps the stored row whole. Updating a
// row that is gone fails under every policy; deleting a changed row fails
// under the error policy only.
enum class MergePolicyType : int {
  errorMergePolicyType = 0,
  mergeByPropertyStoreTrumpMergePolicyType = 1,
  mergeByPropertyObjectTrumpMergePolicyType = 2,
  overwriteMergePolicyType = 3,
  rollbackMergePolicyType = 4,
};

struct PersistentStoreOptions {
  // NSMigratePersistentStoresAutomaticallyOption
  bool migratePersistentStoresAutomatically = true;
  // NSInferMappingModelAutomaticallyOption
  bool inferMappingModelAutomatically = true;
};

struct PersistentStore {
  static constexpr std::string_view kSQLiteStoreType = "SQLite";
  std::string type;
  std::filesystem::path URL;
  UUID identifier;
};

class PersistentStoreCoordinator {
 public:
  [[nodiscard]] static std::shared_ptr<PersistentStoreCoordinator> make(
      std::shared_ptr<const ManagedObjectModel> model);
  ~PersistentStoreCoordinator();
  PersistentStoreCoordinator(const PersistentStoreCoordinator&) = delete;
  PersistentStoreCoordinator& operator=(const PersistentStoreCoordinator&) = delete;

  const PersistentStore& addPersistentStore(const std::filesystem::path& url, PersistentStoreOptions options = {});
  std::vector<PersistentStore> persistentStores() const;
  const ManagedObjectModel& managedObjectModel() const noexcept { return *model_; }
  const std::shared_ptr<const ManagedObjectModel>& managedObjectModelPointer() const noexcept { return model_; }

  [[nodiscard]] std::optional<ManagedObjectID> managedObjectIDForURIRepresentation(std::string_view uri) const;

  // Free text metadata kept in the file, with "NSStoreUUID" and
  // "NSStoreType" filled in by the store.
  std::map<std::string, std::string> metadata() const;
  // Replaces the caller's metadata (the two store keys cannot be changed).
  void setMetadata(const std::map<std::string, std::string>& metadata);

  // ---- For contexts ----

  // The identifier of the one store; fatal before addPersistentStore.
  const UUID& storeIdentifier() const;

  // One row as stored: its values in the entity's slot layout (to-ones as
  // object IDs) and its version.
  struct StoredRow {
    std::vector<Value> values;
    std::int64_t version = 0;
  };
  // The stored row, or none when it is gone.
  [[nodiscard]] std::optional<StoredRow> loadRow(const ManagedObjectID& id) const;
  // The IDs of the destinations of a to-many relationship as stored.
  std::vector<ManagedObjectID> relatedObjectIDs(const ManagedObjectID& owner,
                                                const RelationshipDescription& relationship) const;
  // Whether a row exists.
  [[nodiscard]] bool rowExists(const ManagedObjectID& id) const;

  // Reserves primary keys: one permanent ID per temporary ID, in order.
  std::vector<ManagedObjectID> obtainPermanentIDs(const std::vector<ManagedObjectID>& temporaryIDs);

  struct RowChange {
    ManagedObjectID objectID;
    // Slot values of the entity: all slots for an insert, only changedSlots
    // for an update.
    std::vector<Value> values;
    std::vector<std::size_t> changedSlots;
    // For an update: the values and the version the context last read, to
    // find conflicts (a version of 0, unknown, compares the values).
    std::vector<Value> snapshot;
    std::int64_t version = 0;
  };
  // A row to delete, with the version the context last read (0, unknown,
  // is not checked).
  struct RowDeletion {
    ManagedObjectID objectID;
    std::int64_t version = 0;
  };
  // An update that found its row changed or gone, or a deletion under the
  // error policy that found its row changed, as the error of a failed
  // save carries it (an ErrorUserInfoObject holding a
  // std::vector<RowConflict> under "NSPersistentStoreSaveConflictsErrorKey");
  // the context turns them into MergeConflict records.
  struct RowConflict {
    ManagedObjectID objectID;
    // The row as stored now; none when it was deleted.
    std::optional<StoredRow> stored;
    std::int64_t oldVersion = 0;
  };
  struct SaveRequest {
    std::vector<RowChange> inserted;  // IDs may be temporary
    std::vector<RowChange> updated;
    std::vector<RowDeletion> deleted;
    MergePolicyType mergePolicy = MergePolicyType::errorMergePolicyType;
  };
  struct SaveResult {
    // The permanent ID of each temporary ID that was inserted.
    std::map<ManagedObjectID, ManagedObjectID> permanentIDs;
    // The row as now stored, for each update that was merged with a
    // change made in the store meanwhile.
    std::map<ManagedObjectID, std::vector<Value>> mergedRows;
    // The version of every inserted (by permanent ID) and updated row after
    // the save.
    std::map<ManagedObjectID, std::int64_t> versions;
  };
  // Writes all changes in one transaction, or none of them. To-one values
  // that point at a temporary ID are stored as its new key. Conflicts are
  // resolved by the request's merge policy.
  SaveResult save(const SaveRequest& request);

  // Registers context (whose parent is this coordinator) until it
  // unregisters, which its destructor does; both from any thread.
  void registerContext(const ManagedObjectContext* context, std::weak_ptr<ManagedObjectContext> reference);
  void unregisterContext(const ManagedObjectContext* context);
  // The registered contexts still alive.
  std::vector<std::shared_ptr<ManagedObjectContext>> registeredContexts() const;

 private:
  // The store's own executors of fetches and batch requests reach the file
  // through StoreConnection::of.
  friend class StoreConnection;

  explicit PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model);
  // The open file; fatal before addPersistentStore.
  StoreConnection& connection() const;

  std::shared_ptr<const ManagedObjectModel> model_;
  // Guards store_ and connection_ while the store is added.
  mutable std::mutex mutex_;
  std::unique_ptr<StoreConnection> connection_;
  std::optional<PersistentStore> store_;
  ContextRegistry contexts_;
};

}  // namespace kestrona
