#include "SharedCore/DataProviders/StoreNotifications.h"

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

std::optional<ContextChanges> contextChanges(const Notification& notification) {
  const auto* changes = notification.userInfoValue<ContextChanges>(ContextChangesKey);
  if (changes == nullptr) return std::nullopt;
  return *changes;
}

bool hasDeletedObject(const Notification& notification, const ManagedObjectID& id) {
  const auto* deleted = notification.userInfoValue<ManagedObjectIDSet>(NSDeletedObjectIDsKey);
  return deleted != nullptr && deleted->contains(id);
}

ManagedObjectIDSet objectIDSet(const Notification& notification, std::string_view idKey,
                               std::string_view objectsKey) {
  if (const auto* ids = notification.userInfoValue<ManagedObjectIDSet>(idKey)) return *ids;
  ManagedObjectIDSet result;
  if (const auto* objects = notification.userInfoValue<ManagedObjectSet>(objectsKey)) {
    for (const auto& object : *objects) {
      if (object) result.insert(object->objectID());
    }
  }
  return result;
}

Notification::UserInfo mainContextDidChangeUserInfo(const Notification& source, const ContextChanges& changes) {
  Notification::UserInfo userInfo;
  userInfo.emplace(std::string(ContextChangesKey), changes);
  userInfo.emplace(std::string(NSInsertedObjectIDsKey),
                   objectIDSet(source, NSInsertedObjectIDsKey, NSInsertedObjectsKey));
  userInfo.emplace(std::string(NSUpdatedObjectIDsKey), objectIDSet(source, NSUpdatedObjectIDsKey, NSUpdatedObjectsKey));
  userInfo.emplace(std::string(NSDeletedObjectIDsKey), objectIDSet(source, NSDeletedObjectIDsKey, NSDeletedObjectsKey));
  return userInfo;
}

}  // namespace kestrona
