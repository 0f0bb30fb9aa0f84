// Automatic merging of one context's saves into the others, and the main
// queue that a main-queue context runs on.
#include <gtest/gtest.h>

#include <thread>

#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/RunLoop/MainLoop.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"
#include "tests/support/RunLoopDriving.h"

namespace kestrona {
namespace {

using testing::makeTask;
using testing::NotificationRecorder;
using testing::TestStore;
namespace Option = KeyValueObservingOption;
constexpr KeyValueObservingOptions kOldAndNew = Option::oldValue | Option::newValue;

std::shared_ptr<ManagedObjectContext> makeMainContext(TestStore& store, MainLoop& loop) {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType,
                                            std::make_unique<MainContextQueue>(loop));
  context->setPersistentStoreCoordinator(store.coordinator);
  context->setAutomaticallyMergesChangesFromParent(true);
  return context;
}

// Runs edit and a save on a private context of a thread of its own.
void writeOnAnotherThread(TestStore& store, const std::function<void(ManagedObjectContext&)>& edit) {
  std::thread writer([&] {
    auto context = store.newContext();
    context->performAndWait([&] {
      edit(*context);
      context->save();
    });
  });
  writer.join();
}

// The merge runs on the main loop: observers of loaded objects and of
// faults hear old and new values, the merge reports every saved ID and
// registers nothing new, and deleted objects stop working.
TEST(AutomaticMerge, APrivateSaveReachesTheMainContextOnItsLoop) {
  TestStore store;
  auto renamed = makeTask(*store.context, "Before");
  auto faulted = makeTask(*store.context, "Fault before");
  auto deleted = makeTask(*store.context, "Deleted");
  store.context->save();
  MainLoop loop;
  auto main = makeMainContext(store, loop);
  auto held = main->existingObjectWithID(renamed->objectID());
  auto fault = main->objectWithID(faulted->objectID());
  auto heldDeleted = main->existingObjectWithID(deleted->objectID());
  std::vector<KeyValueChange> heard;
  auto onName = held->observe("name", kOldAndNew, [&](const KeyValueChange& change) { heard.push_back(change); });
  auto onFault = fault->observe("name", kOldAndNew, [&](const KeyValueChange& change) { heard.push_back(change); });
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, main.get());

  std::optional<ManagedObjectID> inserted;
  writeOnAnotherThread(store, [&](ManagedObjectContext& context) {
    context.existingObjectWithID(renamed->objectID())->setValue("After", "name");
    context.existingObjectWithID(faulted->objectID())->setValue("Fault after", "name");
    context.deleteObject(context.existingObjectWithID(deleted->objectID()));
    auto task = makeTask(context, "Inserted");
    context.obtainPermanentIDs({task});
    inserted = task->objectID();
  });
  EXPECT_TRUE(heard.empty()) << "the merge runs on the main loop, not on the writer's thread";
  testing::runUntil(loop, [&] { return merged.count() == 1; });

  std::map<std::string, std::string> heardChanges;
  for (const auto& change : heard) heardChanges[change.oldValue->description()] = change.newValue->description();
  EXPECT_EQ(heardChanges, (std::map<std::string, std::string>{{"\"Before\"", "\"After\""},
                                                              {"\"Fault before\"", "\"Fault after\""}}));
  EXPECT_FALSE(main->hasChanges());
  auto notification = merged.notifications()[0];
  EXPECT_EQ(testing::userInfoOrFail<ManagedObjectIDSet>(notification, NSInsertedObjectIDsKey),
            ManagedObjectIDSet{*inserted});
  EXPECT_EQ(testing::userInfoOrFail<ManagedObjectIDSet>(notification, NSUpdatedObjectIDsKey),
            (ManagedObjectIDSet{renamed->objectID(), faulted->objectID()}));
  EXPECT_EQ(testing::userInfoOrFail<ManagedObjectIDSet>(notification, NSDeletedObjectIDsKey),
            ManagedObjectIDSet{deleted->objectID()});
  EXPECT_EQ(main->objectRegisteredForID(*inserted), nullptr);
  EXPECT_EQ(heldDeleted->faultingState(), ManagedObject::FaultingState::unusable);
  EXPECT_EQ(testing::failureOf([&] { heldDeleted->setValue("Too late", "name"); }),
            StoreErrorCode::managedObjectReferentialIntegrity);
  EXPECT_EQ(main->count(FetchRequest("Task")), 3u);
}

TEST(AutomaticMerge, APrivateContextMergesWhenItsQueueIsNextEnteredAndOnlyWhenItAsked) {
  TestStore store;
  auto task = makeTask(*store.context, "Before");
  store.context->save();
  auto reader = store.newContext();
  reader->setAutomaticallyMergesChangesFromParent(true);
  auto bystander = store.newContext();
  auto held = reader->existingObjectWithID(task->objectID());
  auto unmerged = bystander->existingObjectWithID(task->objectID());
  NotificationRecorder merged(NSManagedObjectContextDidMergeChangesObjectIDsNotification, reader.get());
  NotificationRecorder ownMerges(NSManagedObjectContextDidMergeChangesObjectIDsNotification, store.context.get());
  store.context->setAutomaticallyMergesChangesFromParent(true);

  task->setValue("After", "name");
  store.context->save();
  EXPECT_EQ(merged.count(), 0u);
  reader->performAndWait([] {});
  EXPECT_EQ(merged.count(), 1u);
  EXPECT_EQ(held->stringForKey("name"), "After");
  EXPECT_EQ(unmerged->stringForKey("name"), "Before");
  store.context->performAndWait([] {});
  EXPECT_EQ(ownMerges.count(), 0u) << "a context does not merge its own save";

  reader.reset();
  task->setValue("Once more", "name");
  EXPECT_NO_THROW(store.context->save());
}

using MergeIntoPendingChanges = testing::TwoContexts;

// Object trump keeps the unsaved value unheard and announces what the
// merge changes.
TEST_F(MergeIntoPendingChanges, ObserversHearOnlyTheKeysTheMergeChanged) {
  mine->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  mine->setAutomaticallyMergesChangesFromParent(true);
  ours->setValue("Typed here", "name");
  std::vector<KeyValueChange> names;
  std::vector<KeyValueChange> orders;
  auto onName = ours->observe("name", Option::newValue, [&](const KeyValueChange& change) { names.push_back(change); });
  auto onOrder = ours->observe("order", kOldAndNew, [&](const KeyValueChange& change) { orders.push_back(change); });
  other->setValue("Written", "name");
  other->setValue(4, "order");
  theirs->save();
  mine->performAndWait([] {});
  EXPECT_TRUE(names.empty());
  ASSERT_EQ(orders.size(), 1u);
  EXPECT_EQ(orders[0].oldValue, Value(1));
  EXPECT_EQ(orders[0].newValue, Value(4));
}

// A row deleted by the save takes the pending changes of its object with it.
TEST_F(MergeIntoPendingChanges, ADeletedRowTakesThePendingChangesOfItsObject) {
  mine->setAutomaticallyMergesChangesFromParent(true);
  ours->setValue("Edited", "name");
  theirs->deleteObject(other);
  theirs->save();
  mine->performAndWait([] {});
  EXPECT_EQ(ours->managedObjectContext(), nullptr);
  EXPECT_FALSE(mine->hasChanges());
  EXPECT_EQ(mine->count(FetchRequest("Task")), 0u);
}

TEST(MainQueueContext, RunsBlocksOnTheMainLoopAndAtOnceWhenAlreadyThere) {
  TestStore store;
  MainLoop loop;
  auto context = makeMainContext(store, loop);
  bool ranInline = false;
  context->performAndWait([&] { ranInline = true; });
  EXPECT_TRUE(ranInline);

  std::thread::id ranOn;
  std::thread worker([&] {
    context->performAndWait([&] {
      ranOn = std::this_thread::get_id();
      makeTask(*context, "From a worker");
    });
    loop.stop();
  });
  loop.run();
  worker.join();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_EQ(context->insertedObjects().size(), 1u);
}

}  // namespace
}  // namespace kestrona
