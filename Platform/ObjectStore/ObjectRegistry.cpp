#include "Platform/ObjectStore/ObjectRegistry.h"

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

std::size_t ObjectRegistry::Hash::operator()(const std::shared_ptr<ManagedObject>& object) const noexcept {
  return object->objectID().hashValue();
}

std::size_t ObjectRegistry::Hash::operator()(const ManagedObjectID& id) const noexcept { return id.hashValue(); }

bool ObjectRegistry::Equal::operator()(const std::shared_ptr<ManagedObject>& lhs,
                                       const std::shared_ptr<ManagedObject>& rhs) const noexcept {
  return lhs->objectID() == rhs->objectID();
}

bool ObjectRegistry::Equal::operator()(const ManagedObjectID& lhs,
                                       const std::shared_ptr<ManagedObject>& rhs) const noexcept {
  return lhs == rhs->objectID();
}

bool ObjectRegistry::Equal::operator()(const std::shared_ptr<ManagedObject>& lhs,
                                       const ManagedObjectID& rhs) const noexcept {
  return lhs->objectID() == rhs;
}

std::shared_ptr<ManagedObject> ObjectRegistry::find(const ManagedObjectID& id) const {
  auto found = objects_.find(id);
  return found == objects_.end() ? nullptr : *found;
}

void ObjectRegistry::insert(const std::shared_ptr<ManagedObject>& object) {
  erase(object->objectID());
  objects_.insert(object);
}

void ObjectRegistry::erase(const ManagedObjectID& id) {
  if (auto found = objects_.find(id); found != objects_.end()) objects_.erase(found);
}

}  // namespace kestrona
