#include "Platform/ObjectStore/ManagedObjectContext.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {

namespace {

StoreError objectGone(const ManagedObjectID& id) {
  return StoreError(StoreErrorCode::managedObjectReferentialIntegrity,
                    "The object " + id.description() + " is gone", {{StoreError::kObjectURIKey, id.URIRepresentation()}});
}

}  // namespace

std::shared_ptr<ManagedObjectContext> ManagedObjectContext::make(ConcurrencyType type) {
  std::unique_ptr<ContextQueue> queue;
  if (type == ConcurrencyType::mainQueueConcurrencyType) {
    queue = std::make_unique<MainContextQueue>(MainLoop::main());
  } else {
    queue = std::make_unique<PrivateContextQueue>();
  }
  return make(type, std::move(queue));
}

std::shared_ptr<ManagedObjectContext> ManagedObjectContext::make(ConcurrencyType type,
                                                                 std::unique_ptr<ContextQueue> queue) {
  return std::shared_ptr<ManagedObjectContext>(new ManagedObjectContext(type, std::move(queue)));
}

ManagedObjectContext::ManagedObjectContext(ConcurrencyType type, std::unique_ptr<ContextQueue> queue)
    : concurrencyType_(type), queue_(std::move(queue)) {}

ManagedObjectContext::~ManagedObjectContext() {
  for (auto& [id, object] : registry_) object->context_ = nullptr;
  for (auto& object : changed_) object->context_ = nullptr;
}

std::shared_ptr<PersistentStoreCoordinator> ManagedObjectContext::persistentStoreCoordinator() const {
  if (parent_) return parent_->persistentStoreCoordinator();
  return coordinator_;
}

void ManagedObjectContext::setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator) {
  coordinator_ = std::move(coordinator);
  parent_.reset();
}

void ManagedObjectContext::setParentContext(std::shared_ptr<ManagedObjectContext> parent) {
  parent_ = std::move(parent);
  coordinator_.reset();
}

void ManagedObjectContext::performAndWait(const std::function<void()>& block) { queue_->runAndWait(block); }

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
  object->committed_.assign(entity->slotCount(), Value());
  object->values_.assign(entity->slotCount(), Value());
  for (const auto& [name, attribute] : entity->attributesByName()) {
    object->values_[attribute->slot()] = attribute->defaultValue();
  }
  object->state_ = ManagedObject::FaultingState::loaded;
  object->inserted_ = true;
  registry_[id] = object;
  changed_.insert(object);
  object->awakeFromInsert();
  return object;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::objectRegisteredForID(const ManagedObjectID& id) const {
  auto found = registry_.find(id);
  if (found == registry_.end()) {
    auto alias = permanentIDs_.find(id);
    if (alias != permanentIDs_.end()) found = registry_.find(alias->second);
  }
  return found == registry_.end() ? nullptr : found->second;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::objectWithID(const ManagedObjectID& id) {
  if (auto object = objectRegisteredForID(id)) return object;
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator or a parent");
  auto entity = coordinator->managedObjectModel().entity(id.entity().name());
  precondition(entity != nullptr, "An object ID of another model");
  auto object = makeObject(*entity, id);
  registry_[id] = object;
  return object;
}

std::shared_ptr<ManagedObject> ManagedObjectContext::registerFetched(const ManagedObjectID& id,
                                                                     std::vector<Value> values, bool asFault) {
  auto object = objectWithID(id);
  // A registered object keeps its own state: pending changes win over the
  // row just read.
  if (object->state_ == ManagedObject::FaultingState::fault && !values.empty()) {
    object->committed_ = values;
    object->values_ = std::move(values);
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
  auto values = loadValues(id);
  if (!values) throw objectGone(id);
  return registerFetched(id, std::move(*values), false);
}

std::optional<std::vector<Value>> ManagedObjectContext::loadValues(const ManagedObjectID& id) {
  if (!parent_) {
    auto coordinator = persistentStoreCoordinator();
    if (!coordinator) return std::nullopt;
    return coordinator->loadRow(id);
  }
  auto parent = parent_;
  return parent->performAndWaitReturning([&parent, &id]() -> std::optional<std::vector<Value>> {
    try {
      return parent->existingObjectWithID(id)->values_;
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
              destination->setSlot(inverse.slot(), Value());
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
    auto found = registry_.find(temporary);
    if (found == registry_.end()) continue;
    auto object = found->second;
    registry_.erase(found);
    object->objectID_ = permanent;
    registry_[permanent] = object;
    permanentIDs_.insert_or_assign(temporary, permanent);
  }
  auto replace = [&permanentIDs](Value& value) {
    if (auto id = value.get<ManagedObjectID>(); id && id->isTemporaryID()) {
      auto found = permanentIDs.find(*id);
      if (found != permanentIDs.end()) value = Value(found->second);
    }
  };
  for (auto& [id, object] : registry_) {
    for (const auto& [name, relationship] : object->entity().relationshipsByName()) {
      if (relationship->isToMany()) continue;
      if (relationship->slot() < object->values_.size()) replace(object->values_[relationship->slot()]);
      if (relationship->slot() < object->committed_.size()) replace(object->committed_[relationship->slot()]);
    }
  }
}

void ManagedObjectContext::refreshObject(const std::shared_ptr<ManagedObject>& object, bool mergeChanges) {
  if (!object || object->context_ != this || object->inserted_) return;
  if (!mergeChanges) {
    if (object->deleted_) return;
    changed_.erase(object);
    object->values_.clear();
    object->committed_.clear();
    object->state_ = ManagedObject::FaultingState::fault;
    return;
  }
  auto row = loadValues(object->objectID_);
  if (!row) return;
  if (object->state_ != ManagedObject::FaultingState::loaded) {
    object->committed_ = *row;
    object->values_ = std::move(*row);
    object->state_ = ManagedObject::FaultingState::loaded;
    return;
  }
  std::vector<Value> merged = *row;
  for (std::size_t slot = 0; slot < merged.size(); ++slot) {
    if (!(object->values_[slot] == object->committed_[slot])) merged[slot] = object->values_[slot];
  }
  object->committed_ = std::move(*row);
  object->values_ = std::move(merged);
}

bool ManagedObjectContext::hasChanges() const {
  for (const auto& object : changed_) {
    if (object->hasChanges()) return true;
  }
  return false;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::insertedObjects() const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& object : changed_) {
    if (object->inserted_) result.push_back(object);
  }
  return result;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::updatedObjects() const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& object : changed_) {
    if (object->isUpdated()) result.push_back(object);
  }
  return result;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::deletedObjects() const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& object : changed_) {
    if (object->deleted_) result.push_back(object);
  }
  return result;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObjectContext::registeredObjects() const {
  std::vector<std::shared_ptr<ManagedObject>> result;
  for (const auto& [id, object] : registry_) result.push_back(object);
  return result;
}

void ManagedObjectContext::validateForSave() const {
  for (const auto& object : changed_) {
    if (object->deleted_) {
      for (const auto& [name, relationship] : object->entity().relationshipsByName()) {
        if (relationship->deleteRule() != DeleteRule::denyDeleteRule) continue;
        bool empty = true;
        if (relationship->isToMany()) {
          empty = object->toMany(*relationship).empty();
        } else if (auto id = object->values_[relationship->slot()].objectID()) {
          auto destination = objectRegisteredForID(*id);
          empty = destination && destination->deleted_;
        }
        if (!empty) {
          throw StoreError(StoreErrorCode::validationRelationshipDeniedDelete,
                           "Deleting " + object->objectID().description() + " is denied by its relationship \"" +
                               name + "\"",
                           {{StoreError::kEntityKey, object->entity().name()},
                            {StoreError::kKeyKey, name},
                            {StoreError::kObjectURIKey, object->objectID().URIRepresentation()}});
        }
      }
      continue;
    }
    if (!object->inserted_ && !object->isUpdated()) continue;
    for (const auto& [name, attribute] : object->entity().attributesByName()) {
      Value value = object->values_[attribute->slot()];
      object->validateValue(value, name);
    }
    for (const auto& [name, relationship] : object->entity().relationshipsByName()) {
      if (relationship->isToMany()) continue;
      Value value = object->values_[relationship->slot()];
      object->validateValue(value, name);
    }
  }
}

void ManagedObjectContext::save() {
  if (!hasChanges()) return;
  validateForSave();
  if (parent_) {
    saveToParent();
    return;
  }
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to save");
  PersistentStoreCoordinator::SaveRequest request;
  request.mergePolicy = mergePolicy_;
  for (const auto& object : changed_) {
    if (object->deleted_) {
      request.deleted.push_back(object->objectID_);
    } else if (object->inserted_) {
      request.inserted.push_back({object->objectID_, object->values_, {}, {}});
    } else if (object->isUpdated()) {
      PersistentStoreCoordinator::RowChange change{object->objectID_, object->values_, {}, object->committed_};
      for (std::size_t slot = 0; slot < object->values_.size(); ++slot) {
        if (!(object->values_[slot] == object->committed_[slot])) change.changedSlots.push_back(slot);
      }
      request.updated.push_back(std::move(change));
    }
  }
  auto saved = coordinator->save(request);
  applyPermanentIDs(saved.permanentIDs);
  for (auto& [id, row] : saved.mergedRows) {
    if (auto object = objectRegisteredForID(id)) object->values_ = std::move(row);
  }
  markChangesSaved();
}

void ManagedObjectContext::saveToParent() {
  auto parent = parent_;
  auto changes = changed_;
  parent->performAndWait([&parent, &changes] {
    for (const auto& object : changes) {
      if (object->deleted_) continue;
      if (object->inserted_) {
        auto copy = parent->objectRegisteredForID(object->objectID_);
        if (!copy) {
          copy = parent->makeObject(object->entity(), object->objectID_);
          copy->committed_.assign(object->values_.size(), Value());
          copy->values_ = object->values_;
          copy->state_ = ManagedObject::FaultingState::loaded;
          copy->inserted_ = true;
          parent->registry_[object->objectID_] = copy;
          parent->changed_.insert(copy);
        }
      }
    }
    for (const auto& object : changes) {
      if (object->deleted_ || object->inserted_) continue;
      auto copy = parent->objectWithID(object->objectID_);
      for (std::size_t slot = 0; slot < object->values_.size(); ++slot) {
        if (!(object->values_[slot] == object->committed_[slot])) copy->setSlot(slot, object->values_[slot]);
      }
    }
    for (const auto& object : changes) {
      if (!object->deleted_) continue;
      auto copy = parent->objectWithID(object->objectID_);
      parent->deleteObject(copy);
    }
  });
  markChangesSaved();
}

void ManagedObjectContext::markChangesSaved() {
  for (const auto& object : changed_) {
    if (object->deleted_) {
      registry_.erase(object->objectID_);
      object->state_ = ManagedObject::FaultingState::unusable;
      object->context_ = nullptr;
      continue;
    }
    object->committed_ = object->values_;
    object->inserted_ = false;
  }
  changed_.clear();
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
    if (object->state_ == ManagedObject::FaultingState::loaded) object->values_ = object->committed_;
  }
  changed_.clear();
}

void ManagedObjectContext::reset() {
  for (auto& [id, object] : registry_) {
    object->context_ = nullptr;
    object->state_ = ManagedObject::FaultingState::unusable;
  }
  registry_.clear();
  changed_.clear();
  permanentIDs_.clear();
}

void ManagedObjectContext::forget(ManagedObject& object) {
  registry_.erase(object.objectID_);
  changed_.erase(object.shared_from_this());
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
