#include "SharedCore/DataProviders/ContextChanges.h"

#include <array>
#include <string_view>
#include <utility>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

namespace {

using Entity = ContextChanges::Entity;

constexpr std::array<std::pair<Entity, std::string_view>, 5> kEntityNames{{
    {Entity::session, "session"},
    {Entity::task, "task"},
    {Entity::folder, "folder"},
    {Entity::ruleSet, "ruleSet"},
    {Entity::rule, "rule"},
}};

// The texts searched in an ID's printed form, in the order they are tried.
constexpr std::array<std::pair<std::string_view, Entity>, 5> kIDTexts{{
    {"/Task", Entity::task},
    {"/Folder", Entity::folder},
    {"/Session", Entity::session},
    {"/RuleSet", Entity::ruleSet},
    {"/RuleBase", Entity::rule},
}};

Entity classifyIDs(const Notification& notification, std::string_view key) {
  Entity result;
  const auto* ids = notification.userInfoValue<ManagedObjectIDSet>(key);
  if (ids == nullptr) return result;
  for (const ManagedObjectID& id : *ids) {
    const std::string text = id.description();
    for (const auto& [needle, entity] : kIDTexts) {
      if (text.find(needle) != std::string::npos) {
        result.insert(entity);
        break;
      }
    }
  }
  return result;
}

// Whether an object of entity is an instance of the class named className:
// the entity itself or one of its ancestors carries that name.
bool isKindOf(const EntityDescription& entity, std::string_view className) {
  for (const EntityDescription* current = &entity; current != nullptr; current = current->superentity()) {
    if (current->name() == className) return true;
  }
  return false;
}

std::optional<Entity> classifyInsertedOrUpdated(const EntityDescription& entity) {
  if (isKindOf(entity, "Task")) return Entity::task;
  if (isKindOf(entity, "Folder")) return Entity::folder;
  if (isKindOf(entity, "Session")) return Entity::session;
  if (isKindOf(entity, "RuleSet")) return Entity::ruleSet;
  if (isKindOf(entity, "RuleBase")) return Entity::rule;
  return std::nullopt;
}

std::optional<Entity> classifyDeleted(const EntityDescription& entity) {
  if (isKindOf(entity, "Session")) return Entity::session;
  if (isKindOf(entity, "Node")) return isKindOf(entity, "Task") ? Entity::task : Entity::folder;
  if (isKindOf(entity, "RuleSet")) return Entity::ruleSet;
  if (isKindOf(entity, "RuleBase")) return Entity::rule;
  return std::nullopt;
}

template <typename Classify>
Entity classifyObjects(const Notification& notification, std::string_view key, Classify classify) {
  Entity result;
  const auto* objects = notification.userInfoValue<ManagedObjectSet>(key);
  if (objects == nullptr) return result;
  for (const auto& object : *objects) {
    if (!object) continue;
    if (auto entity = classify(object->entity())) result.insert(*entity);
  }
  return result;
}

}  // namespace

std::string ContextChanges::Entity::description() const {
  std::string text = "[";
  bool first = true;
  for (const auto& [entity, name] : kEntityNames) {
    if (!contains(entity)) continue;
    if (!first) text += ", ";
    first = false;
    text += '"';
    text += name;
    text += '"';
  }
  return text + "]";
}

ContextChanges ContextChanges::fromMergeNotification(const Notification& notification) {
  return ContextChanges{classifyIDs(notification, NSInsertedObjectIDsKey),
                        classifyIDs(notification, NSUpdatedObjectIDsKey),
                        classifyIDs(notification, NSDeletedObjectIDsKey)};
}

ContextChanges ContextChanges::fromDidSaveNotification(const Notification& notification) {
  return ContextChanges{classifyObjects(notification, NSInsertedObjectsKey, classifyInsertedOrUpdated),
                        classifyObjects(notification, NSUpdatedObjectsKey, classifyInsertedOrUpdated),
                        classifyObjects(notification, NSDeletedObjectsKey, classifyDeleted)};
}

bool ContextChanges::haveTrackedDataChanges() const noexcept {
  const Entity tracked = Entity::session | Entity::task | Entity::folder;
  return ((inserts.rawValue | updates.rawValue | deletes.rawValue) & tracked.rawValue) != 0;
}

bool ContextChanges::have(Entity entity) const noexcept {
  return inserts.contains(entity) || updates.contains(entity) || deletes.contains(entity);
}

bool ContextChanges::haveAny(const std::vector<Entity>& entities) const noexcept {
  for (Entity entity : entities) {
    if (have(entity)) return true;
  }
  return false;
}

bool ContextChanges::haveAll(const std::vector<Entity>& entities) const noexcept {
  for (Entity entity : entities) {
    if (!have(entity)) return false;
  }
  return true;
}

std::string ContextChanges::description() const {
  return "ContextChanges(inserts: " + inserts.description() + ", updates: " + updates.description() +
         ", deletes: " + deletes.description() + ")";
}

}  // namespace kestrona
