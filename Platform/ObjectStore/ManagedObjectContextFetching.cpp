// Fetching in a context: through the fetch executor for a context on the
// coordinator, through the parent for a child context; and execute().
#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/BatchRequestExecutor.h"
#include "Platform/ObjectStore/DictionaryFetch.h"
#include "Platform/ObjectStore/FetchExecutor.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

const EntityDescription& ManagedObjectContext::requestEntity(const FetchRequest& request) const {
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to fetch");
  const auto& name = request.entity ? request.entity->name() : request.entityName;
  auto entity = coordinator->managedObjectModel().entity(name);
  if (!entity) {
    throw StoreError(StoreErrorCode::managedObjectValidation, "The model has no entity named \"" + name + "\"",
                     {{StoreError::kEntityKey, name}});
  }
  return *entity;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::fetch(const FetchRequest& request) {
  if (parent_) return fetchThroughParent(request);
  return FetchExecutor(*this, request).objects();
}

// A child context asks its parent, which sees its own pending changes, and
// then decides the objects it has changed itself in memory.
std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::fetchThroughParent(const FetchRequest& request) {
  const auto& entity = requestEntity(request);
  auto matchesEntity = [&](const EntityDescription& candidate) {
    return request.includesSubentities ? candidate.isKindOfEntity(entity) : candidate.name() == entity.name();
  };
  std::vector<std::shared_ptr<ManagedObject>> candidates;
  std::size_t touched = 0;
  for (const auto& object : changed_) {
    if (!matchesEntity(object->entity())) continue;
    ++touched;
    if (!object->deleted_ && (!request.predicate || request.predicate->evaluateWithObject(*object))) {
      candidates.push_back(object);
    }
  }
  FetchRequest parentRequest = request;
  parentRequest.fetchLimit = request.fetchLimit > 0 ? request.fetchLimit + touched : 0;
  parentRequest.relationshipKeyPathsForPrefetching.clear();
  parentRequest.resultType = FetchRequestResultType::managedObjectResultType;
  auto parent = parent_;
  auto ids = parent->performAndWaitReturning([&parent, &parentRequest] {
    std::vector<ManagedObjectID> found;
    for (const auto& object : parent->fetch(parentRequest)) found.push_back(object->objectID());
    return found;
  });
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& id : ids) {
    auto object = objectRegisteredForID(id);
    if (object && changed_.count(object)) continue;
    result.push_back(object ? object : objectWithID(id));
  }
  if (!candidates.empty()) {
    result.insert(result.end(), candidates.begin(), candidates.end());
    sortByDescriptors(result, request.sortDescriptors);
  }
  if (request.fetchLimit > 0 && result.size() > request.fetchLimit) result.resize(request.fetchLimit);
  return result;
}

std::vector<std::map<std::string, Value>> ManagedObjectContext::fetchDictionaries(const FetchRequest& request) {
  return fetchDictionaryResults(*this, request);
}

std::size_t ManagedObjectContext::count(const FetchRequest& request) {
  if (parent_) {
    FetchRequest bare = request;
    bare.includesPropertyValues = false;
    return fetchThroughParent(bare).size();
  }
  return FetchExecutor(*this, request).count();
}

PersistentStoreResult ManagedObjectContext::execute(const PersistentStoreRequest& request) {
  if (auto deleteRequest = std::get_if<BatchDeleteRequest>(&request)) {
    return BatchRequestExecutor::execute(*this, *deleteRequest);
  }
  if (auto updateRequest = std::get_if<BatchUpdateRequest>(&request)) {
    return BatchRequestExecutor::execute(*this, *updateRequest);
  }
  const auto& fetchRequest = std::get<FetchRequest>(request);
  PersistentStoreResult result;
  switch (fetchRequest.resultType) {
    case FetchRequestResultType::dictionaryResultType:
      result.dictionaries = fetchDictionaries(fetchRequest);
      break;
    case FetchRequestResultType::countResultType:
      result.count = static_cast<std::int64_t>(count(fetchRequest));
      break;
    case FetchRequestResultType::managedObjectIDResultType:
      for (const auto& object : fetch(fetchRequest)) result.objectIDs.push_back(object->objectID());
      break;
    case FetchRequestResultType::managedObjectResultType:
      result.objects = fetch(fetchRequest);
      break;
  }
  return result;
}

}  // namespace kestrona
