// The context of the view and of every write: a context that keeps batch
// requests away from synced entities.
//
// A synced entity is one whose attributes (its own or inherited) include
// "identifier"; a sync engine tracks those through the change notifications
// of saves, which batch requests bypass. execute() refuses a batch delete
// (by its fetch request's entity) or a batch update (by its entityName) on
// such an entity with BatchRequestOnSyncedEntityError and runs nothing.
// Everything else passes to the base context unchecked: fetch requests, a
// batch delete whose fetch request names no entity, a context without a
// coordinator, an entity the model does not know (the base context then
// fails on it, if at all), and every request while
// allowsBatchRequestsOnSyncedEntities is set.
//
// The flag is false after construction and is read and written only on the
// context's queue, like the rest of the context.
#pragma once

#include <memory>
#include <string>

#include "Platform/Foundation/Error.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"

namespace kestrona {

// Domain "BatchRequestOnSyncedEntityError", code 0; the entity's name under
// "entityName". Equal when the entity names are.
class BatchRequestOnSyncedEntityError : public Error {
 public:
  static constexpr const char* kDomain = "BatchRequestOnSyncedEntityError";
  explicit BatchRequestOnSyncedEntityError(std::string entityName);

  const std::string& entityName() const noexcept { return entityName_; }
  // "Batch requests against synced entities bypass sync change tracking
  // (entity: <name>). Use executeBatchWriteOperation only where
  // invisibility to sync is intended."
  const std::string& errorDescription() const noexcept { return localizedDescription(); }

  friend bool operator==(const BatchRequestOnSyncedEntityError& lhs,
                         const BatchRequestOnSyncedEntityError& rhs) noexcept {
    return lhs.entityName_ == rhs.entityName_;
  }

 private:
  std::string entityName_;
};

class TrackedManagedObjectContext : public ManagedObjectContext {
 public:
  // A main-queue context runs on MainLoop::main().
  static std::shared_ptr<TrackedManagedObjectContext> make(ConcurrencyType type);
  static std::shared_ptr<TrackedManagedObjectContext> make(ConcurrencyType type, std::unique_ptr<ContextQueue> queue);

  bool allowsBatchRequestsOnSyncedEntities() const noexcept { return allowsBatchRequestsOnSyncedEntities_; }
  void setAllowsBatchRequestsOnSyncedEntities(bool allows) noexcept { allowsBatchRequestsOnSyncedEntities_ = allows; }

  PersistentStoreResult execute(const PersistentStoreRequest& request) override;

 private:
  TrackedManagedObjectContext(ConcurrencyType type, std::unique_ptr<ContextQueue> queue);

  bool allowsBatchRequestsOnSyncedEntities_ = false;
};

}  // namespace kestrona
