// Taking another context's save into this one (automatic merging).
#include "Platform/ObjectStore/ManagedObjectContext.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

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
      object->clearValues();
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
      bool mine = !(object.values_[slot] == object.committedValues()[slot]);
      bool theirs = !(row.values[slot] == object.committedValues()[slot]);
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
  object.version_ = row.version;
  object.assignValues(std::move(values));
  object.setCommitted(std::move(row.values));
  if (!object.isUpdated()) changed_.erase(object.shared_from_this());
}

void ManagedObjectContext::invalidateObject(const std::shared_ptr<ManagedObject>& object) {
  registry_.erase(object->objectID_);
  changed_.erase(object);
  object->state_ = ManagedObject::FaultingState::unusable;
  object->context_ = nullptr;
}

}  // namespace kestrona
