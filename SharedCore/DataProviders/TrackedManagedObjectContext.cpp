#include "SharedCore/DataProviders/TrackedManagedObjectContext.h"

#include <optional>
#include <variant>

namespace kestrona {

namespace {

// The entity a batch request works on; none for other requests and for a
// delete whose fetch request names none.
std::optional<std::string> batchEntityName(const PersistentStoreRequest& request) {
  if (const auto* deletion = std::get_if<BatchDeleteRequest>(&request)) {
    const FetchRequest& fetch = deletion->fetchRequest;
    if (fetch.entity != nullptr) return fetch.entity->name();
    if (fetch.entityName.empty()) return std::nullopt;
    return fetch.entityName;
  }
  if (const auto* update = std::get_if<BatchUpdateRequest>(&request)) return update->entityName;
  return std::nullopt;
}

}  // namespace

BatchRequestOnSyncedEntityError::BatchRequestOnSyncedEntityError(std::string entityName)
    : Error(kDomain, 0,
            "Batch requests against synced entities bypass sync change tracking (entity: " + entityName + "). " +
                "Use executeBatchWriteOperation only where invisibility to sync is intended.",
            ErrorUserInfo{{"entityName", entityName}}),
      entityName_(std::move(entityName)) {}

std::shared_ptr<TrackedManagedObjectContext> TrackedManagedObjectContext::make(ConcurrencyType type) {
  return make(type, defaultQueue(type));
}

std::shared_ptr<TrackedManagedObjectContext> TrackedManagedObjectContext::make(ConcurrencyType type,
                                                                               std::unique_ptr<ContextQueue> queue) {
  return std::shared_ptr<TrackedManagedObjectContext>(new TrackedManagedObjectContext(type, std::move(queue)));
}

TrackedManagedObjectContext::TrackedManagedObjectContext(ConcurrencyType type, std::unique_ptr<ContextQueue> queue)
    : ManagedObjectContext(type, std::move(queue)) {}

PersistentStoreResult TrackedManagedObjectContext::execute(const PersistentStoreRequest& request) {
  if (allowsBatchRequestsOnSyncedEntities_) return ManagedObjectContext::execute(request);
  const std::optional<std::string> entityName = batchEntityName(request);
  if (!entityName) return ManagedObjectContext::execute(request);
  const std::shared_ptr<PersistentStoreCoordinator> coordinator = persistentStoreCoordinator();
  if (!coordinator) return ManagedObjectContext::execute(request);
  const EntityDescription* entity = coordinator->managedObjectModel().entity(*entityName);
  if (entity == nullptr) return ManagedObjectContext::execute(request);
  if (entity->attributesByName().contains("identifier")) throw BatchRequestOnSyncedEntityError(*entityName);
  return ManagedObjectContext::execute(request);
}

}  // namespace kestrona
