#include "Platform/ObjectStore/StoreSchema.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/SQLiteDatabase.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

std::string StoreSchema::columnType(AttributeType type) {
  switch (type) {
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType:
    case AttributeType::booleanAttributeType:
      return "INTEGER";
    case AttributeType::doubleAttributeType:
    case AttributeType::dateAttributeType:
      return "REAL";
    case AttributeType::stringAttributeType:
      return "TEXT";
    default:
      return "BLOB";
  }
}

StoreSchema::StoreSchema(const ManagedObjectModel& model, std::map<std::string, std::int64_t, std::less<>> entityCodes)
    : model_(model), codes_(std::move(entityCodes)) {
  for (const auto& [name, code] : codes_) {
    if (auto entity = model.entity(name)) entitiesByCode_[code] = entity;
  }
  for (const auto& entity : model.entities()) {
    if (entity->superentity()) continue;
    Table table;
    table.name = entity->name();
    table.root = entity.get();
    tables_.push_back(std::move(table));
  }
  for (std::size_t i = 0; i < tables_.size(); ++i) tableIndex_[tables_[i].root] = i;

  for (const auto& entity : model.entities()) {
    Table& table = tables_[tableIndex_.at(&entity->rootEntity())];
    auto columnIndex = [&table](const std::string& name, const std::string& type, const Value& defaultValue) {
      for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (table.columns[i].name == name) {
          if (table.columns[i].type != type) {
            throw StoreError(StoreErrorCode::fileReadCorruptFile,
                             "The column \"" + name + "\" of \"" + table.name + "\" has two types in the model");
          }
          return static_cast<int>(i);
        }
      }
      table.columns.push_back(Column{name, type, defaultValue});
      return static_cast<int>(table.columns.size() - 1);
    };
    Layout layout;
    layout.slotColumn.assign(entity->slotCount(), -1);
    layout.slotEntityColumn.assign(entity->slotCount(), -1);
    layout.slotAttribute.assign(entity->slotCount(), nullptr);
    for (const auto& [name, attribute] : entity->attributesByName()) {
      layout.slotAttribute[attribute->slot()] = attribute;
      layout.slotColumn[attribute->slot()] =
          columnIndex(name, columnType(attribute->attributeType()), attribute->defaultValue());
    }
    for (const auto& [name, relationship] : entity->relationshipsByName()) {
      if (relationship->isToMany()) continue;
      layout.slotColumn[relationship->slot()] = columnIndex(name, "INTEGER", Value());
      layout.slotEntityColumn[relationship->slot()] = columnIndex(name + "_ent", "INTEGER", Value());
    }
    layouts_[entity.get()] = std::move(layout);
  }
  for (auto& table : tables_) {
    table.versionColumn = static_cast<int>(table.columns.size());
    table.columns.push_back(Column{kVersionColumn, "INTEGER", Value(std::int64_t{1})});
  }
  for (auto& [entity, layout] : layouts_) layout.table = &tables_[tableIndex_.at(&entity->rootEntity())];
}

const StoreSchema::Table& StoreSchema::table(const EntityDescription& entity) const {
  auto found = tableIndex_.find(&entity.rootEntity());
  if (found == tableIndex_.end()) {
    auto own = model_.entity(entity.rootEntity().name());
    found = tableIndex_.find(own);
    if (found == tableIndex_.end()) fatalError("The entity " + entity.name() + " is not in the store's model");
  }
  return tables_[found->second];
}

const StoreSchema::Layout& StoreSchema::layout(const EntityDescription& entity) const {
  auto found = layouts_.find(&entity);
  if (found == layouts_.end()) {
    found = layouts_.find(model_.entity(entity.name()));
    if (found == layouts_.end()) fatalError("The entity " + entity.name() + " is not in the store's model");
  }
  return found->second;
}

std::int64_t StoreSchema::entityCode(const EntityDescription& entity) const {
  auto found = codes_.find(entity.name());
  if (found == codes_.end()) fatalError("The entity " + entity.name() + " has no code in the store");
  return found->second;
}

const EntityDescription* StoreSchema::entityForCode(std::int64_t code) const {
  auto found = entitiesByCode_.find(code);
  return found == entitiesByCode_.end() ? nullptr : found->second;
}

std::vector<std::int64_t> StoreSchema::entityCodes(const EntityDescription& entity, bool includesSubentities) const {
  std::vector<std::int64_t> codes{entityCode(entity)};
  if (includesSubentities) {
    for (auto sub : entity.subentities()) {
      auto more = entityCodes(*sub, true);
      codes.insert(codes.end(), more.begin(), more.end());
    }
  }
  return codes;
}

std::string StoreSchema::selectList(const Table& table, std::string_view alias) const {
  std::string prefix = std::string(alias) + ".";
  std::string list = prefix + "pk, " + prefix + "ent";
  for (const auto& column : table.columns) list += ", " + prefix + quoteIdentifier(column.name);
  return list;
}

}  // namespace kestrona
