// A scratch pad of managed objects over the coordinator.
//
// A context registers at most one object per object ID, tracks the objects
// inserted, changed and deleted since its last save, and writes them with
// save() in one SQLite transaction: all of them or none. rollback() drops
// every pending change. Fetches and counts see the pending changes: an
// inserted or changed object is matched by its current values, and a
// deleted one is never returned (see docs/architecture.md, "Object store").
//
// Kinds: a private-queue context runs performAndWait blocks on the calling
// thread, one thread at a time; a main-queue context runs them on the main
// loop (MainLoop::main(), or the loop given to make). Everything else must
// be called on the context's queue: inside performAndWait, or on the main
// thread for a main-queue context. A context is held by std::shared_ptr; the
// objects it registered are valid while it lives and become unusable
// (managedObjectContext() null) when it goes.
//
// Failures: a failed validation throws StoreError 1550/1570/1600 with the
// object under "NSValidationErrorObject" and leaves the pending changes as
// they were; a failed write throws persistentStoreSave (134030) and also
// keeps them; existingObjectWithID of an object that is gone throws
// managedObjectReferentialIntegrity (133000). A save that finds rows changed
// or deleted in the store since this context read them resolves them by the
// merge policy; the default fails with managedObjectMerge (133020) carrying
// a std::vector<MergeConflict> (MergeConflict.h) and keeps the changes.
//
// Notifications: save() posts will-save and did-save, and a merge posts
// did-merge, on NotificationCenter::defaultCenter() from the context's
// queue, with the context as object (see ContextNotifications.h).
//
// Merging: a context whose parent is the coordinator and that has
// automaticallyMergesChangesFromParent takes in every save of another
// context on the same coordinator, on its own queue. A main-queue context
// is sent the work on its main loop (the saving thread does not wait for
// it); a private-queue context has no thread of its own and takes the
// changes when its queue is next entered, at the start of the outermost
// performAndWait. Merging refreshes the registered objects whose rows were
// updated (an object without pending changes takes the stored values; with
// pending changes the merge policy decides, see mergePolicy), registers
// nothing new, makes registered objects whose rows were deleted unusable
// (their pending changes are dropped: the row they would change is gone),
// and then posts did-merge with the IDs of all of the save's changes. Set
// the coordinator after construction: the coordinator holds a weak
// reference to each context for this, which needs the context's
// std::shared_ptr.
//
// A child context (with a parent context instead of a coordinator) reads
// through its parent, sees the parent's pending changes, and saves into its
// parent; dictionary results are not offered there, and it does not merge
// by itself.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/ContextQueue.h"
#include "Platform/ObjectStore/FetchRequest.h"
#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/ObjectRegistry.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"

namespace kestrona {

class MainLoop;
class StoreError;

enum class ManagedObjectContextConcurrencyType : int {
  privateQueueConcurrencyType = 1,
  mainQueueConcurrencyType = 2,
};

class ManagedObjectContext : public std::enable_shared_from_this<ManagedObjectContext> {
 public:
  using ConcurrencyType = ManagedObjectContextConcurrencyType;

  // initWithConcurrencyType:. A main-queue context uses MainLoop::main().
  [[nodiscard]] static std::shared_ptr<ManagedObjectContext> make(ConcurrencyType type);
  [[nodiscard]] static std::shared_ptr<ManagedObjectContext> make(ConcurrencyType type,
                                                                  std::unique_ptr<ContextQueue> queue);
  virtual ~ManagedObjectContext();
  ManagedObjectContext(const ManagedObjectContext&) = delete;
  ManagedObjectContext& operator=(const ManagedObjectContext&) = delete;

  ConcurrencyType concurrencyType() const noexcept { return concurrencyType_; }
  // The coordinator, or the parent's for a child context.
  std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator() const;
  void setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator);
  std::shared_ptr<ManagedObjectContext> parentContext() const { return parent_; }
  void setParentContext(std::shared_ptr<ManagedObjectContext> parent);
  // How this context's save resolves rows changed in the store meanwhile,
  // and how a merge treats an object with pending changes: the by-property
  // policies decide per property (object trump keeps the unsaved value,
  // store trump takes the stored one), overwrite keeps the unsaved object
  // whole, rollback takes the stored row whole; the default (error) keeps
  // the pending changes and the version they were made on, so the next
  // save fails with a conflict instead of losing either edit.
  MergePolicyType mergePolicy() const noexcept { return mergePolicy_; }
  void setMergePolicy(MergePolicyType policy) noexcept { mergePolicy_ = policy; }
  bool automaticallyMergesChangesFromParent() const noexcept { return mergesFromParent_.load(); }
  void setAutomaticallyMergesChangesFromParent(bool merges);

  // Runs block on the context's queue and waits; re-entrant. The outermost
  // call first merges the saves waiting for this context.
  void performAndWait(const std::function<void()>& block);
  // The throwing form: returns the block's value, passes on what it throws.
  template <typename Function>
  auto performAndWaitReturning(Function&& function) -> decltype(function());

  // ---- Objects ----
  std::shared_ptr<ManagedObject> insertNewObject(std::string_view entityName);
  std::shared_ptr<ManagedObject> insertNewObject(const EntityDescription& entity);
  // Deletes object now, following the delete rules of its relationships.
  void deleteObject(const std::shared_ptr<ManagedObject>& object);
  // The registered object, or a fault for id; never touches the store.
  std::shared_ptr<ManagedObject> objectWithID(const ManagedObjectID& id);
  [[nodiscard]] std::shared_ptr<ManagedObject> objectRegisteredForID(const ManagedObjectID& id) const;
  // The object, loaded; throws 133000 when it is gone or deleted here.
  std::shared_ptr<ManagedObject> existingObjectWithID(const ManagedObjectID& id);
  void obtainPermanentIDs(const std::vector<std::shared_ptr<ManagedObject>>& objects);
  // Without merge: drops the object's changes and makes it a fault. With
  // merge: reloads its stored values and keeps its changes on top.
  void refreshObject(const std::shared_ptr<ManagedObject>& object, bool mergeChanges);

  // ---- Change state and transactions ----
  bool hasChanges() const;
  std::vector<std::shared_ptr<ManagedObject>> insertedObjects() const;
  std::vector<std::shared_ptr<ManagedObject>> updatedObjects() const;
  std::vector<std::shared_ptr<ManagedObject>> deletedObjects() const;
  std::vector<std::shared_ptr<ManagedObject>> registeredObjects() const;
  // Changes are applied as they are made, so there is nothing to flush;
  // kept for callers that mark the end of a group of edits.
  void processPendingChanges() {}
  void save();
  void rollback();
  // Forgets every registered object and pending change.
  void reset();

  // ---- Fetching ----
  std::vector<std::shared_ptr<ManagedObject>> fetch(const FetchRequest& request);
  std::vector<std::map<std::string, Value>> fetchDictionaries(const FetchRequest& request);
  std::size_t count(const FetchRequest& request);
  // executeRequest:error:. Fetch requests give objects or dictionaries;
  // batch requests change the store directly. Subclasses may guard it.
  virtual PersistentStoreResult execute(const PersistentStoreRequest& request);

  // ---- Associated objects (a strong, atomic per-context slot) ----
  void setAssociatedObject(const void* key, std::shared_ptr<void> value);
  std::shared_ptr<void> associatedObject(const void* key) const;

 protected:
  ManagedObjectContext(ConcurrencyType type, std::unique_ptr<ContextQueue> queue);
  // The queue make(type) gives: MainLoop::main() for a main-queue context.
  static std::unique_ptr<ContextQueue> defaultQueue(ConcurrencyType type);

 private:
  friend class ManagedObject;
  friend class FetchExecutor;
  friend class BatchRequestExecutor;

  // The entity a request names; StoreError 1550 when the model has none.
  const EntityDescription& requestEntity(const FetchRequest& request) const;
  std::vector<std::shared_ptr<ManagedObject>> fetchThroughParent(const FetchRequest& request);
  std::shared_ptr<ManagedObject> makeObject(const EntityDescription& entity, const ManagedObjectID& id);
  std::shared_ptr<ManagedObject> registerFetched(const ManagedObjectID& id, std::vector<Value> values,
                                                std::int64_t version, bool asFault);
  void noteChanged(ManagedObject& object);
  void applyPermanentIDs(const std::map<ManagedObjectID, ManagedObjectID>& permanentIDs);
  void validateForSave() const;
  void saveToParent();
  // After a save reached the parent or the store: deleted objects leave the
  // registry and become unusable, the others take their values as committed.
  void markChangesSaved();
  // The stored row (the parent's current values for a child).
  std::optional<PersistentStoreCoordinator::StoredRow> loadValues(const ManagedObjectID& id);
  std::vector<ManagedObjectID> storedRelatedObjectIDs(const ManagedObjectID& owner,
                                                      const RelationshipDescription& relationship);
  void applyDeleteRules(ManagedObject& object);
  std::vector<std::shared_ptr<ManagedObject>> changedObjectsWhere(bool (*condition)(const ManagedObject&)) const;
  // Objects with pending changes, inserted, updated or deleted.
  const std::unordered_set<std::shared_ptr<ManagedObject>>& changedObjects() const { return changed_; }

  // The IDs of one save's changes, as merged into other contexts.
  struct SavedObjectIDs {
    ManagedObjectIDSet inserted;
    ManagedObjectIDSet updated;
    ManagedObjectIDSet deleted;
  };
  void postDidSave(const ManagedObjectSet& inserted, const ManagedObjectSet& updated, const ManagedObjectSet& deleted);
  // Hands a save of another context to this one; from any thread.
  void scheduleMerge(SavedObjectIDs changes);
  // Takes in the saves handed over so far; on the queue.
  void mergePendingChanges();
  void mergeChanges(const SavedObjectIDs& changes);
  void refreshFromStore(ManagedObject& object, PersistentStoreCoordinator::StoredRow row);
  // Makes a registered object unusable and forgets it.
  void invalidateObject(const std::shared_ptr<ManagedObject>& object);
  [[noreturn]] void throwConflicts(const StoreError& error);
  void attachToCoordinator();
  void detachFromCoordinator();

  ConcurrencyType concurrencyType_;
  std::unique_ptr<ContextQueue> queue_;
  std::shared_ptr<PersistentStoreCoordinator> coordinator_;
  std::shared_ptr<ManagedObjectContext> parent_;
  MergePolicyType mergePolicy_ = MergePolicyType::errorMergePolicyType;
  ObjectRegistry registry_;
  // Temporary IDs that became permanent, for lookups by the old ID.
  std::unordered_map<ManagedObjectID, ManagedObjectID> permanentIDs_;
  std::unordered_set<std::shared_ptr<ManagedObject>> changed_;
  // The class made for each entity, looked up once per context.
  std::unordered_map<const EntityDescription*, ManagedObject::Factory> factories_;
  std::atomic<bool> mergesFromParent_{false};
  std::mutex mergeMutex_;
  std::vector<SavedObjectIDs> pendingMerges_;
  std::atomic<bool> hasPendingMerges_{false};
  mutable std::mutex associatedMutex_;
  std::map<const void*, std::shared_ptr<void>> associated_;
};

template <typename Function>
auto ManagedObjectContext::performAndWaitReturning(Function&& function) -> decltype(function()) {
  using Result = decltype(function());
  if constexpr (std::is_void_v<Result>) {
    performAndWait([&function] { function(); });
  } else {
    std::optional<Result> result;
    performAndWait([&function, &result] { result.emplace(function()); });
    return std::move(*result);
  }
}

}  // namespace kestrona
