// Saving a context: validation, the write to the store or the parent, and
// the conflict records of a failed save.
#include "Platform/ObjectStore/ManagedObjectContext.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

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
    PersistentStoreCoordinator::RowChange change{object->objectID_, object->values_, {}, object->committedValues(),
                                                 object->version_};
    for (std::size_t slot = 0; slot < object->values_.size(); ++slot) {
      if (!(object->values_[slot] == change.snapshot[slot])) change.changedSlots.push_back(slot);
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
    conflict.cachedSnapshot = object->snapshotOf(object->committedValues());
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
          copy->values_ = object->values_;
          copy->commitNothing();
          copy->state_ = ManagedObject::FaultingState::loaded;
          copy->inserted_ = true;
          parent->registry_.insert(copy);
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
        if (!(object->values_[slot] == object->committedValues()[slot])) {
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
    object->commit();
    object->inserted_ = false;
  }
  changed_.clear();
}

}  // namespace kestrona
