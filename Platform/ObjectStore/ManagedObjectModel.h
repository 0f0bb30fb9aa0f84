// The object model: entities, their attributes and relationships.
//
// A model is read from a resource file "<name>.kmodel" (JSON) by
// ManagedObjectModel::loadNamed(name, directory). The file holds
//   {"entities": [{"name": "Node", "abstract": true, "parent": null,
//     "attributes": [{"name": "name", "type": "string", "optional": true,
//                     "default": "…", "valueTransformerName": "…"}],
//     "relationships": [{"name": "parent", "destination": "Node",
//                        "toMany": false, "inverse": "children",
//                        "deleteRule": "nullify", "optional": true}],
//     "indexes": [["begin"], ["begin", "confirmedDuration"]]}]}
// Attribute types: "string", "boolean", "integer16", "integer32",
// "integer64", "double", "date", "binary", "transformable". Delete rules:
// "nullify", "cascade", "deny", "noAction". A sub-entity names its "parent"
// and inherits every property of it. Every relationship needs its inverse,
// and a to-many relationship's inverse must be to-one: the store keeps a
// to-many as the set of destinations whose inverse points back.
//
// Loading fails with StoreError fileReadNoSuchFile (260) when the file is
// missing and fileReadCorruptFile (259) when it is not a valid model; the
// description says what is wrong. A loaded model is immutable and may be
// read from any thread. Entities and properties live as long as the model;
// the shared pointers that entityPointer() hands out keep the model alive.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class EntityDescription;
class ManagedObjectContext;
class ManagedObjectModel;

// Raw values are the platform's attribute type numbers, which report
// expressions use as their result type (double 500, 64-bit integer 300).
enum class AttributeType : int {
  undefinedAttributeType = 0,
  integer16AttributeType = 100,
  integer32AttributeType = 200,
  integer64AttributeType = 300,
  doubleAttributeType = 500,
  stringAttributeType = 700,
  booleanAttributeType = 800,
  dateAttributeType = 900,
  binaryDataAttributeType = 1000,
  transformableAttributeType = 1800,
};

enum class DeleteRule { noActionDeleteRule, nullifyDeleteRule, cascadeDeleteRule, denyDeleteRule };

// A stored attribute. slot() is its index in the value slots of every
// entity that has it (inherited properties keep their slot).
class AttributeDescription {
 public:
  const std::string& name() const noexcept { return name_; }
  AttributeType attributeType() const noexcept { return type_; }
  bool isOptional() const noexcept { return optional_; }
  const Value& defaultValue() const noexcept { return defaultValue_; }
  const std::string& valueTransformerName() const noexcept { return transformerName_; }
  std::size_t slot() const noexcept { return slot_; }

 private:
  friend class ManagedObjectModel;
  std::string name_;
  AttributeType type_ = AttributeType::undefinedAttributeType;
  bool optional_ = true;
  Value defaultValue_;
  std::string transformerName_;
  std::size_t slot_ = 0;
};

class RelationshipDescription {
 public:
  const std::string& name() const noexcept { return name_; }
  bool isToMany() const noexcept { return toMany_; }
  bool isOptional() const noexcept { return optional_; }
  DeleteRule deleteRule() const noexcept { return deleteRule_; }
  const EntityDescription& destinationEntity() const noexcept { return *destination_; }
  const RelationshipDescription& inverseRelationship() const noexcept { return *inverse_; }
  // The value slot of a to-one relationship; meaningless for a to-many.
  std::size_t slot() const noexcept { return slot_; }

 private:
  friend class ManagedObjectModel;
  std::string name_;
  bool toMany_ = false;
  bool optional_ = true;
  DeleteRule deleteRule_ = DeleteRule::nullifyDeleteRule;
  std::string destinationName_;
  std::string inverseName_;
  const EntityDescription* destination_ = nullptr;
  const RelationshipDescription* inverse_ = nullptr;
  std::size_t slot_ = 0;
};

class EntityDescription {
 public:
  const std::string& name() const noexcept { return name_; }
  bool isAbstract() const noexcept { return abstract_; }
  const EntityDescription* superentity() const noexcept { return superentity_; }
  const std::vector<const EntityDescription*>& subentities() const noexcept { return subentities_; }
  // The top of this entity's hierarchy; the entity itself when it has no parent.
  const EntityDescription& rootEntity() const noexcept;
  // Whether this entity is other or one of its sub-entities, at any depth.
  bool isKindOfEntity(const EntityDescription& other) const noexcept;
  const ManagedObjectModel& managedObjectModel() const noexcept { return *model_; }
  // A shared pointer to this entity that keeps the model alive.
  std::shared_ptr<const EntityDescription> entityPointer() const;

  // Own and inherited properties.
  const std::map<std::string, const AttributeDescription*, std::less<>>& attributesByName() const noexcept {
    return attributesByName_;
  }
  const std::map<std::string, const RelationshipDescription*, std::less<>>& relationshipsByName() const noexcept {
    return relationshipsByName_;
  }
  const AttributeDescription* attribute(std::string_view name) const noexcept;
  const RelationshipDescription* relationship(std::string_view name) const noexcept;
  // Number of value slots: attributes and to-one relationships.
  std::size_t slotCount() const noexcept { return slotCount_; }
  // A hash of the root entity's name, the same in every model instance.
  std::size_t hierarchyHash() const noexcept { return hierarchyHash_; }
  // Index lists named in the model (own and inherited).
  const std::vector<std::vector<std::string>>& indexes() const noexcept { return indexes_; }

  // The entity of that name in the model of the context's coordinator, or
  // null when there is none.
  [[nodiscard]] static const EntityDescription* entityForName(std::string_view name, const ManagedObjectContext& context);

 private:
  friend class ManagedObjectModel;
  std::string name_;
  std::string superentityName_;
  bool abstract_ = false;
  const ManagedObjectModel* model_ = nullptr;
  const EntityDescription* superentity_ = nullptr;
  std::vector<const EntityDescription*> subentities_;
  std::vector<AttributeDescription> ownAttributes_;
  std::vector<RelationshipDescription> ownRelationships_;
  std::map<std::string, const AttributeDescription*, std::less<>> attributesByName_;
  std::map<std::string, const RelationshipDescription*, std::less<>> relationshipsByName_;
  std::vector<std::vector<std::string>> indexes_;
  std::size_t slotCount_ = 0;
  std::size_t hierarchyHash_ = 0;
};

class ManagedObjectModel : public std::enable_shared_from_this<ManagedObjectModel> {
 public:
  // The model in "<directory>/<name>.kmodel".
  [[nodiscard]] static std::shared_ptr<const ManagedObjectModel> loadNamed(std::string_view name,
                                                             const std::filesystem::path& directory);
  [[nodiscard]] static std::shared_ptr<const ManagedObjectModel> fromURL(const std::filesystem::path& url);
  // The model described by JSON text; fails with fileReadCorruptFile.
  [[nodiscard]] static std::shared_ptr<const ManagedObjectModel> fromJSON(std::string_view text);

  ManagedObjectModel(const ManagedObjectModel&) = delete;
  ManagedObjectModel& operator=(const ManagedObjectModel&) = delete;

  const std::map<std::string, const EntityDescription*, std::less<>>& entitiesByName() const noexcept {
    return entitiesByName_;
  }
  [[nodiscard]] const EntityDescription* entity(std::string_view name) const noexcept;
  // Entities in the order of the file.
  const std::vector<std::unique_ptr<EntityDescription>>& entities() const noexcept { return entities_; }

 private:
  ManagedObjectModel() = default;
  void link();

  std::vector<std::unique_ptr<EntityDescription>> entities_;
  std::map<std::string, const EntityDescription*, std::less<>> entitiesByName_;
};

template <>
struct RawRepresentable<AttributeType> {
  using RawValue = int;
  static constexpr RawValue rawValue(AttributeType type) { return static_cast<int>(type); }
  static std::optional<AttributeType> fromRawValue(RawValue raw);
};

}  // namespace kestrona
