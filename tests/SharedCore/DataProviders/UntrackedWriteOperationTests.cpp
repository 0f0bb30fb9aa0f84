#include <gtest/gtest.h>

#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/Async.h"
#include "SharedCore/DataProviders/UntrackedWriteOperation.h"
#include "tests/SharedCore/DataProviders/StackTestSupport.h"
#include "tests/support/ExpectThrow.h"

namespace kestrona {
namespace {

using testing::insertTask;
using testing::TestStack;

struct Outcome {
  std::optional<std::string> value;
  std::exception_ptr error;
  bool resumedOnMainThread = false;
};

std::optional<std::string> insertAndName(ManagedObjectContext& context) {
  insertTask(context, "Awaited");
  return std::string("named");
}

std::optional<std::string> giveNothing(ManagedObjectContext& context) {
  insertTask(context, "Saved all the same");
  return std::nullopt;
}

std::optional<std::string> refuse(ManagedObjectContext&) {
  throw StoreError(StoreErrorCode::managedObjectValidation, "refused");
}

// Awaits one write from the main loop, keeps what it gave, and stops the loop.
asio::awaitable<void> awaitWrite(CoreDataStack* stack, std::optional<std::string> (*block)(ManagedObjectContext&),
                                 std::shared_ptr<Outcome> outcome) {
  try {
    outcome->value = co_await executeUntrackedWriteOperation(*stack, block);
  } catch (...) {
    outcome->error = std::current_exception();
  }
  outcome->resumedOnMainThread = MainLoop::main().isMainThread();
  MainLoop::main().stop();
}

std::shared_ptr<Outcome> runWrite(CoreDataStack& stack, std::optional<std::string> (*block)(ManagedObjectContext&)) {
  auto outcome = std::make_shared<Outcome>();
  MainLoop::main().restart();
  spawn(MainLoop::main(), awaitWrite(&stack, block, outcome));
  MainLoop::main().run();
  return outcome;
}

TEST(UntrackedWriteOperationCoroutine, ResumesTheCallerOnItsOwnLoopWithTheBlocksValue) {
  TestStack test;
  auto outcome = runWrite(*test.stack, insertAndName);
  EXPECT_EQ(outcome->error, nullptr);
  EXPECT_EQ(outcome->value, "named");
  EXPECT_TRUE(outcome->resumedOnMainThread);
  EXPECT_EQ(test.stack->viewContext()->count(FetchRequest("Task")), 1u);
}

TEST(UntrackedWriteOperationCoroutine, ABlockWithoutAValueFailsWithUnexpectedNilAsResultAfterSaving) {
  TestStack test;
  auto outcome = runWrite(*test.stack, giveNothing);
  ASSERT_NE(outcome->error, nullptr);
  EXPECT_TRUE(outcome->resumedOnMainThread);
  if (const auto error = testing::errorIn<WriteOperationError>(outcome->error)) {
    EXPECT_EQ(error->kind(), WriteOperationErrorCode::unexpectedNilAsResult);
    EXPECT_EQ(error->domain(), "WriteOperationError");
  }
  // Nothing went wrong in the store: the change was saved.
  EXPECT_EQ(test.stack->viewContext()->count(FetchRequest("Task")), 1u);
}

TEST(UntrackedWriteOperationCoroutine, ThrowsTheErrorOfTheBlock) {
  TestStack test;
  auto outcome = runWrite(*test.stack, refuse);
  ASSERT_NE(outcome->error, nullptr);
  if (const auto error = testing::errorIn<StoreError>(outcome->error)) {
    EXPECT_EQ(error->kind(), StoreErrorCode::managedObjectValidation);
  }
}

}  // namespace
}  // namespace kestrona
