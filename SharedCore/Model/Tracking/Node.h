// A place in the user's tree: a Task or a Folder (entity "Node", abstract).
//
// Stored: name, archived, colorId (a ColorSet::ID raw value), order among
// siblings, the confirmedDuration of the finished entries below (kept by the
// write path, never computed here), lastSessionBegin, own billing and rate
// with the flags that say whether they are set, parent and children.
// Deleting a node deletes its children (cascade) and leaves its parent.
//
// Per process, on this instance only (never stored, never seen by the same
// object in another context): hasRunningSession, true on the running
// entry's task and all its ancestors while the timer runs, set by the timer
// through setHasRunningTimeEntry(); and the cached hierarchyKey.
//
// Derived values follow the tree: effectiveIsBillable and
// effectiveHourlyRate inherit from the nearest ancestor that states its own
// (false and 0 at the root); effectiveDuration is confirmedDuration plus the
// running entry of the timer reached through the context's
// NodeCollaborators. Walks up the tree stop where a parent repeats a node
// already met, so damaged data with a parent loop ends instead of hanging.
//
// Observation: "effectiveDuration" follows "confirmedDuration" and
// "hasRunningSession"; "color" follows "colorId";
// "childrenWithSameArchivedState" follows "children". updateEffectiveDuration()
// announces "effectiveDuration" here and on every ancestor, which is how a
// tick of the timer reaches observers on every level. Computed keys answer
// valueForKey: "effectiveDuration" (double), "color" (the colour's name),
// "childrenWithSameArchivedState" (objects), "hasRunningSession" (bool).
//
// Validation: a name that is nil, not a string, or empty after trimming
// white space and newlines fails the save with StoreError 1570
// (validationMissingMandatoryProperty) whose user info holds the node under
// "NSValidationErrorObject" and "name" under "NSValidationErrorKey". A
// valid name is kept as it was typed, spaces included.
//
// Threading: only on the context's queue. Reading a value of a fault loads
// it; the derived values are not cheap on faults.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Platform/Color/Color.h"
#include "Platform/ObjectStore/FetchRequest.h"
#include "SharedCore/Model/NSManagedObjectWithIdentifier.h"
#include "SharedCore/Model/Tracking/NodeBillingOption.h"
#include "SharedCore/Support/Colors/ColorSet.h"

namespace kestrona {

class Task;
class Folder;

class Node : public NSManagedObjectWithIdentifier {
 public:
  using BillingOption = NodeBillingOption;
  // What kind of nodes a list holds (nodeTypesIn).
  enum class CollectionType { folder, folders, task, tasks, mixed, none };

  explicit Node(Construction construction) : NSManagedObjectWithIdentifier(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("Node"); }
  // The entity of this object: "Task" or "Folder", also through a Node.
  const std::string& entityName() const noexcept { return entity().name(); }

  // ---- Stored ----
  // Empty while no name is set.
  std::string name();
  void setName(const std::string& name) { setValue(Value(name), "name"); }
  bool archived() { return boolForKey("archived"); }
  void setArchived(bool archived) { setValue(Value(archived), "archived"); }
  std::int16_t colorId() { return static_cast<std::int16_t>(integerForKey("colorId")); }
  void setColorId(std::int16_t colorId) { setValue(Value(std::int64_t{colorId}), "colorId"); }
  std::int16_t order() { return static_cast<std::int16_t>(integerForKey("order")); }
  void setOrder(std::int16_t order) { setValue(Value(std::int64_t{order}), "order"); }
  double confirmedDuration() { return doubleForKey("confirmedDuration"); }
  void setConfirmedDuration(double duration) { setValue(Value(duration), "confirmedDuration"); }
  std::optional<Date> lastSessionBegin() { return dateForKey("lastSessionBegin"); }
  void setLastSessionBegin(std::optional<Date> begin) { setValue(valueOf(begin), "lastSessionBegin"); }
  bool isBillableSet() { return boolForKey("isBillableSet"); }
  void setIsBillableSet(bool isSet) { setValue(Value(isSet), "isBillableSet"); }
  bool isBillable() { return boolForKey("isBillable"); }
  void setIsBillable(bool isBillable) { setValue(Value(isBillable), "isBillable"); }
  bool hourlyRateIsSet() { return boolForKey("hourlyRateIsSet"); }
  void setHourlyRateIsSet(bool isSet) { setValue(Value(isSet), "hourlyRateIsSet"); }
  double hourlyRate() { return doubleForKey("hourlyRate"); }
  void setHourlyRate(double rate) { setValue(Value(rate), "hourlyRate"); }
  std::shared_ptr<Node> parent();
  // Moves this node under parent (null: to the root); both sides' lists follow.
  void setParent(const std::shared_ptr<Node>& parent) { setValue(valueOf(parent), "parent"); }
  // In no defined order; empty when there are none.
  std::vector<std::shared_ptr<Node>> children();

  // ---- Per process ----
  bool hasRunningSession() const noexcept { return hasRunningSession_; }
  // Sets the flag on this node only, announcing "hasRunningSession".
  void setHasRunningSession(bool hasRunningSession);

  // ---- Derived ----
  // identifier, or "<no identifier>"; for logs (it never reads name).
  std::string nameOrId();
  // identifier, or "<" + entity name + " (no identifier)>".
  std::string description();
  std::string isArchivedString() { return archived() ? "true" : "false"; }
  // The set of colorId from the context's colour set manager (a process-wide
  // one without collaborators); an unknown colorId gives the red set.
  ColorSet colorSet();
  Color color() { return colorSet().baseColor(); }
  // The parent's key (empty at the root), ":", and this node's object URI;
  // cached on this instance until updateHierarchyKey().
  std::string hierarchyKey();
  double effectiveHourlyRate();
  bool effectiveIsBillable();
  BillingOption billingOption();
  // inherited (the parent's effectiveIsBillable, false at the root),
  // billable, nonBillable.
  std::array<BillingOption, 3> billingCases();
  double effectiveDuration();
  // The tasks among the children and the children with children of their
  // own (one level only), in childrenArray() order.
  std::vector<std::shared_ptr<Node>> notEmptyChildren();
  // The children whose archived equals this node's. (A to-many of this store
  // is never nil, so there is always a set.)
  std::unordered_set<std::shared_ptr<Node>> childrenWithSameArchivedState();
  // The children by ascending order; the sort is stable and has no
  // tie-break of its own.
  std::vector<std::shared_ptr<Node>> childrenArray();
  // The ancestors, nearest first, ending at the root. A parent that is this
  // node, or one already met, ends the walk and is not listed.
  std::vector<std::shared_ptr<Node>> allParents();
  // Whether this node is among other's ancestors, by object ID.
  bool isParentOf(Node& other);
  // Whether other is among this node's ancestors, by object ID.
  bool isChildOfNode(Node& other);

  // The kind of nodes in any range of pointers to managed objects; elements
  // that are neither Task nor Folder are ignored.
  template <typename Range>
  static CollectionType nodeTypesIn(const Range& nodes);
  // Whether every element is a Class; true for an empty range.
  template <typename Class, typename Range>
  static bool listContainsOnly(const Range& nodes);

  // Sets hasRunningSession on this node and all its ancestors, then
  // announces "effectiveDuration" from the root down to this node.
  void setHasRunningTimeEntry(bool flag);
  // Announces "effectiveDuration" on this node and every ancestor.
  void updateEffectiveDuration();
  // Forgets this node's cached hierarchyKey (not its descendants').
  void updateHierarchyKey() { hierarchyKey_.reset(); }

  std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const override;
  void validateValue(Value& value, std::string_view key) const override;

 protected:
  Value valueForUndefinedKey(std::string_view key) override;

 private:
  // The collection type of counted tasks and folders.
  static CollectionType collectionType(std::size_t tasks, std::size_t folders);
  static bool isTask(const ManagedObject* object);
  static bool isFolder(const ManagedObject* object);

  bool hasRunningSession_ = false;
  std::optional<std::string> hierarchyKey_;
};

template <typename Range>
Node::CollectionType Node::nodeTypesIn(const Range& nodes) {
  std::size_t tasks = 0;
  std::size_t folders = 0;
  for (const auto& node : nodes) {
    if (isTask(std::to_address(node))) ++tasks;
    if (isFolder(std::to_address(node))) ++folders;
  }
  return collectionType(tasks, folders);
}

template <typename Class, typename Range>
bool Node::listContainsOnly(const Range& nodes) {
  for (const auto& node : nodes) {
    if (dynamic_cast<const Class*>(std::to_address(node)) == nullptr) return false;
  }
  return true;
}

}  // namespace kestrona
