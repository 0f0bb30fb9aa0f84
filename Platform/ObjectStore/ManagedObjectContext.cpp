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
  for (auto& [id, object] : registry_) object->context_ = nullptr;
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
                                                                     std::vector<Value> values, std::int64_t version,
                                                                     bool asFault) {
  auto object = objectWithID(id);
  // A registered object keeps its own state: pending changes win over the
  // row just read.
  if (object->state_ == ManagedObject::FaultingState::fault && !values.empty()) {
    object->committed_ = values;
    object->values_ = std::move(values);
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
    // An observed object reloads at once so that its observers hear the
    // stored values; any other becomes a fault and reloads when read.
    if (object->observation_ && object->state_ == ManagedObject::FaultingState::loaded) {
      if (auto row = loadValues(object->objectID_)) {
        object->committed_ = row->values;
        object->version_ = row->version;
        object->assignValues(std::move(row->values));
        return;
      }
    }
    object->values_.clear();
    object->committed_.clear();
    object->state_ = ManagedObject::FaultingState::fault;
    return;
  }
  auto row = loadValues(object->objectID_);
  if (!row) return;
  object->version_ = row->version;
  if (object->state_ != ManagedObject::FaultingState::loaded) {
    object->committed_ = row->values;
    object->values_ = std::move(row->values);
    object->state_ = ManagedObject::FaultingState::loaded;
    return;
  }
  std::vector<Value> merged = row->values;
  for (std::size_t slot = 0; slot < merged.size(); ++slot) {
    if (!(object->values_[slot] == object->committed_[slot])) merged[slot] = object->values_[slot];
  }
  object->committed_ = std::move(row->values);
  object->assignValues(std::move(merged));
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
                            {StoreError::kValidationObjectKey, ErrorUserInfoObject(object)}});
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
  // Observers of will-save may still change objects; they see the pending
  // state as it is.
  NotificationCenter::defaultCenter().post(std::string(NSManagedObjectContextWillSaveNotification), this);
  validateForSave();
  ManagedObjectSet inserted;
  ManagedObjectSet updated;
  ManagedObjectSet deleted;
  for (const auto& object : changed_) {
    if (object->deleted_) {
      deleted.insert(object);
    } else if (object->inserted_) {
      inserted.insert(object);
    } else if (object->isUpdated()) {
      updated.insert(object);
    }
  }
  if (parent_) {
    saveToParent();
    postDidSave(inserted, updated, deleted);
    return;
  }
  auto coordinator = persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to save");
  PersistentStoreCoordinator::SaveRequest request;
  request.mergePolicy = mergePolicy_;
  for (const auto& object : deleted) request.deleted.push_back({object->objectID_, object->version_});
  for (const auto& object : inserted) request.inserted.push_back({object->objectID_, object->values_, {}, {}, 0});
  for (const auto& object : updated) {
    PersistentStoreCoordinator::RowChange change{object->objectID_, object->values_, {}, object->committed_,
                                                 object->version_};
    for (std::size_t slot = 0; slot < object->values_.size(); ++slot) {
      if (!(object->values_[slot] == object->committed_[slot])) change.changedSlots.push_back(slot);
    }
    request.updated.push_back(std::move(change));
  }
  PersistentStoreCoordinator::SaveResult saved;
  try {
    saved = coordinator->save(request);
  } catch (const StoreError& error) {
    if (error.kind() == StoreErrorCode::managedObjectMerge) throwConflicts(error);
    throw;
  }
  applyPermanentIDs(saved.permanentIDs);
  for (auto& [id, row] : saved.mergedRows) {
    if (auto object = objectRegisteredForID(id)) object->assignValues(std::move(row));
  }
  for (const auto& [id, version] : saved.versions) {
    if (auto object = objectRegisteredForID(id)) object->version_ = version;
  }
  markChangesSaved();
  postDidSave(inserted, updated, deleted);

  SavedObjectIDs ids;
  for (const auto& object : inserted) ids.inserted.insert(object->objectID_);
  for (const auto& object : updated) ids.updated.insert(object->objectID_);
  for (const auto& object : deleted) ids.deleted.insert(object->objectID_);
  for (const auto& context : coordinator->registeredContexts()) {
    if (context.get() != this && context->automaticallyMergesChangesFromParent()) context->scheduleMerge(ids);
  }
}

void ManagedObjectContext::postDidSave(const ManagedObjectSet& inserted, const ManagedObjectSet& updated,
                                       const ManagedObjectSet& deleted) {
  Notification::UserInfo userInfo{{std::string(NSInsertedObjectsKey), inserted},
                                  {std::string(NSUpdatedObjectsKey), updated},
                                  {std::string(NSDeletedObjectsKey), deleted}};
  NotificationCenter::defaultCenter().post(std::string(NSManagedObjectContextDidSaveNotification), this,
                                           std::move(userInfo));
}

void ManagedObjectContext::throwConflicts(const StoreError& error) {
  const auto* rows =
      error.userInfoObject<std::vector<PersistentStoreCoordinator::RowConflict>>(StoreError::kSaveConflictsKey);
  if (!rows) throw error;
  std::vector<MergeConflict> conflicts;
  conflicts.reserve(rows->size());
  for (const auto& row : *rows) {
    auto object = objectRegisteredForID(row.objectID);
    if (!object) continue;
    MergeConflict conflict;
    conflict.sourceObject = object;
    conflict.objectSnapshot = object->snapshotOf(object->values_);
    conflict.cachedSnapshot = object->snapshotOf(object->committed_);
    if (row.stored) {
      conflict.persistedSnapshot = object->snapshotOf(row.stored->values);
      conflict.newVersionNumber = row.stored->version;
    }
    conflict.oldVersionNumber = row.oldVersion;
    conflicts.push_back(std::move(conflict));
  }
  throw StoreError(StoreErrorCode::managedObjectMerge, error.localizedDescription(),
                   {{StoreError::kSaveConflictsKey, ErrorUserInfoObject(std::move(conflicts))}});
}

void ManagedObjectContext::scheduleMerge(SavedObjectIDs changes) {
  {
    std::lock_guard lock(mergeMutex_);
    pendingMerges_.push_back(std::move(changes));
    hasPendingMerges_.store(true);
  }
  std::weak_ptr<ManagedObjectContext> weak = weak_from_this();
  queue_->post([weak] {
    if (auto context = weak.lock()) context->mergePendingChanges();
  });
}

void ManagedObjectContext::mergePendingChanges() {
  if (!hasPendingMerges_.load()) return;
  std::vector<SavedObjectIDs> merges;
  {
    std::lock_guard lock(mergeMutex_);
    merges.swap(pendingMerges_);
    hasPendingMerges_.store(false);
  }
  for (const auto& changes : merges) mergeChanges(changes);
}

void ManagedObjectContext::mergeChanges(const SavedObjectIDs& changes) {
  auto coordinator = coordinator_;
  if (!coordinator) return;
  for (const auto& id : changes.deleted) {
    if (auto object = objectRegisteredForID(id)) invalidateObject(object);
  }
  for (const auto& id : changes.updated) {
    auto object = objectRegisteredForID(id);
    if (!object) continue;
    if (object->state_ == ManagedObject::FaultingState::fault) {
      // A fault may hold values read ahead by a fetch; they are stale now.
      object->values_.clear();
      object->committed_.clear();
      continue;
    }
    if (object->state_ != ManagedObject::FaultingState::loaded) continue;
    std::optional<PersistentStoreCoordinator::StoredRow> row;
    try {
      row = coordinator->loadRow(object->objectID_);
    } catch (const StoreError&) {
      // The object keeps what it has; its next save checks the version.
      continue;
    }
    // Deleted by a later save, whose own merge follows.
    if (!row) continue;
    refreshFromStore(*object, std::move(*row));
  }
  Notification::UserInfo userInfo{{std::string(NSInsertedObjectIDsKey), changes.inserted},
                                  {std::string(NSUpdatedObjectIDsKey), changes.updated},
                                  {std::string(NSDeletedObjectIDsKey), changes.deleted}};
  NotificationCenter::defaultCenter().post(std::string(NSManagedObjectContextDidMergeChangesObjectIDsNotification),
                                           this, std::move(userInfo));
}

void ManagedObjectContext::refreshFromStore(ManagedObject& object, PersistentStoreCoordinator::StoredRow row) {
  if (row.version != 0 && row.version == object.version_) return;
  if (object.values_.size() != row.values.size()) return;
  if (object.deleted_) return;
  const bool pending = object.isUpdated();
  if (pending && mergePolicy_ == MergePolicyType::errorMergePolicyType) return;
  std::vector<Value> values = row.values;
  if (pending) {
    for (std::size_t slot = 0; slot < values.size(); ++slot) {
      bool mine = !(object.values_[slot] == object.committed_[slot]);
      bool theirs = !(row.values[slot] == object.committed_[slot]);
      switch (mergePolicy_) {
        case MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType:
          if (mine) values[slot] = object.values_[slot];
          break;
        case MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType:
          if (mine && !theirs) values[slot] = object.values_[slot];
          break;
        case MergePolicyType::overwriteMergePolicyType:
          values[slot] = object.values_[slot];
          break;
        default:
          break;
      }
    }
  }
  object.committed_ = std::move(row.values);
  object.version_ = row.version;
  object.assignValues(std::move(values));
  if (!object.isUpdated()) changed_.erase(object.shared_from_this());
}

void ManagedObjectContext::invalidateObject(const std::shared_ptr<ManagedObject>& object) {
  registry_.erase(object->objectID_);
  changed_.erase(object);
  object->state_ = ManagedObject::FaultingState::unusable;
  object->context_ = nullptr;
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
      copy->fireFault();
      std::vector<Value> values = copy->values_;
      bool changed = false;
      for (std::size_t slot = 0; slot < object->values_.size(); ++slot) {
        if (!(object->values_[slot] == object->committed_[slot])) {
          values[slot] = object->values_[slot];
          changed = true;
        }
      }
      if (!changed) continue;
      // Observers of the parent's object hear the child's changes arrive.
      copy->assignValues(std::move(values));
      parent->noteChanged(*copy);
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
    if (object->state_ == ManagedObject::FaultingState::loaded) object->assignValues(object->committed_);
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
