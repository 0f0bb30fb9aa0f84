// The identity of one managed object in one store.
//
// A permanent ID names a row: the store's UUID, the object's entity and the
// row's primary key. Its URIRepresentation(),
// "x-kestrona://<store UUID>/<Entity>/p<key>", is stable across launches,
// and the coordinator turns it back into the ID. A temporary ID is given to
// an inserted object until it is saved or obtainPermanentIDs runs; it prints
// as "x-kestrona://<store UUID>/<Entity>/t<number>" and is never resolved by
// the coordinator. Both printed forms hold "/<EntityName>".
//
// Equality and hashing use the store, the entity hierarchy (its root
// entity), whether the ID is temporary, and the key, so the ID of a Task
// equals the same row's ID read through its parent entity Node.
// IDs are immutable values, safe to copy and compare on any thread; an ID
// keeps its model alive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Foundation/UUID.h"

namespace kestrona {

class EntityDescription;

class ManagedObjectID {
 public:
  static ManagedObjectID permanent(const UUID& storeIdentifier,
                                   std::shared_ptr<const EntityDescription> entity,
                                   std::int64_t primaryKey);
  // A temporary ID with a number unique in this process.
  static ManagedObjectID makeTemporary(const UUID& storeIdentifier,
                                       std::shared_ptr<const EntityDescription> entity);

  const EntityDescription& entity() const noexcept { return *entity_; }
  const std::shared_ptr<const EntityDescription>& entityPointer() const noexcept { return entity_; }
  const UUID& storeIdentifier() const noexcept { return store_; }
  bool isTemporaryID() const noexcept { return temporary_; }
  // The row's primary key of a permanent ID; the temporary number otherwise.
  std::int64_t primaryKey() const noexcept { return key_; }

  std::string URIRepresentation() const;
  // The printed form; the same text as URIRepresentation().
  std::string description() const { return URIRepresentation(); }

  friend bool operator==(const ManagedObjectID& lhs, const ManagedObjectID& rhs) noexcept;
  friend bool operator<(const ManagedObjectID& lhs, const ManagedObjectID& rhs) noexcept;
  std::size_t hashValue() const noexcept;

 private:
  ManagedObjectID(const UUID& store, std::shared_ptr<const EntityDescription> entity, bool temporary,
                  std::int64_t key);

  UUID store_;
  std::shared_ptr<const EntityDescription> entity_;
  bool temporary_;
  std::int64_t key_;
};

}  // namespace kestrona

template <>
struct std::hash<kestrona::ManagedObjectID> {
  std::size_t operator()(const kestrona::ManagedObjectID& id) const noexcept { return id.hashValue(); }
};
