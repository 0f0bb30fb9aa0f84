#include "Platform/ObjectStore/FetchedResultsController.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_set>
#include <utility>

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

// What one save or merge said about objects that may concern the results.
struct FetchedResultsController::Changes {
  // Inserted or updated objects of the requested entity's hierarchy, each
  // registered in the context.
  std::vector<std::shared_ptr<ManagedObject>> candidates;
  std::unordered_set<const ManagedObject*> deletedObjects;
  std::unordered_set<ManagedObjectID> deletedIDs;
};

// One entry of the list being built: the object, the keys it is sorted by,
// its index in the old list (none for an insertion), and whether it is placed
// anew rather than kept where it stood.
struct FetchedResultsController::Placed {
  std::shared_ptr<ManagedObject> object;
  SortKeys keys;
  std::optional<std::size_t> oldIndex;
  bool placedAnew = false;
};

FetchedResultsController::FetchedResultsController(FetchRequest fetchRequest,
                                                   std::shared_ptr<ManagedObjectContext> context)
    : request_(std::move(fetchRequest)), context_(std::move(context)) {
  precondition(context_ != nullptr, "A fetched results controller needs a context");
  precondition(!request_.sortDescriptors.empty(),
               "A fetched results controller needs a fetch request with at least one sort descriptor");
  precondition(request_.fetchLimit == 0, "A fetched results controller cannot keep a fetch limit");
  precondition(request_.resultType == FetchRequestResultType::managedObjectResultType,
               "A fetched results controller fetches managed objects only");

  auto& center = NotificationCenter::defaultCenter();
  const void* sender = context_.get();
  didSaveObserver_ = center.addObserver(std::string(NSManagedObjectContextDidSaveNotification), sender,
                                        [this](const Notification& notification) { contextDidSave(notification); });
  didMergeObserver_ =
      center.addObserver(std::string(NSManagedObjectContextDidMergeChangesObjectIDsNotification), sender,
                         [this](const Notification& notification) { contextDidMerge(notification); });
}

FetchedResultsController::~FetchedResultsController() {
  // Before any member goes: no notification may reach a half-destroyed
  // controller.
  didSaveObserver_.remove();
  didMergeObserver_.remove();
}

void FetchedResultsController::performFetch() {
  auto objects = context_->fetch(request_);
  const EntityDescription* entity =
      request_.entity ? request_.entity : EntityDescription::entityForName(request_.entityName, *context_);
  precondition(entity != nullptr, "The fetched entity is not in the context's model");

  std::vector<Placed> placed;
  placed.reserve(objects.size());
  for (auto& object : objects) placed.push_back({object, sortKeys(*object), std::nullopt, false});
  // The fetch sorts already; sorting again by the kept keys guarantees the
  // order that later placements rely on, at little cost on sorted input.
  std::stable_sort(placed.begin(), placed.end(),
                   [this](const Placed& lhs, const Placed& rhs) { return precedes(lhs.keys, rhs.keys); });

  entity_ = entity;
  takeList(placed);
  rebuildPositions();
  fetched_ = true;
}

void FetchedResultsController::takeList(std::vector<Placed>& list) {
  objects_.clear();
  keys_.clear();
  objects_.reserve(list.size());
  keys_.reserve(list.size());
  for (auto& entry : list) {
    objects_.push_back(std::move(entry.object));
    keys_.push_back(std::move(entry.keys));
  }
}

std::shared_ptr<ManagedObject> FetchedResultsController::objectAtIndexPath(const IndexPath& indexPath) const {
  precondition(indexPath.section == 0 && indexPath.row < objects_.size(),
               "Index path outside the fetched results: section " + std::to_string(indexPath.section) + ", row " +
                   std::to_string(indexPath.row) + " of " + std::to_string(objects_.size()));
  return objects_[indexPath.row];
}

std::optional<IndexPath> FetchedResultsController::indexPathForObject(const ManagedObject& object) const {
  auto found = positions_.find(&object);
  if (found == positions_.end()) return std::nullopt;
  return IndexPath{0, found->second};
}

void FetchedResultsController::contextDidSave(const Notification& notification) {
  if (!fetched_) return;
  Changes changes;
  for (auto key : {NSInsertedObjectsKey, NSUpdatedObjectsKey}) {
    const auto* objects = notification.userInfoValue<ManagedObjectSet>(key);
    if (!objects) continue;
    for (const auto& object : *objects) {
      if (object && sharesHierarchy(object->entity())) changes.candidates.push_back(object);
    }
  }
  if (const auto* deleted = notification.userInfoValue<ManagedObjectSet>(NSDeletedObjectsKey)) {
    for (const auto& object : *deleted) {
      if (object) changes.deletedObjects.insert(object.get());
    }
  }
  apply(changes);
}

void FetchedResultsController::contextDidMerge(const Notification& notification) {
  if (!fetched_) return;
  Changes changes;
  for (auto key : {NSInsertedObjectIDsKey, NSUpdatedObjectIDsKey}) {
    const auto* ids = notification.userInfoValue<ManagedObjectIDSet>(key);
    if (!ids) continue;
    const bool insertions = key == NSInsertedObjectIDsKey;
    for (const auto& id : *ids) {
      if (!sharesHierarchy(id.entity())) continue;
      auto object = context_->objectRegisteredForID(id);
      // An insertion already in the results was fetched after that save
      // reached the store, so its merge has nothing new to say about it.
      if (object && insertions && positions_.contains(object.get())) continue;
      if (!object) {
        // Never registered here, so not in the results; it may match now,
        // and only its values can tell.
        try {
          object = context_->existingObjectWithID(id);
        } catch (const StoreError&) {
          continue;
        }
      }
      changes.candidates.push_back(std::move(object));
    }
  }
  if (const auto* deleted = notification.userInfoValue<ManagedObjectIDSet>(NSDeletedObjectIDsKey)) {
    for (const auto& id : *deleted) {
      if (sharesHierarchy(id.entity())) changes.deletedIDs.insert(id);
    }
  }
  apply(changes);
}

void FetchedResultsController::apply(const Changes& changes) {
  enum class Fate { stays, updated, rekeyed, deleted };
  const std::size_t oldCount = objects_.size();
  std::vector<Fate> fates(oldCount, Fate::stays);
  std::vector<SortKeys> newKeys(oldCount);
  std::vector<Placed> toPlace;
  bool touched = false;

  if (!changes.deletedObjects.empty() || !changes.deletedIDs.empty()) {
    for (std::size_t index = 0; index < oldCount; ++index) {
      const auto& object = objects_[index];
      if (changes.deletedObjects.contains(object.get()) || changes.deletedIDs.contains(object->objectID())) {
        fates[index] = Fate::deleted;
        touched = true;
      }
    }
  }

  std::unordered_set<const ManagedObject*> judged;
  for (const auto& candidate : changes.candidates) {
    if (!judged.insert(candidate.get()).second || changes.deletedObjects.contains(candidate.get())) continue;
    auto keys = judge(*candidate);
    auto found = positions_.find(candidate.get());
    if (found == positions_.end()) {
      if (keys) toPlace.push_back({candidate, std::move(*keys), std::nullopt, true});
      continue;
    }
    std::size_t index = found->second;
    if (fates[index] == Fate::deleted) continue;
    touched = true;
    if (!keys) {
      fates[index] = Fate::deleted;
    } else if (!precedes(*keys, keys_[index]) && !precedes(keys_[index], *keys)) {
      fates[index] = Fate::updated;
      newKeys[index] = std::move(*keys);
    } else {
      fates[index] = Fate::rekeyed;
      toPlace.push_back({candidate, std::move(*keys), index, true});
    }
  }
  if (!touched && toPlace.empty()) return;

  struct Event {
    FetchedResultsChangeType type;
    std::shared_ptr<ManagedObject> object;
    std::optional<std::size_t> oldIndex;
    std::optional<std::size_t> newIndex;
  };
  std::vector<Event> deletes;
  for (std::size_t index = 0; index < oldCount; ++index) {
    if (fates[index] == Fate::deleted) {
      deletes.push_back({FetchedResultsChangeType::deleteChange, objects_[index], index, std::nullopt});
    }
  }

  // Held for the whole batch, so a delegate that hears will-change also hears
  // did-change. It hears will-change while the old list is still whole: the
  // new one is built by taking the old one apart.
  auto delegate = delegate_.lock();
  if (delegate) delegate->controllerWillChangeContent(*this);

  // The objects that keep their places are still in order among themselves:
  // their keys did not change, or changed to equal ones. The others are
  // merged in, each after the kept objects it ties with.
  std::vector<Placed> kept;
  kept.reserve(oldCount);
  std::vector<std::size_t> keptBefore(oldCount);
  for (std::size_t index = 0; index < oldCount; ++index) {
    keptBefore[index] = kept.size();
    if (fates[index] == Fate::stays) {
      kept.push_back({std::move(objects_[index]), std::move(keys_[index]), index, false});
    } else if (fates[index] == Fate::updated) {
      kept.push_back({std::move(objects_[index]), std::move(newKeys[index]), index, false});
    }
  }
  std::stable_sort(toPlace.begin(), toPlace.end(), [this](const Placed& lhs, const Placed& rhs) {
    if (precedes(lhs.keys, rhs.keys)) return true;
    if (precedes(rhs.keys, lhs.keys)) return false;
    return lhs.object->objectID() < rhs.object->objectID();
  });
  std::vector<Placed> merged;
  merged.reserve(kept.size() + toPlace.size());
  std::merge(std::make_move_iterator(kept.begin()), std::make_move_iterator(kept.end()),
             std::make_move_iterator(toPlace.begin()), std::make_move_iterator(toPlace.end()),
             std::back_inserter(merged),
             [this](const Placed& lhs, const Placed& rhs) { return precedes(lhs.keys, rhs.keys); });

  // An object whose keys changed still counts as staying in place when it
  // sits between the same kept neighbours as before and no other such object
  // shares that gap, before or after: then the kept objects and it are in
  // the same order in both lists, and an update in place is all a reader of
  // the events needs. Otherwise it moved.
  std::vector<std::size_t> newGap(merged.size());
  std::unordered_map<std::size_t, std::size_t> rekeyedInOldGap;
  std::unordered_map<std::size_t, std::size_t> rekeyedInNewGap;
  std::size_t keptSoFar = 0;
  for (std::size_t position = 0; position < merged.size(); ++position) {
    const auto& entry = merged[position];
    newGap[position] = keptSoFar;
    if (!entry.placedAnew) {
      ++keptSoFar;
    } else if (entry.oldIndex) {
      ++rekeyedInOldGap[keptBefore[*entry.oldIndex]];
      ++rekeyedInNewGap[keptSoFar];
    }
  }

  std::vector<Event> inserts;
  std::vector<Event> moves;
  std::vector<Event> updates;
  for (std::size_t position = 0; position < merged.size(); ++position) {
    const auto& entry = merged[position];
    if (!entry.oldIndex) {
      inserts.push_back({FetchedResultsChangeType::insert, entry.object, std::nullopt, position});
      continue;
    }
    std::size_t oldIndex = *entry.oldIndex;
    if (!entry.placedAnew) {
      if (fates[oldIndex] == Fate::updated) {
        updates.push_back({FetchedResultsChangeType::update, entry.object, oldIndex, position});
      }
      continue;
    }
    std::size_t oldGap = keptBefore[oldIndex];
    bool inPlace =
        oldGap == newGap[position] && rekeyedInOldGap[oldGap] == 1 && rekeyedInNewGap[newGap[position]] == 1;
    (inPlace ? updates : moves)
        .push_back({inPlace ? FetchedResultsChangeType::update : FetchedResultsChangeType::move, entry.object,
                    oldIndex, position});
  }
  std::sort(updates.begin(), updates.end(),
            [](const Event& lhs, const Event& rhs) { return *lhs.oldIndex < *rhs.oldIndex; });

  takeList(merged);
  // Updated in place rather than rebuilt: most objects keep their entry.
  for (const auto& event : deletes) positions_.erase(event.object.get());
  for (std::size_t index = 0; index < objects_.size(); ++index) positions_.insert_or_assign(objects_[index].get(), index);

  if (!delegate) return;
  auto toIndexPath = [](std::optional<std::size_t> index) -> std::optional<IndexPath> {
    if (!index) return std::nullopt;
    return IndexPath{0, *index};
  };
  for (const auto* group : {&deletes, &inserts, &moves, &updates}) {
    for (const auto& event : *group) {
      delegate->controllerDidChangeObject(*this, event.object, toIndexPath(event.oldIndex), event.type,
                                          toIndexPath(event.newIndex));
    }
  }
  delegate->controllerDidChangeContent(*this);
}

std::optional<FetchedResultsController::SortKeys> FetchedResultsController::judge(ManagedObject& object) const {
  if (!object.managedObjectContext() || object.isDeleted()) return std::nullopt;
  bool ofEntity = request_.includesSubentities ? object.entity().isKindOfEntity(*entity_) : &object.entity() == entity_;
  if (!ofEntity) return std::nullopt;
  try {
    if (request_.predicate && !request_.predicate->evaluateWithObject(object)) return std::nullopt;
    return sortKeys(object);
  } catch (const StoreError& error) {
    // The row went away after the save or merge named the object.
    if (error.kind() == StoreErrorCode::managedObjectReferentialIntegrity) return std::nullopt;
    throw;
  }
}

bool FetchedResultsController::sharesHierarchy(const EntityDescription& entity) const {
  return &entity.rootEntity() == &entity_->rootEntity() || entity.rootEntity().name() == entity_->rootEntity().name();
}

FetchedResultsController::SortKeys FetchedResultsController::sortKeys(ManagedObject& object) const {
  SortKeys keys;
  keys.reserve(request_.sortDescriptors.size());
  for (const auto& descriptor : request_.sortDescriptors) keys.push_back(object.valueForKeyPath(descriptor.key));
  return keys;
}

bool FetchedResultsController::precedes(const SortKeys& lhs, const SortKeys& rhs) const {
  for (std::size_t index = 0; index < request_.sortDescriptors.size(); ++index) {
    bool ascending = request_.sortDescriptors[index].ascending;
    if (precedesInSortOrder(lhs[index], rhs[index], ascending)) return true;
    if (precedesInSortOrder(rhs[index], lhs[index], ascending)) return false;
  }
  return false;
}

void FetchedResultsController::rebuildPositions() {
  positions_.clear();
  positions_.reserve(objects_.size());
  for (std::size_t index = 0; index < objects_.size(); ++index) positions_.emplace(objects_[index].get(), index);
}

}  // namespace kestrona
