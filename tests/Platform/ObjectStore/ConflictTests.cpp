#include <gtest/gtest.h>

#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeTask;
using testing::TestStore;

std::int64_t storedVersion(const TestStore& store, const ManagedObjectID& id, const std::string& table) {
  auto rows = testing::storeFileRows(store.storeURL(), "SELECT _version FROM " + table +
                                                           " WHERE pk = " + std::to_string(id.primaryKey()));
  return rows.size() == 1 ? *rows[0][0].get<std::int64_t>() : -1;
}

// Runs save, which must fail with conflicts, and gives the records.
std::vector<MergeConflict> conflictsOf(ManagedObjectContext& context) {
  try {
    context.save();
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectMerge);
    auto conflicts = error.userInfoObject<std::vector<MergeConflict>>(StoreError::kSaveConflictsKey);
    EXPECT_NE(conflicts, nullptr);
    return conflicts ? *conflicts : std::vector<MergeConflict>();
  }
  ADD_FAILURE() << "the save went through";
  return {};
}

TEST(OptimisticLocking, EveryUpdateRaisesTheVersionAndAStaleSaveFailsWithRecords) {
  TestStore store;
  auto task = makeTask(*store.context, "Original");
  store.context->save();
  auto id = task->objectID();
  EXPECT_EQ(storedVersion(store, id, "Node"), 1);
  task->setValue(3, "order");
  store.context->save();
  EXPECT_EQ(storedVersion(store, id, "Node"), 2);

  auto mine = store.newContext();
  auto theirs = store.newContext();
  auto ours = mine->existingObjectWithID(id);
  theirs->existingObjectWithID(id)->setValue("Theirs", "name");
  theirs->save();
  EXPECT_EQ(storedVersion(store, id, "Node"), 3);

  ours->setValue("Mine", "name");
  auto conflicts = conflictsOf(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  const auto& conflict = conflicts[0];
  EXPECT_EQ(conflict.sourceObject, ours);
  EXPECT_EQ(conflict.objectSnapshot.at("name"), Value("Mine"));
  EXPECT_EQ(conflict.cachedSnapshot.at("name"), Value("Original"));
  EXPECT_EQ(conflict.persistedSnapshot.at("name"), Value("Theirs"));
  EXPECT_EQ(conflict.persistedSnapshot.at("order"), Value(std::int64_t{3}));
  EXPECT_EQ(conflict.oldVersionNumber, 2);
  EXPECT_EQ(conflict.newVersionNumber, 3);
  // Nothing was written and the edit is kept.
  EXPECT_EQ(storedVersion(store, id, "Node"), 3);
  EXPECT_TRUE(mine->hasChanges());

  // Taking in the stored row (keeping the edit) makes the save current.
  mine->refreshObject(ours, true);
  EXPECT_NO_THROW(mine->save());
  EXPECT_EQ(storedVersion(store, id, "Node"), 4);
  EXPECT_EQ(store.newContext()->existingObjectWithID(id)->stringForKey("name"), "Mine");
}

// Versions see what a comparison of values cannot: a row changed and
// changed back is still a row this context did not read.
TEST(OptimisticLocking, AChangeUndoneMeanwhileIsStillAConflict) {
  TestStore store;
  auto task = makeTask(*store.context, "Original");
  store.context->save();
  auto mine = store.newContext();
  auto ours = mine->existingObjectWithID(task->objectID());

  task->setValue("Briefly", "name");
  store.context->save();
  task->setValue("Original", "name");
  store.context->save();

  ours->setValue(9, "order");
  auto conflicts = conflictsOf(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].oldVersionNumber, 1);
  EXPECT_EQ(conflicts[0].newVersionNumber, 3);
}

TEST(OptimisticLocking, ARowDeletedMeanwhileIsAConflictUnderEveryPolicy) {
  TestStore store;
  auto task = makeTask(*store.context, "Doomed");
  store.context->save();
  auto mine = store.newContext();
  auto ours = mine->existingObjectWithID(task->objectID());
  store.context->deleteObject(task);
  store.context->save();

  ours->setValue("Edited", "name");
  auto conflicts = conflictsOf(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].sourceObject, ours);
  EXPECT_TRUE(conflicts[0].persistedSnapshot.empty());
  EXPECT_EQ(conflicts[0].oldVersionNumber, 1);
  EXPECT_EQ(conflicts[0].newVersionNumber, 0);

  mine->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  EXPECT_EQ(conflictsOf(*mine).size(), 1u);
}

// Deleting a row someone else changed since it was read would lose their
// change unseen: the default policy refuses it, the others let it go.
TEST(OptimisticLocking, DeletingARowChangedMeanwhileFailsUnderTheDefaultPolicy) {
  TestStore store;
  auto task = makeTask(*store.context, "Shared");
  store.context->save();
  auto mine = store.newContext();
  auto ours = mine->existingObjectWithID(task->objectID());
  task->setValue("Changed", "name");
  store.context->save();

  mine->deleteObject(ours);
  auto conflicts = conflictsOf(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].sourceObject, ours);
  EXPECT_EQ(conflicts[0].persistedSnapshot.at("name"), Value("Changed"));
  EXPECT_EQ(conflicts[0].oldVersionNumber, 1);
  EXPECT_EQ(conflicts[0].newVersionNumber, 2);
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 1u);

  mine->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  EXPECT_NO_THROW(mine->save());
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 0u);
}

TEST(OptimisticLocking, ABatchUpdateCountsAsAChangeOfEachRow) {
  TestStore store;
  auto task = makeTask(*store.context, "Original");
  store.context->save();
  auto mine = store.newContext();
  auto ours = mine->existingObjectWithID(task->objectID());
  BatchUpdateRequest rename("Task");
  rename.propertiesToUpdate = {{"name", Value("Batch")}};
  auto result = store.context->execute(rename);
  ours->setValue("Mine", "name");
  auto conflicts = conflictsOf(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].persistedSnapshot.at("name"), Value("Batch"));
}

TEST(OptimisticLocking, ValidationErrorsCarryTheLiveObject) {
  TestStore store;
  auto task = makeTask(*store.context, "Task");
  task->setValue(Value(), "name");
  try {
    store.context->save();
    ADD_FAILURE() << "a task without a name was saved";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::validationMissingMandatoryProperty);
    auto object = error.userInfoObject<std::shared_ptr<ManagedObject>>(StoreError::kValidationObjectKey);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(*object, task);
    ASSERT_NE(error.userInfoValue<std::string>(StoreError::kKeyKey), nullptr);
    EXPECT_EQ(*error.userInfoValue<std::string>(StoreError::kKeyKey), "name");
  }
  store.context->rollback();

  auto client = store.context->insertNewObject("Client");
  auto project = store.context->insertNewObject("Project");
  project->setValue(Value(client), "client");
  store.context->save();
  store.context->deleteObject(client);
  try {
    store.context->save();
    ADD_FAILURE() << "a denied delete was saved";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::validationRelationshipDeniedDelete);
    auto object = error.userInfoObject<std::shared_ptr<ManagedObject>>(StoreError::kValidationObjectKey);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(*object, client);
  }
}

TEST(OptimisticLocking, MigrationAddsTheVersionColumnToAnOlderFile) {
  TestStore store("Small");
  auto note = store.context->insertNewObject("Note");
  note->setValue("kept", "text");
  store.context->save();
  auto uri = note->objectID().URIRepresentation();
  // A file written before rows had versions.
  store.context.reset();
  store.coordinator.reset();
  testing::executeOnStoreFile(store.storeURL(), "ALTER TABLE Note DROP COLUMN _version");

  PersistentStoreOptions noMigration;
  noMigration.migratePersistentStoresAutomatically = false;
  auto refused = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Small", testing::modelDirectory()));
  try {
    refused->addPersistentStore(store.storeURL(), noMigration);
    ADD_FAILURE() << "a file without versions opened without migration";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::migration);
  }
  refused.reset();

  store.reopen();
  auto id = store.coordinator->managedObjectIDForURIRepresentation(uri);
  ASSERT_TRUE(id.has_value());
  EXPECT_EQ(storedVersion(store, *id, "Note"), 1);
  auto migrated = store.context->existingObjectWithID(*id);
  EXPECT_EQ(migrated->stringForKey("text"), "kept");
  migrated->setValue("changed", "text");
  store.context->save();
  EXPECT_EQ(storedVersion(store, *id, "Note"), 2);
}

}  // namespace
}  // namespace kestrona
