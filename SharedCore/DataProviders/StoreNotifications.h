// The store's own notifications and the helpers that read them.
//
// All are posted on NotificationCenter::defaultCenter():
//
// - "WriteContextWillSave", object the coordinator: a
//   WriteContextWillSaveChanges under "writeContextChanges";
// - "WriteContextDidSave", object the coordinator: a
//   WriteContextDidSaveChanges under "writeContextChanges";
// - "mainContextDidChange", no object: the ContextChanges under
//   "contextChanges", and a ManagedObjectIDSet under each of
//   "insertedObjectIDs", "updatedObjectIDs" and "deletedObjectIDs".
//
// The writable data provider is to post them: the first two on the main loop
// after the write context's will-save and did-save, the last after the view
// context merged a write. A sync engine may listen to the first two.
// mainContextDidChangeUserInfo() assembles the user info of the last from
// the notification it answers.
//
// Values and free functions; any thread.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/ContextNotifications.h"
#include "SharedCore/DataProviders/ContextChanges.h"

namespace kestrona {

inline constexpr std::string_view writeContextWillSave = "WriteContextWillSave";
inline constexpr std::string_view writeContextDidSave = "WriteContextDidSave";
inline constexpr std::string_view mainContextDidChange = "mainContextDidChange";

// A namespace for the user-info key of the write context's notifications.
struct WriteContextChanges {
  WriteContextChanges() = delete;
  static constexpr std::string_view userInfoKey = "writeContextChanges";
};

// What a write is about to save, by object identifier (the upper-case UUID
// text of the object's "identifier").
struct WriteContextWillSaveChanges {
  std::map<std::string, std::vector<std::string>> changedKeysByIdentifier;
  std::vector<std::string> deletedIdentifiers;

  friend bool operator==(const WriteContextWillSaveChanges&, const WriteContextWillSaveChanges&) = default;
};

// What a write saved, by object identifier, with each object's entity name.
struct WriteContextDidSaveChanges {
  std::map<std::string, std::string> insertedEntityNamesByIdentifier;
  std::map<std::string, std::string> updatedEntityNamesByIdentifier;
  std::vector<std::string> deletedIdentifiers;

  friend bool operator==(const WriteContextDidSaveChanges&, const WriteContextDidSaveChanges&) = default;
};

// The user-info key of the ContextChanges of "mainContextDidChange".
inline constexpr std::string_view ContextChangesKey = "contextChanges";

// The ContextChanges under "contextChanges"; none when absent or of another
// type.
std::optional<ContextChanges> contextChanges(const Notification& notification);

// Whether the set under "deletedObjectIDs" holds id; false when the key is
// absent or holds something else.
bool hasDeletedObject(const Notification& notification, const ManagedObjectID& id);

// One ID set of a context notification: the ManagedObjectIDSet under idKey
// when there is one; else the IDs of the ManagedObjectSet under objectsKey;
// else empty.
ManagedObjectIDSet objectIDSet(const Notification& notification, std::string_view idKey,
                               std::string_view objectsKey);

// The user info of "mainContextDidChange" answering source (a merge or a
// did-save notification of the view context): changes under
// "contextChanges", and the three ID sets taken by objectIDSet() under
// "insertedObjectIDs", "updatedObjectIDs" and "deletedObjectIDs".
Notification::UserInfo mainContextDidChangeUserInfo(const Notification& source, const ContextChanges& changes);

}  // namespace kestrona
