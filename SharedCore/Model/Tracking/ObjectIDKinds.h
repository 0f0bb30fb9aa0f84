// What kind of node an object ID names, told by its entity alone, without
// loading the object (the design's isTaskID / isFolderID of an object ID).
// Pure, thread-safe.
#pragma once

#include "Platform/ObjectStore/ManagedObjectID.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"

namespace kestrona {

inline bool isTaskID(const ManagedObjectID& id) { return id.entity().name() == "Task"; }
inline bool isFolderID(const ManagedObjectID& id) { return id.entity().name() == "Folder"; }

}  // namespace kestrona
