#include "Platform/ObjectStore/ManagedObjectModel.h"

#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

[[noreturn]] void corrupt(const std::string& why) {
  throw StoreError(StoreErrorCode::fileReadCorruptFile, "The model is not valid: " + why);
}

AttributeType attributeTypeNamed(const std::string& name) {
  static const std::map<std::string, AttributeType, std::less<>> types = {
      {"string", AttributeType::stringAttributeType},
      {"boolean", AttributeType::booleanAttributeType},
      {"integer16", AttributeType::integer16AttributeType},
      {"integer32", AttributeType::integer32AttributeType},
      {"integer64", AttributeType::integer64AttributeType},
      {"double", AttributeType::doubleAttributeType},
      {"date", AttributeType::dateAttributeType},
      {"binary", AttributeType::binaryDataAttributeType},
      {"transformable", AttributeType::transformableAttributeType},
  };
  auto found = types.find(name);
  if (found == types.end()) corrupt("unknown attribute type \"" + name + "\"");
  return found->second;
}

DeleteRule deleteRuleNamed(const std::string& name) {
  if (name == "nullify") return DeleteRule::nullifyDeleteRule;
  if (name == "cascade") return DeleteRule::cascadeDeleteRule;
  if (name == "deny") return DeleteRule::denyDeleteRule;
  if (name == "noAction") return DeleteRule::noActionDeleteRule;
  corrupt("unknown delete rule \"" + name + "\"");
}

Value defaultValueOf(const nlohmann::json& json, AttributeType type, const std::string& attribute) {
  if (json.is_null()) return Value();
  switch (type) {
    case AttributeType::stringAttributeType:
      if (json.is_string()) return Value(json.get<std::string>());
      break;
    case AttributeType::booleanAttributeType:
      if (json.is_boolean()) return Value(json.get<bool>());
      break;
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType:
      if (json.is_number_integer()) return Value(json.get<std::int64_t>());
      break;
    case AttributeType::doubleAttributeType:
      if (json.is_number()) return Value(json.get<double>());
      break;
    case AttributeType::dateAttributeType:
      if (json.is_number()) return Value(Date(json.get<double>()));
      break;
    default:
      break;
  }
  corrupt("the default value of \"" + attribute + "\" does not fit its type");
}

}  // namespace

std::optional<AttributeType> RawRepresentable<AttributeType>::fromRawValue(int raw) {
  for (auto type : {AttributeType::undefinedAttributeType, AttributeType::integer16AttributeType,
                    AttributeType::integer32AttributeType, AttributeType::integer64AttributeType,
                    AttributeType::doubleAttributeType, AttributeType::stringAttributeType,
                    AttributeType::booleanAttributeType, AttributeType::dateAttributeType,
                    AttributeType::binaryDataAttributeType, AttributeType::transformableAttributeType}) {
    if (static_cast<int>(type) == raw) return type;
  }
  return std::nullopt;
}

const EntityDescription& EntityDescription::rootEntity() const noexcept {
  const EntityDescription* entity = this;
  while (entity->superentity_) entity = entity->superentity_;
  return *entity;
}

bool EntityDescription::isKindOfEntity(const EntityDescription& other) const noexcept {
  for (const EntityDescription* entity = this; entity; entity = entity->superentity_) {
    if (entity == &other || entity->name_ == other.name_) return true;
  }
  return false;
}

std::shared_ptr<const EntityDescription> EntityDescription::entityPointer() const {
  return std::shared_ptr<const EntityDescription>(model_->shared_from_this(), this);
}

const AttributeDescription* EntityDescription::attribute(std::string_view name) const noexcept {
  auto found = attributesByName_.find(name);
  return found == attributesByName_.end() ? nullptr : found->second;
}

const RelationshipDescription* EntityDescription::relationship(std::string_view name) const noexcept {
  auto found = relationshipsByName_.find(name);
  return found == relationshipsByName_.end() ? nullptr : found->second;
}

const EntityDescription* EntityDescription::entityForName(std::string_view name,
                                                          const ManagedObjectContext& context) {
  auto coordinator = context.persistentStoreCoordinator();
  return coordinator ? coordinator->managedObjectModel().entity(name) : nullptr;
}

const EntityDescription* ManagedObjectModel::entity(std::string_view name) const noexcept {
  auto found = entitiesByName_.find(name);
  return found == entitiesByName_.end() ? nullptr : found->second;
}

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::loadNamed(std::string_view name,
                                                                      const std::filesystem::path& directory) {
  return fromURL(directory / (std::string(name) + ".kmodel"));
}

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::fromURL(const std::filesystem::path& url) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(url, error)) {
    throw StoreError(StoreErrorCode::fileReadNoSuchFile, "No model file at " + url.string());
  }
  std::ifstream file(url, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  if (!file) throw StoreError(StoreErrorCode::fileReadCorruptFile, "The model file cannot be read: " + url.string());
  return fromJSON(text.str());
}

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::fromJSON(std::string_view text) {
  auto json = nlohmann::json::parse(text, nullptr, false);
  if (json.is_discarded()) corrupt("the file is not JSON");
  if (!json.is_object() || !json.contains("entities") || !json["entities"].is_array()) {
    corrupt("there is no \"entities\" list");
  }
  std::shared_ptr<ManagedObjectModel> model(new ManagedObjectModel());
  try {
    for (const auto& entityJSON : json["entities"]) {
      auto entity = std::make_unique<EntityDescription>();
      entity->name_ = entityJSON.at("name").get<std::string>();
      entity->model_ = model.get();
      entity->abstract_ = entityJSON.value("abstract", false);
      if (entityJSON.contains("parent") && !entityJSON["parent"].is_null()) {
        entity->superentityName_ = entityJSON["parent"].get<std::string>();
      }
      for (const auto& attributeJSON : entityJSON.value("attributes", nlohmann::json::array())) {
        AttributeDescription attribute;
        attribute.name_ = attributeJSON.at("name").get<std::string>();
        attribute.type_ = attributeTypeNamed(attributeJSON.at("type").get<std::string>());
        attribute.optional_ = attributeJSON.value("optional", true);
        attribute.defaultValue_ =
            defaultValueOf(attributeJSON.value("default", nlohmann::json()), attribute.type_, attribute.name_);
        attribute.transformerName_ = attributeJSON.value("valueTransformerName", std::string());
        if (attribute.type_ == AttributeType::transformableAttributeType && attribute.transformerName_.empty()) {
          corrupt("the transformable attribute \"" + attribute.name_ + "\" names no value transformer");
        }
        entity->ownAttributes_.push_back(std::move(attribute));
      }
      for (const auto& relationshipJSON : entityJSON.value("relationships", nlohmann::json::array())) {
        RelationshipDescription relationship;
        relationship.name_ = relationshipJSON.at("name").get<std::string>();
        relationship.destinationName_ = relationshipJSON.at("destination").get<std::string>();
        relationship.inverseName_ = relationshipJSON.at("inverse").get<std::string>();
        relationship.toMany_ = relationshipJSON.value("toMany", false);
        relationship.optional_ = relationshipJSON.value("optional", true);
        relationship.deleteRule_ = deleteRuleNamed(relationshipJSON.value("deleteRule", std::string("nullify")));
        entity->ownRelationships_.push_back(std::move(relationship));
      }
      for (const auto& indexJSON : entityJSON.value("indexes", nlohmann::json::array())) {
        entity->indexes_.push_back(indexJSON.get<std::vector<std::string>>());
      }
      if (!model->entitiesByName_.emplace(entity->name_, entity.get()).second) {
        corrupt("the entity \"" + entity->name_ + "\" is declared twice");
      }
      model->entities_.push_back(std::move(entity));
    }
  } catch (const nlohmann::json::exception& error) {
    corrupt(error.what());
  }
  model->link();
  return model;
}

void ManagedObjectModel::link() {
  for (auto& entity : entities_) {
    if (entity->superentityName_.empty()) continue;
    auto parent = entitiesByName_.find(entity->superentityName_);
    if (parent == entitiesByName_.end()) corrupt("the parent of \"" + entity->name_ + "\" is unknown");
    entity->superentity_ = parent->second;
    const_cast<EntityDescription*>(parent->second)->subentities_.push_back(entity.get());
  }
  for (auto& entity : entities_) {
    std::set<const EntityDescription*> seen;
    for (const EntityDescription* e = entity.get(); e; e = e->superentity_) {
      if (!seen.insert(e).second) corrupt("the parents of \"" + entity->name_ + "\" form a cycle");
    }
  }
  // Properties and slots, parents first so that inherited slots come first.
  std::set<EntityDescription*> done;
  std::function<void(EntityDescription&)> resolve = [&](EntityDescription& entity) {
    if (done.count(&entity)) return;
    std::size_t slot = 0;
    if (entity.superentity_) {
      auto& parent = const_cast<EntityDescription&>(*entity.superentity_);
      resolve(parent);
      entity.attributesByName_ = parent.attributesByName_;
      entity.relationshipsByName_ = parent.relationshipsByName_;
      auto inherited = parent.indexes_;
      inherited.insert(inherited.end(), entity.indexes_.begin(), entity.indexes_.end());
      entity.indexes_ = std::move(inherited);
      slot = parent.slotCount_;
    }
    for (auto& attribute : entity.ownAttributes_) {
      attribute.slot_ = slot++;
      if (!entity.attributesByName_.emplace(attribute.name_, &attribute).second) {
        corrupt("\"" + entity.name_ + "." + attribute.name_ + "\" is declared twice");
      }
    }
    for (auto& relationship : entity.ownRelationships_) {
      if (!relationship.toMany_) relationship.slot_ = slot++;
      if (entity.attributesByName_.count(relationship.name_) ||
          !entity.relationshipsByName_.emplace(relationship.name_, &relationship).second) {
        corrupt("\"" + entity.name_ + "." + relationship.name_ + "\" is declared twice");
      }
    }
    entity.slotCount_ = slot;
    done.insert(&entity);
  };
  for (auto& entity : entities_) resolve(*entity);
  for (auto& entity : entities_) entity->hierarchyHash_ = std::hash<std::string>{}(entity->rootEntity().name());

  for (auto& entity : entities_) {
    for (auto& relationship : entity->ownRelationships_) {
      std::string where = "\"" + entity->name_ + "." + relationship.name_ + "\"";
      auto destination = entitiesByName_.find(relationship.destinationName_);
      if (destination == entitiesByName_.end()) corrupt("the destination of " + where + " is unknown");
      relationship.destination_ = destination->second;
      relationship.inverse_ = destination->second->relationship(relationship.inverseName_);
      if (!relationship.inverse_) corrupt("the inverse of " + where + " is unknown");
      if (relationship.inverse_->inverseName_ != relationship.name_) {
        corrupt("the inverse of " + where + " does not point back");
      }
      if (relationship.toMany_ && relationship.inverse_->toMany_) {
        corrupt(where + " and its inverse are both to-many");
      }
    }
  }
}

}  // namespace kestrona
