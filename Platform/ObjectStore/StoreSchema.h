// How the model maps onto SQLite tables; used by the coordinator and the
// fetch compiler only.
//
// One table per entity hierarchy, named after the root entity, with the
// columns "pk" (INTEGER PRIMARY KEY), "ent" (entity code), one column per
// attribute of any entity of the hierarchy, and for each to-one relationship
// "<name>" (the destination's key) and "<name>_ent" (its entity code), and
// last the row's version "_version" (1 when written first, raised by every
// update; the optimistic lock of saves).
// Entity codes are fixed per file in the table kestrona_entities. A schema
// is immutable once built and may be read from any thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectModel.h"

namespace kestrona {

class StoreSchema {
 public:
  struct Column {
    std::string name;
    std::string type;  // INTEGER, REAL, TEXT or BLOB
    Value defaultValue;
  };
  struct Table {
    std::string name;
    const EntityDescription* root = nullptr;
    // All columns after pk and ent, in a fixed order.
    std::vector<Column> columns;
    // The index of the version column in columns.
    int versionColumn = -1;
  };
  // Where each slot of an entity lies among its table's columns.
  struct Layout {
    const Table* table = nullptr;
    std::vector<int> slotColumn;       // index into table->columns
    std::vector<int> slotEntityColumn; // for to-one slots: the "_ent" column; -1 otherwise
    std::vector<const AttributeDescription*> slotAttribute;  // null for to-one slots
  };

  StoreSchema(const ManagedObjectModel& model, std::map<std::string, std::int64_t, std::less<>> entityCodes);

  const std::vector<Table>& tables() const noexcept { return tables_; }
  const Table& table(const EntityDescription& entity) const;
  const Layout& layout(const EntityDescription& entity) const;
  std::int64_t entityCode(const EntityDescription& entity) const;
  const EntityDescription* entityForCode(std::int64_t code) const;
  // The codes of the entity and, when asked, of its sub-entities at any depth.
  std::vector<std::int64_t> entityCodes(const EntityDescription& entity, bool includesSubentities) const;
  // "pk, ent, <columns...>" of the table, each prefixed with alias and a dot.
  std::string selectList(const Table& table, std::string_view alias) const;

  static std::string columnType(AttributeType type);
  static constexpr const char* kVersionColumn = "_version";

 private:
  const ManagedObjectModel& model_;
  std::vector<Table> tables_;
  std::map<const EntityDescription*, std::size_t> tableIndex_;
  std::map<const EntityDescription*, Layout> layouts_;
  std::map<std::string, std::int64_t, std::less<>> codes_;
  std::map<std::int64_t, const EntityDescription*> entitiesByCode_;
};

}  // namespace kestrona
