// A fetch kept live on one context.
//
// A FetchedResultsController runs one fetch request on one context and keeps
// its result, fetchedObjects(), up to date: after every save of that context
// and after every merge of another context's save into it, it works out what
// happened to its results and tells its delegate, once per save or merge:
// controllerWillChangeContent, then controllerDidChangeObject for each object
// that was inserted into, deleted from, moved within or updated in the
// results, then controllerDidChangeContent. A save or merge that touches no
// object of the results (another entity, objects that neither matched before
// nor match now) calls nothing. The objects are those registered in the
// context; after a merge, the refreshed ones. Unsaved edits are not followed:
// the results change only at a save or a merge.
//
// The request must name an entity and carry at least one sort descriptor;
// its fetch limit must be 0 and its result type managed objects. Anything
// else is a programming error and ends the process (fatalError), since a
// live list needs a total order to place objects into and cannot keep a
// truncated or non-object result current. The results form one section
// (section 0): the one user keeps sections of its own.
//
// What counts as which change, for an object of the request's entity (or a
// sub-entity, unless includesSubentities is false) named by the save or
// merge:
// - insert: it was not in the results and matches the predicate now; its
//   newIndexPath is its place in the new list.
// - delete: it was in the results and is deleted, gone, or no longer
//   matches; its indexPath is its place in the old list.
// - move: it is still in the results, its sort keys changed, and it now
//   stands elsewhere relative to the objects that did not move; indexPath is
//   the old place, newIndexPath the new one.
// - update: it is still in the results and keeps its place relative to the
//   others; indexPath is the old place, newIndexPath the new one.
// Old index paths refer to the list before the change, new ones to the list
// after it, so a table applies deletes (and the removal half of moves) to
// its old rows and inserts (and the placing half of moves) to its new rows.
// Calls come in this order: deletes by old index, inserts by new index,
// moves by new index, updates by old index. During controllerWillChangeContent
// fetchedObjects() is still the old list; from the first object call on it is
// the new one. Objects with equal sort keys keep their order; one placed
// anew goes after the objects it ties with.
//
// The list is kept current in memory: the predicate is evaluated on each
// object the save or merge names (Predicate::evaluateWithObject), and those
// that enter or move are merged into the sorted list, whose sort keys are
// kept beside it; nothing is fetched again. An object inserted or changed
// by another context that this context never registered is loaded to be
// judged. Sort keys and predicates that reach through a to-one relationship
// are read again only when the object itself is named by a save or merge.
//
// Failures: performFetch() throws what the fetch throws (an unknown entity,
// an unknown key) and then leaves the previous results as they were. An
// object whose row has gone by the time it is judged counts as deleted.
// objectAtIndexPath with an index path outside the results is fatal.
//
// Threading: make, use and destroy the controller on its context's queue
// (the main thread for a main-queue context); the context posts its
// notifications there, and the controller observes them from construction
// until its destruction. The delegate is held weakly; one that is alive at
// controllerWillChangeContent is kept alive until controllerDidChangeContent.
// A delegate may read the controller from its calls, and may call
// performFetch from controllerDidChangeContent, but must not destroy the
// controller from any of them.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/FetchRequest.h"
#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

class ManagedObjectContext;
class FetchedResultsController;

// A place in sectioned results: the section and the row within it.
struct IndexPath {
  std::size_t section = 0;
  std::size_t row = 0;

  friend bool operator==(const IndexPath&, const IndexPath&) = default;
  friend auto operator<=>(const IndexPath&, const IndexPath&) = default;
};

enum class FetchedResultsChangeType : std::uint64_t {
  insert = 1,
  deleteChange = 2,
  move = 3,
  update = 4,
};

template <>
struct RawRepresentable<FetchedResultsChangeType> {
  using RawValue = std::uint64_t;
  static constexpr RawValue rawValue(FetchedResultsChangeType type) { return static_cast<RawValue>(type); }
  static constexpr std::optional<FetchedResultsChangeType> fromRawValue(RawValue raw) {
    if (raw < 1 || raw > 4) return std::nullopt;
    return static_cast<FetchedResultsChangeType>(raw);
  }
};

// What the controller tells about its changes; every call does nothing unless
// overridden.
class FetchedResultsControllerDelegate {
 public:
  virtual ~FetchedResultsControllerDelegate() = default;

  virtual void controllerWillChangeContent(FetchedResultsController& /*controller*/) {}
  virtual void controllerDidChangeObject(FetchedResultsController& /*controller*/,
                                         const std::shared_ptr<ManagedObject>& /*object*/,
                                         std::optional<IndexPath> /*indexPath*/, FetchedResultsChangeType /*type*/,
                                         std::optional<IndexPath> /*newIndexPath*/) {}
  virtual void controllerDidChangeContent(FetchedResultsController& /*controller*/) {}
};

class FetchedResultsController {
 public:
  // initWithFetchRequest:managedObjectContext:. Starts observing the context;
  // the results stay empty until performFetch().
  FetchedResultsController(FetchRequest fetchRequest, std::shared_ptr<ManagedObjectContext> context);
  ~FetchedResultsController();
  FetchedResultsController(const FetchedResultsController&) = delete;
  FetchedResultsController& operator=(const FetchedResultsController&) = delete;

  const FetchRequest& fetchRequest() const noexcept { return request_; }
  const std::shared_ptr<ManagedObjectContext>& managedObjectContext() const noexcept { return context_; }

  std::shared_ptr<FetchedResultsControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<FetchedResultsControllerDelegate> delegate) { delegate_ = std::move(delegate); }

  // Runs the fetch and replaces the results; tells the delegate nothing.
  void performFetch();
  // The results in sort order; empty before the first performFetch().
  const std::vector<std::shared_ptr<ManagedObject>>& fetchedObjects() const noexcept { return objects_; }

  std::shared_ptr<ManagedObject> objectAtIndexPath(const IndexPath& indexPath) const;
  // None when object is not in the results.
  std::optional<IndexPath> indexPathForObject(const ManagedObject& object) const;

 private:
  using SortKeys = std::vector<Value>;
  struct Placed;
  // Makes list, in its order, the results and their kept sort keys.
  void takeList(std::vector<Placed>& list);
  struct Changes;

  void contextDidSave(const Notification& notification);
  void contextDidMerge(const Notification& notification);
  void apply(const Changes& changes);
  // The object's sort keys when it belongs in the results now; none when it
  // is deleted, gone, of another entity or fails the predicate.
  std::optional<SortKeys> judge(ManagedObject& object) const;
  bool sharesHierarchy(const EntityDescription& entity) const;
  SortKeys sortKeys(ManagedObject& object) const;
  bool precedes(const SortKeys& lhs, const SortKeys& rhs) const;
  void rebuildPositions();

  FetchRequest request_;
  std::shared_ptr<ManagedObjectContext> context_;
  const EntityDescription* entity_ = nullptr;
  std::weak_ptr<FetchedResultsControllerDelegate> delegate_;
  bool fetched_ = false;
  // The results and, at the same index, the sort keys each was placed by.
  std::vector<std::shared_ptr<ManagedObject>> objects_;
  std::vector<SortKeys> keys_;
  std::unordered_map<const ManagedObject*, std::size_t> positions_;
  ObserverToken didSaveObserver_;
  ObserverToken didMergeObserver_;
};

}  // namespace kestrona
