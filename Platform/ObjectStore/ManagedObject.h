// One object of the graph, living in one context.
//
// A managed object belongs to the context that made or fetched it and is
// used only on that context's queue; other threads pass its objectID().
// It holds its committed values (as last read or saved) and its current
// values, both in the entity's slot layout; changedValues() is the
// difference. A fault has no values yet: its first access loads its row
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
// passes it on; it may override validateValue and awakeFromInsert.
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

namespace kestrona {

class ManagedObjectContext;

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

 protected:
  // Called once on insertion, after the default values are set.
  virtual void awakeFromInsert() {}

 private:
  friend class ManagedObjectContext;

  void fireFault();
  void requireUsable() const;
  const Value& slotValue(std::size_t slot);
  void setSlot(std::size_t slot, Value value);
  void setToOne(const RelationshipDescription& relationship, const std::shared_ptr<ManagedObject>& destination);
  std::vector<std::shared_ptr<ManagedObject>> toMany(const RelationshipDescription& relationship);
  Value coerced(const AttributeDescription& attribute, const Value& value) const;

  const EntityDescription* entity_;
  ManagedObjectContext* context_;
  ManagedObjectID objectID_;
  FaultingState state_ = FaultingState::fault;
  bool inserted_ = false;
  bool deleted_ = false;
  std::vector<Value> committed_;
  std::vector<Value> values_;
};

}  // namespace kestrona
