#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/MainLoop.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeTask;
using testing::NotificationRecorder;
using testing::runLoopUntil;
using testing::TestStore;
using testing::userInfoOrFail;

std::shared_ptr<ManagedObjectContext> makeMainContext(TestStore& store, MainLoop& loop) {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType,
                                            std::make_unique<MainContextQueue>(loop));
  context->setPersistentStoreCoordinator(store.coordinator);
  context->setAutomaticallyMergesChangesFromParent(true);
  return context;
}

const auto& idsUnder = userInfoOrFail<ManagedObjectIDSet>;

// A save on a writer thread reaches the main context on its main loop: the
// observer of the changed key hears old and new values, the merge reports
// every saved ID, registers nothing new, and deleted objects stop working.
TEST(AutomaticMerge, APrivateSaveReachesTheMainContextOnItsLoop) {
  TestStore store;
  auto renamedTask = makeTask(*store.context, "Before");
  auto deletedTask = makeTask(*store.context, "Deleted");
  auto untouched = makeTask(*store.context, "Not held by main");
  store.context->save();

  MainLoop loop;
  auto main = makeMainContext(store, loop);
  auto held = main->existingObjectWithID(renamedTask->objectID());
  auto heldDeleted = main->existingObjectWithID(deletedTask->objectID());
  std::vector<KeyValueChange> heard;
  auto observation = held->observe("name", KeyValueObservingOption::oldValue | KeyValueObservingOption::newValue,
                                   [&](const KeyValueChange& change) { heard.push_back(change); });
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, main.get());

  ManagedObjectID insertedID = renamedTask->objectID();
  std::atomic<bool> saved = false;
  std::thread writer([&] {
    auto writing = store.newContext();
    writing->performAndWait([&] {
      writing->existingObjectWithID(renamedTask->objectID())->setValue("After", "name");
      writing->existingObjectWithID(untouched->objectID())->setValue(true, "archived");
      writing->deleteObject(writing->existingObjectWithID(deletedTask->objectID()));
      auto inserted = makeTask(*writing, "Inserted");
      writing->save();
      insertedID = inserted->objectID();
    });
    saved = true;
  });
  ASSERT_TRUE(runLoopUntil(loop, [&] { return merged.count() == 1; }));
  writer.join();
  ASSERT_TRUE(saved);

  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].oldValue, Value("Before"));
  EXPECT_EQ(heard[0].newValue, Value("After"));
  EXPECT_EQ(heard[0].object, held.get());
  EXPECT_EQ(held->stringForKey("name"), "After");
  EXPECT_FALSE(held->hasChanges());

  auto notification = merged.notifications()[0];
  EXPECT_EQ(notification.object, main.get());
  EXPECT_EQ(idsUnder(notification, NSInsertedObjectIDsKey), ManagedObjectIDSet{insertedID});
  EXPECT_EQ(idsUnder(notification, NSUpdatedObjectIDsKey),
            (ManagedObjectIDSet{renamedTask->objectID(), untouched->objectID()}));
  EXPECT_EQ(idsUnder(notification, NSDeletedObjectIDsKey), ManagedObjectIDSet{deletedTask->objectID()});

  EXPECT_EQ(main->objectRegisteredForID(insertedID), nullptr);
  EXPECT_EQ(main->objectRegisteredForID(untouched->objectID()), nullptr);
  EXPECT_EQ(heldDeleted->managedObjectContext(), nullptr);
  EXPECT_EQ(heldDeleted->faultingState(), ManagedObject::FaultingState::unusable);
  EXPECT_EQ(main->objectRegisteredForID(deletedTask->objectID()), nullptr);
  EXPECT_THROW(heldDeleted->setValue("Too late", "name"), StoreError);

  // A fetch after the merge sees the rows as they are now.
  EXPECT_EQ(main->count(FetchRequest("Task")), 3u);
  EXPECT_FALSE(main->hasChanges());
}

// An object the main context holds only as a fault (never read) is loaded
// when observed, so the merge of a later save is heard with both values.
TEST(AutomaticMerge, AnObservedFaultHearsTheMerge) {
  TestStore store;
  auto task = makeTask(*store.context, "Before");
  store.context->save();

  MainLoop loop;
  auto main = makeMainContext(store, loop);
  auto fault = main->objectWithID(task->objectID());
  ASSERT_TRUE(fault->isFault());
  std::vector<KeyValueChange> heard;
  auto observation = fault->observe("name", KeyValueObservingOption::oldValue | KeyValueObservingOption::newValue,
                                    [&](const KeyValueChange& change) { heard.push_back(change); });
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, main.get());

  std::thread writer([&] {
    auto writing = store.newContext();
    writing->performAndWait([&] {
      writing->existingObjectWithID(task->objectID())->setValue("After", "name");
      writing->save();
    });
  });
  ASSERT_TRUE(runLoopUntil(loop, [&] { return merged.count() == 1; }));
  writer.join();

  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].oldValue, Value("Before"));
  EXPECT_EQ(heard[0].newValue, Value("After"));
}

TEST(AutomaticMerge, APrivateContextMergesWhenItsQueueIsNextEntered) {
  TestStore store;
  auto task = makeTask(*store.context, "Before");
  store.context->save();

  auto reader = store.newContext();
  reader->setAutomaticallyMergesChangesFromParent(true);
  auto bystander = store.newContext();
  std::shared_ptr<ManagedObject> held;
  std::shared_ptr<ManagedObject> unmerged;
  reader->performAndWait([&] { held = reader->existingObjectWithID(task->objectID()); });
  bystander->performAndWait([&] { unmerged = bystander->existingObjectWithID(task->objectID()); });
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, reader.get());

  task->setValue("After", "name");
  store.context->save();
  // Nothing happens to a private context until its queue is entered.
  EXPECT_EQ(merged.count(), 0u);
  std::optional<std::string> seen;
  reader->performAndWait([&] { seen = held->stringForKey("name"); });
  EXPECT_EQ(seen, "After");
  EXPECT_EQ(merged.count(), 1u);

  // A context that did not ask keeps what it read, and the saving context
  // does not merge its own save.
  EXPECT_EQ(unmerged->stringForKey("name"), "Before");
  NotificationRecorder ownMerges(NSManagedObjectContextDidMergeChangesObjectIDsNotification, store.context.get());
  store.context->setAutomaticallyMergesChangesFromParent(true);
  task->setValue("Again", "name");
  store.context->save();
  store.context->performAndWait([] {});
  EXPECT_EQ(ownMerges.count(), 0u);

  // A context that is gone is simply no longer told.
  reader.reset();
  task->setValue("Once more", "name");
  EXPECT_NO_THROW(store.context->save());
}

// With pending changes on the merged object, the merge policy decides per
// property; the default keeps the edit and fails the next save instead.
TEST(AutomaticMerge, PendingChangesFollowTheMergePolicy) {
  TestStore store;
  auto task = makeTask(*store.context, "Stored");
  task->setValue(1, "order");
  store.context->save();
  auto id = task->objectID();

  auto mergeInto = [&](MergePolicyType policy) {
    auto context = store.newContext();
    context->setMergePolicy(policy);
    context->setAutomaticallyMergesChangesFromParent(true);
    auto object = context->existingObjectWithID(id);
    object->setValue("Unsaved", "name");
    auto writer = store.newContext();
    auto written = writer->existingObjectWithID(id);
    written->setValue("Written " + std::to_string(static_cast<int>(policy)), "name");
    written->setValue(written->integerForKey("order") + 1, "order");
    writer->save();
    context->performAndWait([] {});
    return std::make_pair(context, object);
  };

  {
    auto [context, object] = mergeInto(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
    EXPECT_EQ(object->stringForKey("name"), "Unsaved");
    EXPECT_EQ(object->integerForKey("order"), 2);
    EXPECT_TRUE(context->hasChanges());
    context->save();
    EXPECT_EQ(store.newContext()->existingObjectWithID(id)->stringForKey("name"), "Unsaved");
  }
  {
    auto [context, object] = mergeInto(MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType);
    EXPECT_EQ(object->stringForKey("name"), "Written 1");
    EXPECT_EQ(object->integerForKey("order"), 3);
    EXPECT_FALSE(context->hasChanges());
  }
  {
    auto [context, object] = mergeInto(MergePolicyType::errorMergePolicyType);
    EXPECT_EQ(object->stringForKey("name"), "Unsaved");
    EXPECT_EQ(object->integerForKey("order"), 3);
    try {
      context->save();
      ADD_FAILURE() << "the kept edit was saved over the written one";
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectMerge);
      auto conflicts = error.userInfoObject<std::vector<MergeConflict>>(StoreError::kSaveConflictsKey);
      ASSERT_NE(conflicts, nullptr);
      ASSERT_EQ(conflicts->size(), 1u);
      EXPECT_EQ(conflicts->front().sourceObject, object);
      EXPECT_EQ(conflicts->front().persistedSnapshot.at("name"), Value("Written 0"));
    }
    EXPECT_EQ(store.newContext()->existingObjectWithID(id)->stringForKey("name"), "Written 0");
  }
}

TEST(AutomaticMerge, AnObjectTrumpMainContextKeepsItsUnsavedValueAndHearsTheRest) {
  TestStore store;
  auto task = makeTask(*store.context, "Stored");
  store.context->save();

  MainLoop loop;
  auto main = makeMainContext(store, loop);
  main->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  auto held = main->existingObjectWithID(task->objectID());
  held->setValue("Typed on main", "name");
  std::vector<KeyValueChange> names;
  std::vector<KeyValueChange> orders;
  auto t1 = held->observe("name", KeyValueObservingOption::newValue,
                          [&](const KeyValueChange& change) { names.push_back(change); });
  auto t2 = held->observe("order", KeyValueObservingOption::oldValue | KeyValueObservingOption::newValue,
                          [&](const KeyValueChange& change) { orders.push_back(change); });
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, main.get());

  std::thread writer([&] {
    auto writing = store.newContext();
    writing->performAndWait([&] {
      auto object = writing->existingObjectWithID(task->objectID());
      object->setValue("Written", "name");
      object->setValue(4, "order");
      writing->save();
    });
  });
  writer.join();
  ASSERT_TRUE(runLoopUntil(loop, [&] { return merged.count() == 1; }));

  EXPECT_EQ(held->stringForKey("name"), "Typed on main");
  EXPECT_TRUE(names.empty());
  ASSERT_EQ(orders.size(), 1u);
  EXPECT_EQ(orders[0].oldValue, Value(std::int64_t{0}));
  EXPECT_EQ(orders[0].newValue, Value(std::int64_t{4}));
  // The merge took the stored row as read, so the kept edit saves cleanly.
  main->save();
  auto stored = store.newContext()->existingObjectWithID(task->objectID());
  EXPECT_EQ(stored->stringForKey("name"), "Typed on main");
  EXPECT_EQ(stored->integerForKey("order"), 4);
}

// An object the merging context deleted but did not save stays deleted; a
// row deleted by the save takes the pending changes of its object with it.
TEST(AutomaticMerge, DeletedRowsTakeThePendingChangesOfTheirObjects) {
  TestStore store;
  auto task = makeTask(*store.context, "Doomed");
  store.context->save();

  auto context = store.newContext();
  context->setAutomaticallyMergesChangesFromParent(true);
  auto object = context->existingObjectWithID(task->objectID());
  object->setValue("Edited", "name");
  ASSERT_TRUE(context->hasChanges());

  store.context->deleteObject(task);
  store.context->save();
  context->performAndWait([] {});
  EXPECT_EQ(object->managedObjectContext(), nullptr);
  EXPECT_FALSE(context->hasChanges());
  EXPECT_NO_THROW(context->save());
  EXPECT_EQ(context->count(FetchRequest("Task")), 0u);
}

}  // namespace
}  // namespace kestrona
