// The change notifications a context posts when it saves.
#include <gtest/gtest.h>

#include "Platform/ObjectStore/ContextNotifications.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeTask;
using testing::NotificationRecorder;
using testing::TestStore;
using testing::userInfoOrFail;

const auto& objectsUnder = userInfoOrFail<ManagedObjectSet>;

TEST(ContextNotifications, WillSaveSeesThePendingStateAndDidSaveCarriesTheSavedObjects) {
  TestStore store;
  auto kept = makeTask(*store.context, "Kept");
  auto doomed = makeTask(*store.context, "Doomed");
  store.context->save();

  kept->setValue("Renamed", "name");
  store.context->deleteObject(doomed);
  auto added = makeTask(*store.context, "Added");

  // What an observer of will-save can read, as it reads it.
  std::vector<std::size_t> pending;
  std::map<std::string, Value> changes;
  auto willSave = NotificationCenter::defaultCenter().addObserver(
      std::string(NSManagedObjectContextWillSaveNotification), store.context.get(),
      [&](const Notification& notification) {
        EXPECT_TRUE(notification.userInfo.empty());
        auto* context = static_cast<const ManagedObjectContext*>(notification.object);
        pending = {context->insertedObjects().size(), context->updatedObjects().size(),
                   context->deletedObjects().size()};
        changes = kept->changedValues();
      });
  NotificationRecorder didSave(NSManagedObjectContextDidSaveNotification, store.context.get());
  store.context->save();

  EXPECT_EQ(pending, (std::vector<std::size_t>{1, 1, 1}));
  EXPECT_EQ(changes, (std::map<std::string, Value>{{"name", Value("Renamed")}}));

  auto posted = didSave.notifications();
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(posted[0].object, store.context.get());
  EXPECT_EQ(objectsUnder(posted[0], NSInsertedObjectsKey), ManagedObjectSet{added});
  EXPECT_EQ(objectsUnder(posted[0], NSUpdatedObjectsKey), ManagedObjectSet{kept});
  EXPECT_EQ(objectsUnder(posted[0], NSDeletedObjectsKey), ManagedObjectSet{doomed});
  // The inserted object already has its permanent ID; the deleted one is
  // unusable but still says what it was.
  EXPECT_FALSE(added->objectID().isTemporaryID());
  EXPECT_EQ(doomed->managedObjectContext(), nullptr);
  EXPECT_EQ(doomed->entity().name(), "Task");
  EXPECT_FALSE(doomed->objectID().isTemporaryID());
}

TEST(ContextNotifications, ASaveWithNothingToSavePostsNothing) {
  TestStore store;
  auto task = makeTask(*store.context, "Task");
  store.context->save();

  NotificationRecorder willSave(NSManagedObjectContextWillSaveNotification, store.context.get());
  NotificationRecorder didSave(NSManagedObjectContextDidSaveNotification, store.context.get());
  store.context->save();
  // A change set back to the stored value is no change.
  task->setValue("Other", "name");
  task->setValue("Task", "name");
  store.context->save();
  EXPECT_EQ(willSave.count(), 0u);
  EXPECT_EQ(didSave.count(), 0u);

  // Will-save is posted also when the save then fails validation, and
  // did-save is not.
  task->setValue(Value(), "name");
  EXPECT_THROW(store.context->save(), StoreError);
  EXPECT_EQ(willSave.count(), 1u);
  EXPECT_EQ(didSave.count(), 0u);
}

TEST(ContextNotifications, AChildContextPostsDidSaveWhenItsChangesReachTheParent) {
  TestStore store;
  auto child = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  child->setParentContext(store.context);
  NotificationRecorder childSaved(NSManagedObjectContextDidSaveNotification, child.get());
  NotificationRecorder parentSaved(NSManagedObjectContextDidSaveNotification, store.context.get());

  auto added = makeTask(*child, "From the child");
  child->save();
  auto posted = childSaved.notifications();
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(objectsUnder(posted[0], NSInsertedObjectsKey), ManagedObjectSet{added});
  EXPECT_TRUE(objectsUnder(posted[0], NSUpdatedObjectsKey).empty());
  // The parent only holds the change; it posts when it saves itself.
  EXPECT_EQ(parentSaved.count(), 0u);
  store.context->save();
  EXPECT_EQ(parentSaved.count(), 1u);
}

}  // namespace
}  // namespace kestrona
