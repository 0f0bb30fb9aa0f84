#include "Platform/ObjectStore/BatchRequestExecutor.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/PredicateSQL.h"
#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

StoreConnection& connectionOf(ManagedObjectContext& context) {
  auto coordinator = context.persistentStoreCoordinator();
  precondition(coordinator != nullptr, "A context needs a coordinator to execute a request");
  return StoreConnection::of(*coordinator);
}

// "SELECT t0.pk ..." of the stored rows of entity and its sub-entities that
// predicate matches.
std::string matchingRows(const StoreSchema& schema, const EntityDescription& entity,
                         const std::optional<Predicate>& predicate, PredicateSQLCompiler& compiler) {
  std::string where = predicate ? compiler.condition(predicate->root()) : std::string("1");
  std::string codes;
  for (auto code : schema.entityCodes(entity, true)) codes += (codes.empty() ? "" : ", ") + std::to_string(code);
  return "SELECT t0.pk FROM " + compiler.fromClause() + " WHERE " + where + " AND t0.ent IN (" + codes + ")";
}

std::vector<ManagedObjectID> matchingIDs(StoreConnection& connection, const EntityDescription& entity,
                                         const std::string& rows, const std::vector<Value>& bindings) {
  std::vector<ManagedObjectID> ids;
  connection.query("SELECT pk, ent FROM " + quoteIdentifier(connection.schema().table(entity).name) +
                       " WHERE pk IN (" + rows + ")",
                   bindings, [&](const SQLiteStatement& row) {
                     if (auto id = connection.objectID(row.int64(1), row.int64(0))) ids.push_back(std::move(*id));
                   });
  return ids;
}

}  // namespace

PersistentStoreResult BatchRequestExecutor::execute(ManagedObjectContext& context, const BatchDeleteRequest& request) {
  PersistentStoreResult result;
  auto& connection = connectionOf(context);
  const auto& schema = connection.schema();
  const auto& entity = context.requestEntity(request.fetchRequest);
  PredicateSQLCompiler compiler(schema, entity);
  std::string rows = matchingRows(schema, entity, request.fetchRequest.predicate, compiler);
  if (request.resultType == BatchDeleteRequestResultType::resultTypeObjectIDs) {
    result.objectIDs = matchingIDs(connection, entity, rows, compiler.bindings());
  }
  int deleted = connection.executeUpdate(
      "DELETE FROM " + quoteIdentifier(schema.table(entity).name) + " WHERE pk IN (" + rows + ")", compiler.bindings());
  if (request.resultType == BatchDeleteRequestResultType::resultTypeCount) result.count = deleted;
  return result;
}

PersistentStoreResult BatchRequestExecutor::execute(ManagedObjectContext& context, const BatchUpdateRequest& request) {
  PersistentStoreResult result;
  auto& connection = connectionOf(context);
  const auto& schema = connection.schema();
  const auto& entity = context.requestEntity(FetchRequest(request.entityName));
  PredicateSQLCompiler compiler(schema, entity);
  std::string assignments;
  std::vector<Value> values;
  for (const auto& [key, value] : request.propertiesToUpdate) {
    auto column = compiler.column(key);  // unknown keys are refused here
    if (key.find('.') != std::string::npos || !column.attribute ||
        column.attribute->attributeType() == AttributeType::transformableAttributeType) {
      throw StoreError(StoreErrorCode::managedObjectValidation,
                       "A batch update sets stored attributes only; \"" + key + "\" of " + entity.name() + " is not one",
                       {{StoreError::kEntityKey, entity.name()}, {StoreError::kKeyKey, key}});
    }
    requireComparable(entity, key, column, value, PredicateOperator::equalTo);
    assignments += (assignments.empty() ? "" : ", ") + column.sql.substr(column.sql.find('.') + 1) + " = ?";
    values.push_back(value);
  }
  if (assignments.empty()) return result;
  std::string version = quoteIdentifier(StoreSchema::kVersionColumn);
  assignments += ", " + version + " = " + version + " + 1";
  std::string rows = matchingRows(schema, entity, request.predicate, compiler);
  if (request.resultType == BatchUpdateRequestResultType::updatedObjectIDsResultType) {
    result.objectIDs = matchingIDs(connection, entity, rows, compiler.bindings());
  }
  values.insert(values.end(), compiler.bindings().begin(), compiler.bindings().end());
  int updated = connection.executeUpdate(
      "UPDATE " + quoteIdentifier(schema.table(entity).name) + " SET " + assignments + " WHERE pk IN (" + rows + ")",
      values);
  if (request.resultType == BatchUpdateRequestResultType::updatedObjectsCountResultType) result.count = updated;
  return result;
}

}  // namespace kestrona
