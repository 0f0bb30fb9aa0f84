#include <gtest/gtest.h>

#include "Platform/ObjectStore/StoreError.h"
#include "SharedCore/DataProviders/TrackedManagedObjectContext.h"
#include "tests/SharedCore/DataProviders/StackTestSupport.h"

namespace kestrona {
namespace {

using testing::TestStack;
using testing::writeAndWait;

void fill(CoreDataStack& stack) {
  ASSERT_EQ(writeAndWait(stack,
                         [](ManagedObjectContext& context) {
                           testing::insertTask(context, "Task");
                           context.insertNewObject("Session");
                           context.insertNewObject("ALEntry")->setValue(std::string("log"), "text");
                         }),
            nullptr);
}

BatchDeleteRequest deleteAll(const std::string& entityName) {
  BatchDeleteRequest request;
  request.fetchRequest = FetchRequest(entityName);
  return request;
}

std::size_t countOf(ManagedObjectContext& context, const std::string& entityName) {
  return context.performAndWaitReturning([&] { return context.count(FetchRequest(entityName)); });
}

TEST(BatchGuard, RefusesBatchRequestsOnEntitiesWithAnIdentifierAndRunsNothing) {
  TestStack test;
  fill(*test.stack);
  auto context = test.stack->privateContext();
  context->performAndWait([&] {
    try {
      context->execute(deleteAll("Session"));
      ADD_FAILURE() << "the batch delete ran";
    } catch (const BatchRequestOnSyncedEntityError& error) {
      EXPECT_EQ(error.entityName(), "Session");
      EXPECT_EQ(error.errorDescription(),
                "Batch requests against synced entities bypass sync change tracking (entity: Session). Use "
                "executeBatchWriteOperation only where invisibility to sync is intended.");
      EXPECT_EQ(error, BatchRequestOnSyncedEntityError("Session"));
      EXPECT_FALSE(error == BatchRequestOnSyncedEntityError("Task"));
    }
    // Task inherits its identifier from Node.
    BatchUpdateRequest rename("Task");
    rename.propertiesToUpdate["name"] = Value("Renamed");
    EXPECT_THROW(context->execute(rename), BatchRequestOnSyncedEntityError);
    // The guard reads the entity description when the request names one.
    BatchDeleteRequest byEntity;
    byEntity.fetchRequest.entity = context->persistentStoreCoordinator()->managedObjectModel().entity("Folder");
    EXPECT_THROW(context->execute(byEntity), BatchRequestOnSyncedEntityError);
  });
  EXPECT_EQ(countOf(*context, "Session"), 1u);
  EXPECT_EQ(countOf(*context, "Task"), 1u);
  auto task = testing::onlyObject(*test.stack->viewContext(), "Task");
  EXPECT_EQ(task->stringForKey("name"), "Task");
}

TEST(BatchGuard, PassesEntitiesWithoutAnIdentifierFetchesAndUnknownEntitiesToTheStore) {
  TestStack test;
  fill(*test.stack);
  auto context = test.stack->privateContext();
  context->performAndWait([&] {
    auto deleted = context->execute(deleteAll("ALEntry"));
    EXPECT_TRUE(deleted.status);
    EXPECT_EQ(context->execute(FetchRequest("Session")).objects.size(), 1u);
    // The base context decides about an entity the model does not know.
    try {
      context->execute(deleteAll("NoSuchEntity"));
      ADD_FAILURE() << "the store ran a request on an unknown entity";
    } catch (const BatchRequestOnSyncedEntityError&) {
      ADD_FAILURE() << "the guard refused an unknown entity";
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectValidation);
    }
  });
  EXPECT_EQ(countOf(*context, "ALEntry"), 0u);
}

TEST(BatchGuard, AnIdentifierOnTheLogEntityMakesItSynced) {
  TestStack test("StackTestSyncedLog");
  fill(*test.stack);
  auto context = test.stack->privateContext();
  context->performAndWait(
      [&] { EXPECT_THROW(context->execute(deleteAll("ALEntry")), BatchRequestOnSyncedEntityError); });
  EXPECT_EQ(countOf(*context, "ALEntry"), 1u);
}

TEST(BatchGuard, IsOpenWhenAllowedAndOnPlainContexts) {
  TestStack test;
  fill(*test.stack);
  auto context = test.stack->privateContext();
  context->setAllowsBatchRequestsOnSyncedEntities(true);
  context->performAndWait([&] { context->execute(deleteAll("Session")); });
  EXPECT_EQ(countOf(*context, "Session"), 0u);

  // The child context is a plain context: nothing guards it.
  auto child = test.stack->childContext();
  child->performAndWait([&] { child->execute(deleteAll("Task")); });
  EXPECT_EQ(countOf(*context, "Task"), 0u);
}

}  // namespace
}  // namespace kestrona
