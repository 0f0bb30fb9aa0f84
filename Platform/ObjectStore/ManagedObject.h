// One object of the graph, living in one context.
//
// A managed object belongs to the context that made or fetched it and is
// used only on that context's queue; other threads pass its objectID().
// It holds its current values in the entity's slot layout, and its
// committed values (as last read or saved) apart only once a value changes:
// an object that is only read keeps one copy of its row (a loaded session
// is under 400 bytes). changedValues() is the difference. A fault has no values yet: its first access loads its row
// (faultingState 1 → 0); if the row is gone by then, the access fails with
// StoreError managedObjectReferentialIntegrity (133000).
//
// Keys: valueForKey gives an attribute's value, a to-one relationship's
// destination object (or nil), or a to-many relationship's destinations as
// an array of objects. setValue(value, key) takes the same, or object IDs
// for relationships; setting either side of a relationship keeps its inverse
// consistent. An unknown key, or a value of the wrong kind, fails with
// StoreError managedObjectValidation (1550). Numbers are converted to the
// attribute's type (a boolean attribute reads back as a boolean).
//
// Subclasses: a class registered for an entity name (setClassForEntityName)
// is what the store makes for that entity and its sub-entities without a
// class of their own. Its constructor takes the Construction token and
// passes it on; it may override validateValue and awakeFromInsert, give
// values for keys that are not properties (valueForUndefinedKey, for
// computed keys), and name the keys a computed key depends on
// (keyPathsForValuesAffectingValueForKey).
//
// Observation: observe(keyPath, options, callback) calls callback with a
// KeyValueChange each time the value at keyPath is announced to change,
// synchronously, on the thread that made the change (the context's queue).
// setValue announces by itself the key it sets and, for relationships, the
// inverse keys of the objects on the other side; a refresh by a merge,
// refreshObject and rollback announce each attribute and to-one whose value
// they change (not the to-many keys of other objects whose members moved:
// those read the store afresh, but unannounced).
// Code that changes a computed key's inputs by other means announces it by
// hand with willChangeValueForKey / didChangeValueForKey, which nest: the
// observers hear once, when the outermost did comes. A key path through
// to-one relationships ("task.name") is observed to its end, and follows
// when a relationship on the way points elsewhere. The returned
// KeyValueObservation removes the observer when it is destroyed or
// invalidated; it is safe after the object or its context is gone. An
// object nobody observes keeps no observation state; observing a fault
// loads it, so that the changes a merge brings are heard.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectID.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/Value.h"
#include "Platform/Observation/KeyValueObservation.h"
#include "Platform/Observation/KeyValueObserving.h"

namespace kestrona {

class ManagedObjectContext;
class ManagedObject;

// A change record of a managed object's observer; the observation
// vocabulary and the token are shared with plain observable objects.
using KeyValueChange = BasicKeyValueChange<Value, ManagedObject>;

class ManagedObject : public std::enable_shared_from_this<ManagedObject> {
 public:
  enum class FaultingState : int { loaded = 0, fault = 1, unusable = 2 };

  // What the store hands to a constructor; opaque to subclasses.
  class Construction {
   private:
    friend class ManagedObject;
    friend class ManagedObjectContext;
    Construction(const EntityDescription& entityDescription, ManagedObjectContext* owner, ManagedObjectID id)
        : entity_(&entityDescription), context_(owner), objectID_(std::move(id)) {}
    const EntityDescription* entity_;
    ManagedObjectContext* context_;
    ManagedObjectID objectID_;
  };
  using Factory = std::function<std::shared_ptr<ManagedObject>(Construction)>;

  explicit ManagedObject(Construction construction);
  virtual ~ManagedObject();
  ManagedObject(const ManagedObject&) = delete;
  ManagedObject& operator=(const ManagedObject&) = delete;

  // Registers the class made for entityName (process-wide; at start-up).
  static void setClassForEntityName(std::string entityName, Factory factory);

  // Inserts a new object (initWithEntity:insertIntoManagedObjectContext:,
  // insertNewObjectForEntityForName:inManagedObjectContext:).
  static std::shared_ptr<ManagedObject> initWithEntity(const EntityDescription& entity, ManagedObjectContext& context);
  static std::shared_ptr<ManagedObject> insertNewObjectForEntityForName(std::string_view entityName,
                                                                        ManagedObjectContext& context);

  const ManagedObjectID& objectID() const noexcept { return objectID_; }
  const EntityDescription& entity() const noexcept { return *entity_; }
  // The owning context; null once the object is unusable (its deletion was
  // saved, its insertion rolled back, or its context is gone).
  ManagedObjectContext* managedObjectContext() const noexcept { return context_; }

  bool isInserted() const noexcept { return inserted_; }
  bool isDeleted() const noexcept { return deleted_; }
  bool isUpdated() const;
  bool isFault() const noexcept { return state_ == FaultingState::fault; }
  FaultingState faultingState() const noexcept { return state_; }
  bool hasChanges() const;

  Value valueForKey(std::string_view key);
  // Follows to-one relationships: "task.archived". A nil on the way gives nil.
  Value valueForKeyPath(std::string_view keyPath);
  void setValue(const Value& value, std::string_view key);

  // Typed reads; nil or another kind gives none (or false, 0, null).
  std::optional<std::string> stringForKey(std::string_view key);
  bool boolForKey(std::string_view key);
  std::int64_t integerForKey(std::string_view key);
  double doubleForKey(std::string_view key);
  std::optional<Date> dateForKey(std::string_view key);
  std::shared_ptr<ManagedObject> objectForKey(std::string_view key);
  std::vector<std::shared_ptr<ManagedObject>> objectsForKey(std::string_view key);

  // Property name → new value of the attributes and to-one relationships
  // changed since the last save (to-ones as object IDs).
  std::map<std::string, Value> changedValues() const;
  // The last saved values of keys (all attributes and to-ones when keys is
  // empty); nil for an inserted object. Readable on a deleted object.
  std::map<std::string, Value> committedValuesForKeys(const std::vector<std::string>& keys) const;

  // Checks one value before a save; throws StoreError. The default checks
  // that a mandatory property has a value and that the value has the
  // property's kind. Overrides should call it.
  virtual void validateValue(Value& value, std::string_view key) const;

  // ---- Observation ----
  using ObservationCallback = std::function<void(const KeyValueChange&)>;
  [[nodiscard]] KeyValueObservation observe(std::string keyPath, KeyValueObservingOptions options,
                                            ObservationCallback callback);
  void willChangeValueForKey(std::string_view key);
  void didChangeValueForKey(std::string_view key);
  // The key paths whose changes change key (for a computed key); none by
  // default. Only the first component of each counts.
  virtual std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const;

 protected:
  // Called once on insertion, after the default values are set.
  virtual void awakeFromInsert() {}
  // The value of a key that is neither attribute nor relationship; fails
  // with StoreError managedObjectValidation (1550) by default.
  virtual Value valueForUndefinedKey(std::string_view key);

 private:
  friend class ManagedObjectContext;
  struct Observation;
  struct ObservationInfo;

  void fireFault();
  void requireUsable() const;
  const std::vector<Value>& committedValues() const noexcept { return committed_ ? *committed_ : values_; }
  // Keeps the committed values apart before the current ones change.
  void keepCommitted();
  // Takes a row just read as both current and committed values.
  void takeRow(std::vector<Value> row);
  // Takes row as the committed values, the current ones staying.
  void setCommitted(std::vector<Value> row);
  // The current values become the committed ones (after a save).
  void commit() noexcept { committed_.reset(); }
  // A fault again: no values.
  void clearValues() noexcept;
  // An inserted object: all its committed values are nil.
  void commitNothing();
  const Value& slotValue(std::size_t slot);
  void setSlot(std::size_t slot, Value value);
  void setToOne(const RelationshipDescription& relationship, const std::shared_ptr<ManagedObject>& destination);
  std::vector<std::shared_ptr<ManagedObject>> toMany(const RelationshipDescription& relationship);
  Value coerced(const AttributeDescription& attribute, const Value& value) const;
  // The attributes and to-ones of slots by name.
  std::map<std::string, Value> snapshotOf(const std::vector<Value>& slots) const;
  // Replaces the current values, announcing each attribute and to-one whose
  // value changes.
  void assignValues(std::vector<Value> values);
  void removeObservation(std::uint64_t id) noexcept;
  // The remove function of this kind's KeyValueObservation tokens.
  static void removeObservationOf(void* object, std::uint64_t id) noexcept;
  bool triggers(std::string_view observedKey, std::string_view changedKey, int depth = 0) const;
  void notifyObservation(const std::shared_ptr<Observation>& observation, bool prior);
  void attachChild(const std::shared_ptr<Observation>& observation);
  // The value at keyPath for an observer: nil when it cannot be read.
  Value valueForKeyPathOrNil(std::string_view keyPath);

  const EntityDescription* entity_;
  ManagedObjectContext* context_;
  ManagedObjectID objectID_;
  FaultingState state_ = FaultingState::fault;
  bool inserted_ = false;
  bool deleted_ = false;
  // The current values, and the values as last read or saved when they
  // differ: most loaded objects are never changed, so they keep one copy
  // (committedValues() is then values_ itself).
  std::vector<Value> values_;
  std::unique_ptr<std::vector<Value>> committed_;
  // The row's version when this context read or last saved it; 0 unknown.
  std::int64_t version_ = 0;
  std::unique_ptr<ObservationInfo> observation_;
};

}  // namespace kestrona
