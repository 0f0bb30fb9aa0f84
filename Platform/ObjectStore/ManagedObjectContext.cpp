#include "Platform/ObjectStore/ManagedObjectContext.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {

namespace {

StoreError objectGone(const ManagedObjectID& id) {
  return StoreError(StoreErrorCode::managedObjectReferentialIntegrity,
                    "The object " + id.description() + " is gone", {{StoreError::kObjectURIKey, id.URIRepresentation()}});
}

}  // namespace
std::unique_ptr<ContextQueue> ManagedObjectContext::defaultQueue(ConcurrencyType type) {
  if (type == ConcurrencyType::mainQueueConcurrencyType) return std::make_unique<MainContextQueue>(MainLoop::main());
  return std::make_unique<PrivateContextQueue>();
}

std::shared_ptr<ManagedObjectContext> ManagedObjectContext::make(ConcurrencyType type) {
  return make(type, defaultQueue(type));
}

std::shared_ptr<ManagedObjectContext> ManagedObjectContext::make(ConcurrencyType type,
                                                                 std::unique_ptr<ContextQueue> queue) {
  return std::shared_ptr<ManagedObjectContext>(new ManagedObjectContext(type, std::move(queue)));
}

ManagedObjectContext::ManagedObjectContext(ConcurrencyType type, std::unique_ptr<ContextQueue> queue)
    : concurrencyType_(type), queue_(std::move(queue)) {}

ManagedObjectContext::~ManagedObjectContext() {
  detachFromCoordinator();
  for (const auto& object : registry_) object->context_ = nullptr;
  for (auto& object : changed_) object->context_ = nullptr;
}

std::shared_ptr<PersistentStoreCoordinator> ManagedObjectContext::persistentStoreCoordinator() const {
  if (parent_) return parent_->persistentStoreCoordinator();
  return coordinator_;
}

void ManagedObjectContext::setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator) {
  detachFromCoordinator();
  coordinator_ = std::move(coordinator);
  parent_.reset();
  attachToCoordinator();
}

void ManagedObjectContext::setParentContext(std::shared_ptr<ManagedObjectContext> parent) {
  detachFromCoordinator();
  parent_ = std::move(parent);
  coordinator_.reset();
}

void ManagedObjectContext::attachToCoordinator() {
  if (coordinator_) coordinator_->registerContext(this, weak_from_this());
}

void ManagedObjectContext::detachFromCoordinator() {
  if (coordinator_) coordinator_->unregisterContext(this);
}

void ManagedObjectContext::setAutomaticallyMergesChangesFromParent(bool merges) {
  mergesFromParent_.store(merges);
  // Registered again in case the coordinator was set before the context
  // had its std::shared_ptr (in a subclass's constructor).
  if (merges) attachToCoordinator();
}

void ManagedObjectContext::performAndWait(const std::function<void()>& block) {
  if (queue_->isCurrent()) {
    block();
    return;
  }
  queue_->runAndWait([this, &block] {
    mergePendingChanges();
    block();
  });
}

std::shared_ptr<ManagedObject> ManagedObjectContext::insertNewObject(std::string_view entityName) {
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator or a parent before objects are inserted");
  auto entity = coordinator->managedObjectModel().entity(entityName);
  if (!entity) {
    throw StoreError(StoreErrorCode::managedObjectValidation,
                     "The model has no entity named \"" + std::string(entityName) + "\"");
  }
  return insertNewObject(*entity);
}

std::shared_ptr<ManagedObject> ManagedObjectContext::insertNewObject(const EntityDescription& requested) {
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator or a parent before objects are inserted");
  auto entity = coordinator->managedObjectModel().entity(requested.name());
  if (!entity || entity->isAbstract()) {
    throw StoreError(StoreErrorCode::managedObjectValidation,
                     "Objects of the entity \"" + requested.name() + "\" cannot be inserted");
  }
  auto id = ManagedObjectID::makeTemporary(coordinator->storeIdentifier(), entity->entityPointer());
  auto object = makeObject(*entity, id);
  object->values_.assign(entity->slotCount(), Value());
  for (const auto& [name, attribute] : entity->attributesByName()) {
    object->values_[attribute->slot()] = attribute->defaultValue();
  }
  object->commitNothing();
  object->state_ = ManagedObject::FaultingState::loaded;
  object->inserted_ = true;
  registry_.insert(object);
  changed_.insert(object);
  object->awakeFromInsert();
  return object;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::objectRegisteredForID(const ManagedObjectID& id) const {
  if (auto object = registry_.find(id)) return object;
  auto alias = permanentIDs_.find(id);
  return alias == permanentIDs_.end() ? nullptr : registry_.find(alias->second);
}

std::shared_ptr<ManagedObject> ManagedObjectContext::objectWithID(const ManagedObjectID& id) {
  if (auto object = objectRegisteredForID(id)) return object;
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator or a parent");
  auto entity = coordinator->managedObjectModel().entity(id.entity().name());
  precondition(entity != nullptr, "An object ID of another model");
  auto object = makeObject(*entity, id);
  registry_.insert(object);
  return object;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::registerFetched(const ManagedObjectID& id,
                                                                     std::vector<Value> values, std::int64_t version,
                                                                     bool asFault) {
  auto object = objectWithID(id);
  // A registered object keeps its own state: pending changes win over the
  // row just read.
  if (object->state_ == ManagedObject::FaultingState::fault && !values.empty()) {
    object->takeRow(std::move(values));
    object->version_ = version;
    if (!asFault) object->state_ = ManagedObject::FaultingState::loaded;
  }
  return object;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::existingObjectWithID(const ManagedObjectID& id) {
  auto object = objectRegisteredForID(id);
  if (object) {
    if (object->deleted_ || object->state_ == ManagedObject::FaultingState::unusable) throw objectGone(id);
    object->fireFault();
    return object;
  }
  if (id.isTemporaryID()) throw objectGone(id);
  auto row = loadValues(id);
  if (!row) throw objectGone(id);
  return registerFetched(id, std::move(row->values), row->version, false);
}

std::optional<PersistentStoreCoordinator::StoredRow> ManagedObjectContext::loadValues(const ManagedObjectID& id) {
  if (!parent_) {
    auto coordinator = persistentStoreCoordinator();
    if (!coordinator) return std::nullopt;
    return coordinator->loadRow(id);
  }
  auto parent = parent_;
  return parent->performAndWaitReturning([&parent, &id]() -> std::optional<PersistentStoreCoordinator::StoredRow> {
    try {
      auto object = parent->existingObjectWithID(id);
      return PersistentStoreCoordinator::StoredRow{object->values_, object->version_};
    } catch (const StoreError&) {
      return std::nullopt;
    }
  });
}

std::vector<ManagedObjectID> ManagedObjectContext::storedRelatedObjectIDs(const ManagedObjectID& owner,
                                                                         const RelationshipDescription& relationship) {
  if (!parent_) return persistentStoreCoordinator()->relatedObjectIDs(owner, relationship);
  auto parent = parent_;
  return parent->performAndWaitReturning([&]() {
    std::vector<ManagedObjectID> ids;
    auto object = parent->objectRegisteredForID(owner);
    if (!object) object = parent->objectWithID(owner);
    try {
      for (const auto& member : object->toMany(relationship)) ids.push_back(member->objectID());
    } catch (const StoreError&) {
      // The owner is gone in the parent: no members.
    }
    return ids;
  });
}

void ManagedObjectContext::noteChanged(ManagedObject& object) { changed_.insert(object.shared_from_this()); }

void ManagedObjectContext::deleteObject(const std::shared_ptr<ManagedObject>& object) {
  precondition(object != nullptr, "deleteObject needs an object");
  if (object->deleted_) return;
  if (object->context_ != this) {
    throw StoreError(StoreErrorCode::managedObjectValidation,
                     "The object " + object->objectID().description() + " belongs to another context");
  }
  object->fireFault();
  object->deleted_ = true;
  changed_.insert(object);
  applyDeleteRules(*object);
  if (object->inserted_) {
    // An object inserted and deleted before a save leaves no trace.
    changed_.erase(object);
    registry_.erase(object->objectID_);
    object->inserted_ = false;
    object->state_ = ManagedObject::FaultingState::unusable;
    object->context_ = nullptr;
  }
}

void ManagedObjectContext::applyDeleteRules(ManagedObject& object) {
  for (const auto& [name, relationship] : object.entity().relationshipsByName()) {
    std::vector<std::shared_ptr<ManagedObject>> destinations;
    if (relationship->isToMany()) {
      destinations = object.toMany(*relationship);
    } else if (auto id = object.values_[relationship->slot()].objectID()) {
      destinations.push_back(objectWithID(*id));
    }
    const auto& inverse = relationship->inverseRelationship();
    switch (relationship->deleteRule()) {
      case DeleteRule::nullifyDeleteRule:
        for (auto& destination : destinations) {
          if (destination->deleted_ || inverse.isToMany()) continue;
          try {
            if (destination->slotValue(inverse.slot()) == Value(object.objectID_)) {
              destination->willChangeValueForKey(inverse.name());
              destination->setSlot(inverse.slot(), Value());
              destination->didChangeValueForKey(inverse.name());
            }
          } catch (const StoreError&) {
            // A destination that is already gone from the store needs no nullifying.
          }
        }
        break;
      case DeleteRule::cascadeDeleteRule:
        for (auto& destination : destinations) {
          try {
            deleteObject(destination);
          } catch (const StoreError&) {
            // Already gone from the store: nothing to cascade to.
          }
        }
        break;
      case DeleteRule::denyDeleteRule:
      case DeleteRule::noActionDeleteRule:
        break;
    }
  }
}

void ManagedObjectContext::obtainPermanentIDs(const std::vector<std::shared_ptr<ManagedObject>>& objects) {
  std::vector<ManagedObjectID> temporary;
  for (const auto& object : objects) {
    if (object && object->objectID_.isTemporaryID()) temporary.push_back(object->objectID_);
  }
  if (temporary.empty()) return;
  auto permanent = persistentStoreCoordinator()->obtainPermanentIDs(temporary);
  std::map<ManagedObjectID, ManagedObjectID> mapping;
  for (std::size_t i = 0; i < temporary.size(); ++i) mapping.emplace(temporary[i], permanent[i]);
  applyPermanentIDs(mapping);
}

void ManagedObjectContext::applyPermanentIDs(const std::map<ManagedObjectID, ManagedObjectID>& permanentIDs) {
  if (permanentIDs.empty()) return;
  for (const auto& [temporary, permanent] : permanentIDs) {
    auto object = registry_.find(temporary);
    if (!object) continue;
    registry_.erase(temporary);
    object->objectID_ = permanent;
    registry_.insert(object);
    permanentIDs_.insert_or_assign(temporary, permanent);
  }
  auto replace = [&permanentIDs](Value& value) {
    if (auto id = value.get<ManagedObjectID>(); id && id->isTemporaryID()) {
      auto found = permanentIDs.find(*id);
      if (found != permanentIDs.end()) value = Value(found->second);
    }
  };
  for (const auto& object : registry_) {
    for (const auto& [name, relationship] : object->entity().relationshipsByName()) {
      if (relationship->isToMany()) continue;
      if (relationship->slot() < object->values_.size()) replace(object->values_[relationship->slot()]);
      if (object->committed_ && relationship->slot() < object->committed_->size()) {
        replace((*object->committed_)[relationship->slot()]);
      }
    }
  }
}

void ManagedObjectContext::refreshObject(const std::shared_ptr<ManagedObject>& object, bool mergeChanges) {
  if (!object || object->context_ != this || object->inserted_) return;
  if (!mergeChanges) {
    if (object->deleted_) return;
    changed_.erase(object);
    // An observed object reloads at once so that its observers hear the
    // stored values; any other becomes a fault and reloads when read.
    if (object->observation_ && object->state_ == ManagedObject::FaultingState::loaded) {
      if (auto row = loadValues(object->objectID_)) {
        object->version_ = row->version;
        object->assignValues(std::move(row->values));
        object->commit();
        return;
      }
    }
    object->clearValues();
    object->state_ = ManagedObject::FaultingState::fault;
    return;
  }
  auto row = loadValues(object->objectID_);
  if (!row) return;
  object->version_ = row->version;
  if (object->state_ != ManagedObject::FaultingState::loaded) {
    object->takeRow(std::move(row->values));
    object->state_ = ManagedObject::FaultingState::loaded;
    return;
  }
  std::vector<Value> merged = row->values;
  for (std::size_t slot = 0; slot < merged.size(); ++slot) {
    if (!(object->values_[slot] == object->committedValues()[slot])) merged[slot] = object->values_[slot];
  }
  object->assignValues(std::move(merged));
  object->setCommitted(std::move(row->values));
}

bool ManagedObjectContext::hasChanges() const {
  for (const auto& object : changed_) {
    if (object->hasChanges()) return true;
  }
  return false;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::changedObjectsWhere(
    bool (*condition)(const ManagedObject&)) const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& object : changed_) {
    if (condition(*object)) result.push_back(object);
  }
  return result;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::insertedObjects() const {
  return changedObjectsWhere([](const ManagedObject& object) { return object.isInserted(); });
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::updatedObjects() const {
  return changedObjectsWhere([](const ManagedObject& object) { return object.isUpdated(); });
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::deletedObjects() const {
  return changedObjectsWhere([](const ManagedObject& object) { return object.isDeleted(); });
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::registeredObjects() const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& object : registry_) result.push_back(object);
  return result;
}
void ManagedObjectContext::rollback() {
  for (const auto& object : changed_) {
    if (object->inserted_) {
      registry_.erase(object->objectID_);
      object->inserted_ = false;
      object->state_ = ManagedObject::FaultingState::unusable;
      object->context_ = nullptr;
      continue;
    }
    object->deleted_ = false;
    if (object->state_ == ManagedObject::FaultingState::loaded) {
      object->assignValues(object->committedValues());
      object->commit();
    }
  }
  changed_.clear();
}

void ManagedObjectContext::reset() {
  for (const auto& object : registry_) {
    object->context_ = nullptr;
    object->state_ = ManagedObject::FaultingState::unusable;
  }
  registry_.clear();
  changed_.clear();
  permanentIDs_.clear();
}

void ManagedObjectContext::setAssociatedObject(const void* key, std::shared_ptr<void> value) {
  std::lock_guard lock(associatedMutex_);
  if (value) {
    associated_[key] = std::move(value);
  } else {
    associated_.erase(key);
  }
}

std::shared_ptr<void> ManagedObjectContext::associatedObject(const void* key) const {
  std::lock_guard lock(associatedMutex_);
  auto found = associated_.find(key);
  return found == associated_.end() ? nullptr : found->second;
}

}  // namespace kestrona
