// The objects a context holds: at most one per object ID, found by ID.
//
// Each object is kept by its own ID, so the ID is not stored twice; an
// object's ID must therefore not change while it is registered (the context
// takes it out, gives it its permanent ID, and puts it back). Used on the
// context's queue only.
#pragma once

#include <cstddef>
#include <memory>
#include <unordered_set>

#include "Platform/ObjectStore/ManagedObjectID.h"

namespace kestrona {

class ManagedObject;

class ObjectRegistry {
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const std::shared_ptr<ManagedObject>& object) const noexcept;
    std::size_t operator()(const ManagedObjectID& id) const noexcept;
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const std::shared_ptr<ManagedObject>& lhs, const std::shared_ptr<ManagedObject>& rhs) const noexcept;
    bool operator()(const ManagedObjectID& lhs, const std::shared_ptr<ManagedObject>& rhs) const noexcept;
    bool operator()(const std::shared_ptr<ManagedObject>& lhs, const ManagedObjectID& rhs) const noexcept;
  };
  using Set = std::unordered_set<std::shared_ptr<ManagedObject>, Hash, Equal>;

 public:
  // The object registered for id, or null.
  std::shared_ptr<ManagedObject> find(const ManagedObjectID& id) const;
  // Registers object, in place of one registered for the same ID.
  void insert(const std::shared_ptr<ManagedObject>& object);
  void erase(const ManagedObjectID& id);
  void clear() noexcept { objects_.clear(); }
  Set::const_iterator begin() const noexcept { return objects_.begin(); }
  Set::const_iterator end() const noexcept { return objects_.end(); }

 private:
  Set objects_;
};

}  // namespace kestrona
