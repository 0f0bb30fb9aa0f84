#include "SharedCore/Model/NSManagedObjectWithIdentifier.h"

#include "Platform/Foundation/UUID.h"

namespace kestrona {

void NSManagedObjectWithIdentifier::awakeFromInsert() {
  ManagedObject::awakeFromInsert();
  if (!identifier()) setIdentifier(UUID::random().uuidString());
}

}  // namespace kestrona
