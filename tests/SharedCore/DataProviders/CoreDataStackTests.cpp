#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/MainLoop.h"
#include "SharedCore/DataProviders/CoreDataStack.h"
#include "SharedCore/DataProviders/DetachedError.h"
#include "SharedCore/Model/NodeCollaborators.h"
#include "tests/SharedCore/DataProviders/StackTestSupport.h"
#include "tests/support/ExpectThrow.h"

namespace kestrona {
namespace {

using testing::insertTask;
using testing::onlyObject;
using testing::TestStack;
using testing::writeAndWait;

// ---- Start-up ----

TEST(CoreDataStackStartUp, MakesAMissingStoreFolderWithItsParentsAndOpensTheStoreThere) {
  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
  environment.set("XDG_CONFIG_HOME", (directory.path() / "config").string());
  const auto storeFolder = directory.path() / "a" / "b" / "Store";

  CoreDataStack stack("StackTest", URL::fileURLWithPath(storeFolder, true), "Data.sqlite", testing::modelBundle());

  EXPECT_TRUE(std::filesystem::is_directory(storeFolder));
  EXPECT_TRUE(std::filesystem::is_regular_file(storeFolder / "Data.sqlite"));
  const auto stores = stack.persistentStoreCoordinator()->persistentStores();
  ASSERT_EQ(stores.size(), 1u);
  EXPECT_EQ(stores.front().URL, storeFolder / "Data.sqlite");
  EXPECT_EQ(stack.modelName(), "StackTest");
  EXPECT_EQ(stack.storeName(), "Data.sqlite");
  EXPECT_EQ(stack.log().label(), "Data");
}

TEST(CoreDataStackStartUp, WithoutABundleFindsTheModelInTheSharedCoreBundleBesideTheExecutable) {
  const auto beside = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "SharedCore.bundle";
  std::filesystem::remove_all(beside);
  EXPECT_EQ(sharedCoreResourceBundle(), Bundle::main());

  std::filesystem::create_directories(beside);
  std::filesystem::copy_file(std::filesystem::path(KESTRONA_STACK_TEST_MODELS) / "StackTest.kmodel",
                             beside / "StackTest.kmodel");
  {
    testing::TemporaryDirectory directory;
    testing::ScopedEnvironment environment;
    environment.set("XDG_CONFIG_HOME", (directory.path() / "config").string());
    CoreDataStack stack("StackTest", URL::fileURLWithPath(directory.path(), true), "Store.sqlite");
    EXPECT_EQ(stack.modelBundle().bundleURL().filesystemPath(), beside);
    EXPECT_NE(stack.managedObjectModel()->entity("RuleCombination"), nullptr);
  }
  std::filesystem::remove_all(beside);
}

TEST(CoreDataStackStartUpDeathTest, AMissingModelEndsTheProcess) {
  testing::TemporaryDirectory directory;
  EXPECT_DEATH(CoreDataStack("NoSuchModel", URL::fileURLWithPath(directory.path(), true), "Store.sqlite",
                             testing::modelBundle()),
               "error Data: modelName=NoSuchModel .*Unable to find data model.*"
               "Fatal error: \\[CoreDataManager\\] unable to find data model");
}

TEST(CoreDataStackStartUpDeathTest, ADamagedModelEndsTheProcess) {
  testing::TemporaryDirectory directory;
  testing::writeFile(directory.path() / "Broken.kmodel", "{\"entities\": [");
  auto bundle = Bundle::load(directory.path());
  EXPECT_DEATH(CoreDataStack("Broken", URL::fileURLWithPath(directory.path() / "Store", true), "Store.sqlite", bundle),
               "error Data: modelUrl=/.*/Broken.kmodel .*Unable to load data model.*"
               "Fatal error: \\[CoreDataStack\\] Unable to Load Data Model");
}

TEST(CoreDataStackStartUpDeathTest, AFileWhereTheStoreFolderShouldBeEndsTheProcessQuotingItsPath) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "NotAFolder";
  testing::writeFile(file, "text");
  EXPECT_DEATH(CoreDataStack("StackTest", URL::fileURLWithPath(file), "Store.sqlite", testing::modelBundle()),
               "error Data: failureReason=Expected a folder .*Error on adding the persistent store.*"
               "Fatal error: \\[CoreDataManager\\] Unsresolved error: Expected a folder to store application data, "
               "found a file /.*/NotAFolder\\.");
}

TEST(CoreDataStackStartUpDeathTest, AStoreFolderThatCannotBeReadEndsTheProcess) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "File";
  testing::writeFile(file, "text");
  // A path through a file cannot be read (ENOTDIR), and so cannot be made.
  EXPECT_DEATH(CoreDataStack("StackTest", URL::fileURLWithPath(file / "Store", true), "Store.sqlite",
                             testing::modelBundle()),
               "error Data: error=.*Error on adding the persistent store.*"
               "Fatal error: \\[CoreDataManager\\] Unresolved error: .*NSCocoaErrorDomain 256.*NSFilePath");
}

TEST(CoreDataStackStartUpDeathTest, AStoreThatCannotBeOpenedEndsTheProcess) {
  testing::TemporaryDirectory directory;
  testing::writeFile(directory.path() / "Store.sqlite", std::string(4096, 'x'));
  EXPECT_DEATH(CoreDataStack("StackTest", URL::fileURLWithPath(directory.path(), true), "Store.sqlite",
                             testing::modelBundle()),
               "Fatal error: \\[CoreDataManager\\] Unresolved error: .*NSCocoaErrorDomain 134080");
}

// ---- Contexts ----

TEST(CoreDataStackContexts, AreConfiguredByTheirRole) {
  TestStack test;
  CoreDataStack& stack = *test.stack;

  const auto& view = stack.viewContext();
  EXPECT_EQ(view, stack.viewContext());
  EXPECT_EQ(view->concurrencyType(), ManagedObjectContextConcurrencyType::mainQueueConcurrencyType);
  EXPECT_EQ(view->persistentStoreCoordinator(), stack.persistentStoreCoordinator());
  EXPECT_EQ(view->parentContext(), nullptr);
  EXPECT_EQ(view->mergePolicy(), MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  EXPECT_TRUE(view->automaticallyMergesChangesFromParent());
  EXPECT_FALSE(view->allowsBatchRequestsOnSyncedEntities());

  auto first = stack.privateContext();
  auto second = stack.privateContext();
  EXPECT_NE(first, second);
  EXPECT_EQ(first->concurrencyType(), ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  EXPECT_EQ(first->persistentStoreCoordinator(), stack.persistentStoreCoordinator());
  EXPECT_EQ(first->parentContext(), nullptr);
  EXPECT_EQ(first->mergePolicy(), MergePolicyType::errorMergePolicyType);
  EXPECT_TRUE(first->automaticallyMergesChangesFromParent());

  auto child = stack.childContext();
  EXPECT_EQ(dynamic_cast<TrackedManagedObjectContext*>(child.get()), nullptr);
  EXPECT_EQ(child->concurrencyType(), ManagedObjectContextConcurrencyType::mainQueueConcurrencyType);
  EXPECT_EQ(child->parentContext(), view);
  EXPECT_EQ(child->mergePolicy(), MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType);
  EXPECT_TRUE(child->automaticallyMergesChangesFromParent());

  // Every context carries the stack's one set of collaborators.
  ASSERT_NE(stack.nodeCollaborators(), nullptr);
  EXPECT_NE(stack.nodeCollaborators()->colorSetManager(), nullptr);
  EXPECT_EQ(stack.nodeCollaborators()->timer(), nullptr);
  EXPECT_EQ(nodeCollaborators(*view), stack.nodeCollaborators());
  EXPECT_EQ(nodeCollaborators(*first), stack.nodeCollaborators());
  EXPECT_EQ(nodeCollaborators(*child), stack.nodeCollaborators());
}

TEST(CoreDataStackContexts, TheViewContextMergesAWriteAndItsObserverHearsOldAndNewValues) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  ASSERT_EQ(writeAndWait(stack, [](ManagedObjectContext& context) { insertTask(context, "Before"); }), nullptr);
  auto task = onlyObject(*stack.viewContext(), "Task");
  ASSERT_NE(task, nullptr);
  // A reader has the values it shows: a fault has none that could change.
  ASSERT_EQ(task->stringForKey("name"), "Before");

  std::vector<KeyValueChange> heard;
  std::vector<bool> onMainThread;
  auto observation = task->observe("name", KeyValueObservingOption::oldValue | KeyValueObservingOption::newValue,
                                   [&](const KeyValueChange& change) {
                                     heard.push_back(change);
                                     onMainThread.push_back(MainLoop::main().isMainThread());
                                   });
  ASSERT_EQ(writeAndWait(stack,
                         [](ManagedObjectContext& context) {
                           onlyObject(context, "Task")->setValue(std::string("After"), "name");
                         }),
            nullptr);

  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].oldValue, Value("Before"));
  EXPECT_EQ(heard[0].newValue, Value("After"));
  EXPECT_TRUE(onMainThread[0]);
  EXPECT_EQ(task->stringForKey("name"), "After");
  EXPECT_FALSE(task->hasChanges());
}

TEST(CoreDataStackContexts, TheViewContextKeepsItsUnsavedValueThroughAMerge) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  ASSERT_EQ(writeAndWait(stack, [](ManagedObjectContext& context) { insertTask(context, "Stored"); }), nullptr);
  auto task = onlyObject(*stack.viewContext(), "Task");
  ASSERT_NE(task, nullptr);
  task->setValue(std::string("Typed, not saved"), "name");

  ASSERT_EQ(writeAndWait(stack,
                         [](ManagedObjectContext& context) {
                           auto stored = onlyObject(context, "Task");
                           stored->setValue(std::string("Written"), "name");
                           stored->setValue(true, "archived");
                         }),
            nullptr);

  EXPECT_EQ(task->stringForKey("name"), "Typed, not saved");
  // Properties the view context did not change take the written values.
  EXPECT_TRUE(task->boolForKey("archived"));
}

// ---- The untracked write ----

TEST(CoreDataStackWrite, RunsOnTheQueueInAFreshPrivateContextAndCompletesThereWithTheValue) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  std::thread::id blockThread;
  std::thread::id completionThread;
  bool completionOnQueue = false;
  const ManagedObjectContext* blockContext = nullptr;
  std::optional<std::string> received;
  testing::LoopSignal waiter;

  stack.executeUntrackedWriteOperation(
      [&](ManagedObjectContext& context) -> std::optional<std::string> {
        blockThread = std::this_thread::get_id();
        blockContext = &context;
        EXPECT_EQ(context.concurrencyType(), ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
        EXPECT_NE(dynamic_cast<TrackedManagedObjectContext*>(&context), nullptr);
        EXPECT_EQ(nodeCollaborators(context), stack.nodeCollaborators());
        insertTask(context, "Written");
        return std::string("value");
      },
      [&](std::exception_ptr error, std::optional<std::string> value) {
        EXPECT_EQ(error, nullptr);
        completionThread = std::this_thread::get_id();
        completionOnQueue = stack.queue().isCurrent();
        received = value;
        waiter.signal();
      });
  waiter.wait();

  EXPECT_NE(blockThread, std::this_thread::get_id());
  EXPECT_EQ(completionThread, blockThread);
  EXPECT_TRUE(completionOnQueue);
  EXPECT_NE(blockContext, stack.viewContext().get());
  EXPECT_EQ(received, "value");
  // Saved: the store has it, and the view context sees it.
  auto task = onlyObject(*stack.viewContext(), "Task");
  ASSERT_NE(task, nullptr);
  EXPECT_EQ(task->stringForKey("name"), "Written");
}

TEST(CoreDataStackWrite, WritesRunOneAfterAnotherInTheirOrder) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  std::atomic<int> running = 0;
  std::atomic<bool> overlapped = false;
  std::vector<int> order;
  testing::LoopSignal waiter;
  for (int index = 0; index < 5; ++index) {
    stack.executeUntrackedWriteOperation(
        [&, index](ManagedObjectContext& context) -> int {
          if (++running > 1) overlapped = true;
          // Each write sees the previous one's task already stored.
          EXPECT_EQ(context.count(FetchRequest("Task")), static_cast<std::size_t>(index));
          insertTask(context, "Task " + std::to_string(index));
          --running;
          return index;
        },
        [&](std::exception_ptr, std::optional<int> value) {
          order.push_back(value.value_or(-1));
          waiter.signal();
        });
  }
  waiter.wait(5);
  EXPECT_FALSE(overlapped);
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(CoreDataStackWrite, ABlockThatChangesNothingSavesNothingAndPostsNoDidSave) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  int willSaves = 0;
  int didSaves = 0;
  auto willSave = NotificationCenter::defaultCenter().addObserver(
      std::string(NSManagedObjectContextWillSaveNotification), nullptr, [&](const Notification&) { ++willSaves; });
  auto didSave = NotificationCenter::defaultCenter().addObserver(
      std::string(NSManagedObjectContextDidSaveNotification), nullptr, [&](const Notification&) { ++didSaves; });

  auto readOnly = [](ManagedObjectContext& context) { EXPECT_EQ(context.count(FetchRequest("Task")), 0u); };
  EXPECT_EQ(writeAndWait(stack, readOnly), nullptr);
  EXPECT_EQ(willSaves, 0);
  EXPECT_EQ(didSaves, 0);

  // The same observers hear a write that changes something.
  EXPECT_EQ(writeAndWait(stack, [](ManagedObjectContext& context) { insertTask(context, "Changed"); }), nullptr);
  EXPECT_EQ(willSaves, 1);
  EXPECT_EQ(didSaves, 1);
}

TEST(CoreDataStackWrite, AFailingBlockRollsBackAndHandsOnItsTypedErrorWithoutAValue) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  testing::LoopSignal waiter;
  std::exception_ptr failure;
  std::optional<int> received = 0;
  ::testing::internal::CaptureStderr();
  stack.executeUntrackedWriteOperation(
      [](ManagedObjectContext& context) -> int {
        insertTask(context, "Never saved");
        throw StoreError(StoreErrorCode::managedObjectValidation, "refused");
      },
      [&](std::exception_ptr error, std::optional<int> value) {
        failure = error;
        received = value;
        waiter.signal();
      });
  waiter.wait();
  const std::string logged = ::testing::internal::GetCapturedStderr();

  EXPECT_NE(logged.find("error Data: code=1550 domain=NSCocoaErrorDomain error=refused"), std::string::npos) << logged;
  EXPECT_NE(logged.find("Error on executing write operation"), std::string::npos) << logged;
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(received, std::nullopt);
  if (const auto error = testing::errorIn<StoreError>(failure)) {
    EXPECT_EQ(error->kind(), StoreErrorCode::managedObjectValidation);
  }
  EXPECT_EQ(stack.viewContext()->count(FetchRequest("Task")), 0u);
}

TEST(CoreDataStackWrite, AFailedSaveHandsOnTheStoreErrorAndKeepsNothing) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  // Folder names are mandatory: a nil name fails validation at the save.
  auto failure = writeAndWait(stack, [](ManagedObjectContext& context) {
    insertTask(context, "Valid");
    context.insertNewObject("Folder")->setValue(Value(), "name");
  });
  ASSERT_NE(failure, nullptr);
  if (const auto error = testing::errorIn<Error>(failure)) {
    EXPECT_EQ(error->domain(), "NSCocoaErrorDomain");
    EXPECT_FALSE(holdsManagedObjects(*error));
  }
  EXPECT_EQ(stack.viewContext()->count(FetchRequest("Node")), 0u);
}

TEST(CoreDataStackWrite, ASecondWriteOverAnObjectChangedMeanwhileFailsWithADetachedConflict) {
  TestStack test;
  CoreDataStack& stack = *test.stack;
  ASSERT_EQ(writeAndWait(stack, [](ManagedObjectContext& context) { insertTask(context, "Original"); }), nullptr);
  std::string taskURI;
  std::weak_ptr<ManagedObjectContext> writeContext;

  auto failure = writeAndWait(stack, [&](ManagedObjectContext& context) {
    writeContext = context.shared_from_this();
    auto task = onlyObject(context, "Task");
    taskURI = task->objectID().URIRepresentation();
    task->setValue(std::string("Second"), "name");
    // Another context saves the same object first.
    auto other = stack.privateContext();
    other->performAndWait([&] {
      onlyObject(*other, "Task")->setValue(std::string("First"), "name");
      other->save();
    });
  });

  EXPECT_TRUE(writeContext.expired());
  ASSERT_NE(failure, nullptr);
  if (const auto error = testing::errorIn<Error>(failure)) {
    EXPECT_TRUE(error->is("NSCocoaErrorDomain", 133020)) << error->what();
    EXPECT_FALSE(holdsManagedObjects(*error));
    EXPECT_EQ(error->userInfo().count(StoreError::kSaveConflictsKey), 0u);
    const auto* count = error->userInfoValue<std::int64_t>(saveConflictCountKey);
    ASSERT_NE(count, nullptr);
    EXPECT_EQ(*count, 1);
    const auto* uris = error->userInfoValue<std::vector<std::string>>(saveConflictObjectURIsKey);
    ASSERT_NE(uris, nullptr);
    EXPECT_EQ(*uris, std::vector<std::string>{taskURI});
  }
  // The first save stands.
  auto task = onlyObject(*stack.viewContext(), "Task");
  ASSERT_NE(task, nullptr);
  EXPECT_EQ(task->stringForKey("name"), "First");
}

TEST(CoreDataStackWrite, TheStackWaitsForQueuedWritesBeforeItGoes) {
  TestStack test;
  std::atomic<int> completions = 0;
  for (int index = 0; index < 3; ++index) {
    test.stack->executeUntrackedWriteOperation(
        [index](ManagedObjectContext& context) { insertTask(context, "Task " + std::to_string(index)); },
        [&](std::exception_ptr error, std::optional<std::monostate>) {
          EXPECT_EQ(error, nullptr);
          ++completions;
        });
  }
  test.stack.reset();
  EXPECT_EQ(completions, 3);
}

}  // namespace
}  // namespace kestrona
