// What kinds of tracked data a store change touched.
//
// ContextChanges holds three Entity option sets, one each for inserted,
// updated and deleted objects. It is built from a context's notification in
// one of two ways, which classify differently:
//
// - fromMergeNotification: the ID sets of a merge ("insertedObjectIDs", ...)
//   are classified by the printed form of each object ID, first hit wins:
//   "/Task" → task, "/Folder" → folder, "/Session" → session, "/RuleSet" →
//   ruleSet, "/RuleBase" → rule. An ID of a Rule or RuleCombination prints
//   neither and sets no bit.
// - fromDidSaveNotification: the object sets of a save ("inserted", ...) are
//   classified by the object's kind. Until the entity classes exist, an
//   object's kind is its entity together with that entity's ancestors,
//   which mirror the class hierarchy (a Task is a Node). Inserts and updates
//   test Task, Folder, Session, RuleSet, RuleBase in this order; deletes test
//   Session, then Node (a Task gives task, any other node folder), then
//   RuleSet, then RuleBase. Every other entity (the activity log among them)
//   sets no bit.
//
// An absent key, or a value of another type under it, counts as empty.
// Values; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrona {

struct Notification;

struct ContextChanges {
  // An option set over the kinds of tracked data.
  struct Entity {
    std::int64_t rawValue = 0;

    static const Entity session;
    static const Entity task;
    static const Entity folder;
    static const Entity ruleSet;
    static const Entity rule;

    constexpr bool isEmpty() const noexcept { return rawValue == 0; }
    // Whether every bit of other is set here.
    constexpr bool contains(Entity other) const noexcept { return (rawValue & other.rawValue) == other.rawValue; }
    constexpr void insert(Entity other) noexcept { rawValue |= other.rawValue; }
    // The printed array of the names of the bits set, in bit order:
    // ["session", "task"]; [] when empty.
    std::string description() const;

    friend constexpr Entity operator|(Entity lhs, Entity rhs) noexcept { return Entity{lhs.rawValue | rhs.rawValue}; }
    friend constexpr bool operator==(Entity, Entity) noexcept = default;
  };

  Entity inserts;
  Entity updates;
  Entity deletes;

  static ContextChanges fromMergeNotification(const Notification& notification);
  static ContextChanges fromDidSaveNotification(const Notification& notification);

  // Whether any of the three sets holds session, task or folder; rule
  // changes alone give false.
  bool haveTrackedDataChanges() const noexcept;
  bool haveInserts() const noexcept { return !inserts.isEmpty(); }
  bool haveUpdates() const noexcept { return !updates.isEmpty(); }
  bool haveDeletes() const noexcept { return !deletes.isEmpty(); }
  // Whether one of the three sets holds every bit of entity.
  bool have(Entity entity) const noexcept;
  // have() for at least one of entities; false for an empty list.
  bool haveAny(const std::vector<Entity>& entities) const noexcept;
  // have() for every one of entities; true for an empty list.
  bool haveAll(const std::vector<Entity>& entities) const noexcept;
  bool areEmtpy() const noexcept { return inserts.isEmpty() && updates.isEmpty() && deletes.isEmpty(); }
  // "ContextChanges(inserts: [...], updates: [...], deletes: [...])".
  std::string description() const;

  friend bool operator==(const ContextChanges&, const ContextChanges&) = default;
};

inline constexpr ContextChanges::Entity ContextChanges::Entity::session{1};
inline constexpr ContextChanges::Entity ContextChanges::Entity::task{2};
inline constexpr ContextChanges::Entity ContextChanges::Entity::folder{4};
inline constexpr ContextChanges::Entity ContextChanges::Entity::ruleSet{8};
inline constexpr ContextChanges::Entity ContextChanges::Entity::rule{16};

}  // namespace kestrona
