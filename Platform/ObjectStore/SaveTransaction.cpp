#include "Platform/ObjectStore/SaveTransaction.h"

#include <algorithm>

#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/ValueTransformer.h"

namespace kestrona {

namespace {

using Coordinator = PersistentStoreCoordinator;

// The value written for an attribute: a transformable one through its
// named transformer.
Value storedValue(const AttributeDescription& attribute, const Value& value) {
  if (value.isNil() || attribute.attributeType() != AttributeType::transformableAttributeType) return value;
  auto transformer = ValueTransformer::valueTransformerForName(attribute.valueTransformerName());
  if (!transformer) {
    throw StoreError(StoreErrorCode::persistentStoreSave,
                     "No value transformer named \"" + attribute.valueTransformerName() + "\"");
  }
  try {
    return Value(transformer->transformedValue(value));
  } catch (const std::exception& error) {
    throw StoreError(StoreErrorCode::persistentStoreSave, "The value transformer \"" +
                                                              attribute.valueTransformerName() +
                                                              "\" refused a value: " + error.what());
  }
}

class SaveTransaction {
 public:
  SaveTransaction(StoreConnection& connection, const Coordinator::SaveRequest& request)
      : connection_(connection), schema_(connection.schema()), request_(request) {}

  // Runs the save; the connection's lock is held by the caller.
  Coordinator::SaveResult run() {
    SQLiteTransaction transaction(connection_.databaseLocked());
    assignKeys();
    for (const auto& insert : request_.inserted) insertRow(insert);
    for (const auto& update : request_.updated) updateRow(update);
    checkDeletions();
    if (!conflicts_.empty()) {
      auto count = conflicts_.size();
      throw StoreError(StoreErrorCode::managedObjectMerge,
                       "Could not merge changes: " + std::to_string(count) +
                           " objects were changed or deleted in the store meanwhile",
                       {{StoreError::kSaveConflictsKey, ErrorUserInfoObject(std::move(conflicts_))}});
    }
    for (const auto& [temporary, permanent] : result_.permanentIDs) result_.versions[permanent] = 1;
    for (const auto& deletion : request_.deleted) deleteRow(deletion.objectID);
    transaction.commit();
    connection_.noteInsertedRowsLocked(insertedPerTable_);
    return std::move(result_);
  }

 private:
  void assignKeys() {
    for (const auto& insert : request_.inserted) {
      if (!insert.objectID.isTemporaryID()) continue;
      const auto& table = schema_.table(insert.objectID.entity()).name;
      auto key = connection_.reserveKeysLocked(table, 1);
      ++insertedPerTable_[table];
      result_.permanentIDs.emplace(insert.objectID, ManagedObjectID::permanent(connection_.storeIdentifier(),
                                                                               insert.objectID.entityPointer(), key));
    }
  }

  ManagedObjectID resolve(const ManagedObjectID& id) const {
    if (!id.isTemporaryID()) return id;
    auto found = result_.permanentIDs.find(id);
    if (found == result_.permanentIDs.end()) {
      throw StoreError(StoreErrorCode::persistentStoreSave,
                       "A relationship points at an object that is not saved: " + id.description());
    }
    return found->second;
  }

  // The column of slot, and for a to-one its "_ent" column, as SQL names.
  static std::vector<std::string> columnsOf(const StoreSchema::Layout& layout, std::size_t slot) {
    const auto& columns = layout.table->columns;
    std::vector<std::string> names{quoteIdentifier(columns[static_cast<std::size_t>(layout.slotColumn[slot])].name)};
    if (layout.slotEntityColumn[slot] >= 0) {
      names.push_back(quoteIdentifier(columns[static_cast<std::size_t>(layout.slotEntityColumn[slot])].name));
    }
    return names;
  }

  void bindSlot(SQLiteStatement& statement, int& parameter, const StoreSchema::Layout& layout, std::size_t slot,
                const Value& value) const {
    if (layout.slotEntityColumn[slot] >= 0) {
      if (value.isNil()) {
        statement.bind(parameter++, Value());
        statement.bind(parameter++, Value());
      } else {
        auto id = resolve(*value.objectID());
        statement.bind(parameter++, Value(id.primaryKey()));
        statement.bind(parameter++, Value(schema_.entityCode(id.entity())));
      }
      return;
    }
    const AttributeDescription* attribute = layout.slotAttribute[slot];
    statement.bind(parameter++, attribute ? storedValue(*attribute, value) : value);
  }

  void insertRow(const Coordinator::RowChange& insert) {
    const auto& entity = insert.objectID.entity();
    const auto& layout = schema_.layout(entity);
    std::string columns = "pk, ent";
    std::string placeholders = "?, ?";
    for (std::size_t slot = 0; slot < entity.slotCount(); ++slot) {
      for (const auto& column : columnsOf(layout, slot)) {
        columns += ", " + column;
        placeholders += ", ?";
      }
    }
    auto& statement = connection_.databaseLocked().prepare("INSERT INTO " + quoteIdentifier(layout.table->name) +
                                                           " (" + columns + ") VALUES (" + placeholders + ")");
    int parameter = 1;
    statement.bind(parameter++, Value(resolve(insert.objectID).primaryKey()));
    statement.bind(parameter++, Value(schema_.entityCode(entity)));
    for (std::size_t slot = 0; slot < entity.slotCount(); ++slot) {
      bindSlot(statement, parameter, layout, slot, insert.values[slot]);
    }
    statement.step();
  }

  // The slots an update writes once a conflict is resolved by the merge
  // policy; none when it is recorded as a conflict instead.
  std::optional<std::vector<std::size_t>> resolvedSlots(const Coordinator::RowChange& update,
                                                        std::optional<Coordinator::StoredRow>& stored) {
    bool conflicted = !stored;
    if (stored && update.version != 0) {
      conflicted = stored->version != update.version;
    } else if (stored && update.snapshot.size() == stored->values.size()) {
      conflicted = !std::equal(stored->values.begin(), stored->values.end(), update.snapshot.begin());
    }
    std::vector<std::size_t> slots = update.changedSlots;
    if (!conflicted) return slots;
    if (request_.mergePolicy == MergePolicyType::errorMergePolicyType || !stored) {
      conflicts_.push_back(Coordinator::RowConflict{update.objectID, std::move(stored), update.version});
      return std::nullopt;
    }
    const auto& storedValues = stored->values;
    switch (request_.mergePolicy) {
      case MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType:
        std::erase_if(slots, [&](std::size_t slot) { return !(storedValues[slot] == update.snapshot[slot]); });
        break;
      case MergePolicyType::overwriteMergePolicyType:
        slots.clear();
        for (std::size_t slot = 0; slot < update.values.size(); ++slot) slots.push_back(slot);
        break;
      case MergePolicyType::rollbackMergePolicyType:
        slots.clear();
        break;
      default:
        break;
    }
    std::vector<Value> merged = storedValues;
    for (auto slot : slots) merged[slot] = update.values[slot];
    result_.mergedRows.emplace(update.objectID, std::move(merged));
    return slots;
  }

  void updateRow(const Coordinator::RowChange& update) {
    // The row as stored now, against what the context read: the write lock
    // is held, so nobody changes it between this read and the write.
    auto stored = connection_.loadRowLocked(update.objectID);
    auto slots = resolvedSlots(update, stored);
    if (!slots) return;
    std::int64_t readVersion = stored ? stored->version : update.version;
    if (slots->empty()) {
      result_.versions[update.objectID] = readVersion;
      return;
    }
    const auto& layout = schema_.layout(update.objectID.entity());
    std::string assignments;
    for (auto slot : *slots) {
      for (const auto& column : columnsOf(layout, slot)) assignments += (assignments.empty() ? "" : ", ") + column + " = ?";
    }
    std::string version = quoteIdentifier(StoreSchema::kVersionColumn);
    assignments += ", " + version + " = " + version + " + 1";
    auto& statement = connection_.databaseLocked().prepare("UPDATE " + quoteIdentifier(layout.table->name) + " SET " +
                                                           assignments + " WHERE pk = ?");
    int parameter = 1;
    for (auto slot : *slots) bindSlot(statement, parameter, layout, slot, update.values[slot]);
    statement.bind(parameter, Value(update.objectID.primaryKey()));
    statement.step();
    result_.versions[update.objectID] = readVersion + 1;
  }

  // Deleting a row changed since it was read would drop that change unseen;
  // only the error policy refuses it (the other policies let this context's
  // decision stand). A row already gone needs no deleting.
  void checkDeletions() {
    if (request_.mergePolicy != MergePolicyType::errorMergePolicyType) return;
    for (const auto& deletion : request_.deleted) {
      if (deletion.objectID.isTemporaryID() || deletion.version == 0) continue;
      auto stored = connection_.loadRowLocked(deletion.objectID);
      if (stored && stored->version != deletion.version) {
        conflicts_.push_back(Coordinator::RowConflict{deletion.objectID, std::move(stored), deletion.version});
      }
    }
  }

  void deleteRow(const ManagedObjectID& id) {
    if (id.isTemporaryID()) return;
    auto& statement = connection_.databaseLocked().prepare(
        "DELETE FROM " + quoteIdentifier(schema_.table(id.entity()).name) + " WHERE pk = ?");
    statement.bind(1, Value(id.primaryKey()));
    statement.step();
  }

  StoreConnection& connection_;
  const StoreSchema& schema_;
  const Coordinator::SaveRequest& request_;
  Coordinator::SaveResult result_;
  std::vector<Coordinator::RowConflict> conflicts_;
  std::map<std::string, std::int64_t> insertedPerTable_;
};

}  // namespace

PersistentStoreCoordinator::SaveResult runSaveTransaction(StoreConnection& connection,
                                                          const PersistentStoreCoordinator::SaveRequest& request) {
  auto lock = connection.lock();
  try {
    return SaveTransaction(connection, request).run();
  } catch (const StoreError& error) {
    if (error.kind() == StoreErrorCode::persistentStoreSave || error.kind() == StoreErrorCode::managedObjectMerge) {
      throw;
    }
    throw StoreError(StoreErrorCode::persistentStoreSave, "The save failed: " + error.localizedDescription(),
                     error.userInfo());
  }
}

}  // namespace kestrona
