// The base of every entity that carries a stable identifier.
//
// identifier is the upper-case canonical text of a random UUID. It names the
// object across stores, files, undo records and interchange, where object
// IDs (one store's identity) cannot. It is given once, when the object is
// first inserted into a context (awakeFromInsert), unless one was set
// already; loading a stored object never changes it. Whether an entity is
// "synced" is told by its model alone: it has an attribute named
// "identifier".
//
// Threading: like every managed object, only on its context's queue.
#pragma once

#include <optional>
#include <string>

#include "Platform/ObjectStore/ManagedObject.h"
#include "SharedCore/Model/EntityValues.h"

namespace kestrona {

class NSManagedObjectWithIdentifier : public ManagedObject {
 public:
  explicit NSManagedObjectWithIdentifier(Construction construction) : ManagedObject(std::move(construction)) {}

  std::optional<std::string> identifier() { return stringForKey("identifier"); }
  void setIdentifier(const std::optional<std::string>& identifier) { setValue(valueOf(identifier), "identifier"); }

 protected:
  void awakeFromInsert() override;
};

}  // namespace kestrona
