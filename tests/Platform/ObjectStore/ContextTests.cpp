#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeSession;
using testing::makeTask;
using testing::TestStore;

template <typename Function>
StoreErrorCode failureOf(Function&& function) {
  try {
    function();
  } catch (const StoreError& error) {
    EXPECT_EQ(error.domain(), "NSCocoaErrorDomain");
    return error.kind();
  }
  ADD_FAILURE() << "no StoreError was thrown";
  return StoreErrorCode::persistentStoreOperation;
}

TEST(ManagedObjectID, PrintsItsEntityAndComparesByRow) {
  TestStore store;
  auto task = makeTask(*store.context, "Plan");
  const auto temporary = task->objectID();
  EXPECT_TRUE(temporary.isTemporaryID());
  EXPECT_NE(temporary.description().find("/Task/t"), std::string::npos);
  store.context->save();
  const auto& permanent = task->objectID();
  EXPECT_FALSE(permanent.isTemporaryID());
  EXPECT_NE(permanent, temporary);
  std::string expected = "x-kestrona://" + store.coordinator->storeIdentifier().uuidString() + "/Task/p" +
                         std::to_string(permanent.primaryKey());
  EXPECT_EQ(permanent.URIRepresentation(), expected);
  EXPECT_NE(permanent.description().find("/Task"), std::string::npos);

  // The same row named through the parent entity is the same ID.
  const auto* node = store.coordinator->managedObjectModel().entity("Node");
  auto throughParent = ManagedObjectID::permanent(permanent.storeIdentifier(), node->entityPointer(), permanent.primaryKey());
  EXPECT_EQ(throughParent, permanent);
  EXPECT_EQ(std::hash<ManagedObjectID>{}(throughParent), std::hash<ManagedObjectID>{}(permanent));
  const auto* session = store.coordinator->managedObjectModel().entity("Session");
  EXPECT_NE(ManagedObjectID::permanent(permanent.storeIdentifier(), session->entityPointer(), permanent.primaryKey()),
            permanent);
  // The old temporary ID still finds the object in its context.
  EXPECT_EQ(store.context->objectWithID(temporary), task);
}

TEST(ManagedObjectContext, InsertsWithDefaultsAndConvertsValuesToTheAttributeType) {
  TestStore store;
  auto task = store.context->insertNewObject("Task");
  EXPECT_TRUE(task->isInserted());
  EXPECT_EQ(task->faultingState(), ManagedObject::FaultingState::loaded);
  EXPECT_EQ(task->valueForKey("archived"), Value(false));
  EXPECT_EQ(task->stringForKey("name"), "");
  EXPECT_TRUE(task->valueForKey("notes").isNil());

  task->setValue(1, "archived");
  EXPECT_NE(task->valueForKey("archived").get<bool>(), nullptr);
  task->setValue(3.0, "order");
  EXPECT_EQ(task->integerForKey("order"), 3);
  EXPECT_EQ(failureOf([&] { task->setValue(40000, "order"); }), StoreErrorCode::managedObjectValidation);
  EXPECT_EQ(failureOf([&] { task->setValue("text", "confirmedDuration"); }), StoreErrorCode::managedObjectValidation);
  EXPECT_EQ(failureOf([&] { task->setValue(1, "noSuchKey"); }), StoreErrorCode::managedObjectValidation);
  EXPECT_EQ(failureOf([&] { task->valueForKey("noSuchKey"); }), StoreErrorCode::managedObjectValidation);
  EXPECT_EQ(failureOf([&] { store.context->insertNewObject("Node"); }), StoreErrorCode::managedObjectValidation);
  EXPECT_EQ(failureOf([&] { store.context->insertNewObject("Nothing"); }), StoreErrorCode::managedObjectValidation);
}

TEST(ManagedObjectContext, KeepsBothSidesOfARelationshipConsistent) {
  TestStore store;
  auto& context = *store.context;
  auto first = makeTask(context, "First");
  auto second = makeTask(context, "Second");
  auto session = makeSession(context, first, 100, 200, 100);
  EXPECT_EQ(first->objectsForKey("sessions"), std::vector<std::shared_ptr<ManagedObject>>{session});

  // Moving the to-one side moves the to-many membership.
  session->setValue(Value(second), "task");
  EXPECT_TRUE(first->objectsForKey("sessions").empty());
  EXPECT_EQ(second->objectsForKey("sessions").size(), 1u);
  context.save();
  EXPECT_EQ(second->objectsForKey("sessions").size(), 1u);

  // Setting the to-many side sets the to-one of each member, saved or not.
  auto another = makeSession(context, nullptr, 300, 400, 100);
  first->setValue(Value(Value::Array{Value(session), Value(another)}), "sessions");
  EXPECT_EQ(session->objectForKey("task"), first);
  EXPECT_EQ(another->objectForKey("task"), first);
  EXPECT_TRUE(second->objectsForKey("sessions").empty());
  first->setValue(Value(Value::Array{Value(another)}), "sessions");
  EXPECT_EQ(session->objectForKey("task"), nullptr);

  // A to-one with a to-one inverse: taking the partner unhooks its old one.
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(first), "task");
  EXPECT_EQ(first->objectForKey("ruleSet"), rules);
  second->setValue(Value(rules), "ruleSet");
  EXPECT_EQ(rules->objectForKey("task"), second);
  EXPECT_EQ(first->objectForKey("ruleSet"), nullptr);

  // Relationships do not cross contexts.
  auto otherContext = store.newContext();
  auto stranger = makeTask(*otherContext, "Stranger");
  EXPECT_EQ(failureOf([&] { session->setValue(Value(stranger), "task"); }), StoreErrorCode::managedObjectValidation);
}

TEST(ManagedObjectContext, SavesAllChangesAtOnceAndTheyOutliveTheProcess) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Report");
  auto session = makeSession(context, task, 1000, 4600, 3600);
  session->setValue(Data{{1, 2, 3}}, "attachment");
  session->setValue(std::int64_t{1} << 40, "sequence");
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(Value::Array{Value("alpha"), Value("beta")}), "words");
  rules->setValue(Value(task), "task");
  EXPECT_TRUE(context.hasChanges());
  EXPECT_EQ(context.insertedObjects().size(), 3u);
  context.save();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_FALSE(task->objectID().isTemporaryID());
  EXPECT_FALSE(session->objectForKey("task")->objectID().isTemporaryID());
  auto sessionURI = session->objectID().URIRepresentation();
  auto rulesURI = rules->objectID().URIRepresentation();

  store.reopen();
  auto reread = store.context->existingObjectWithID(*store.coordinator->managedObjectIDForURIRepresentation(sessionURI));
  EXPECT_EQ(reread->dateForKey("begin"), Date(1000));
  EXPECT_EQ(reread->dateForKey("end"), Date(4600));
  EXPECT_EQ(reread->doubleForKey("confirmedDuration"), 3600);
  EXPECT_EQ(reread->integerForKey("sequence"), std::int64_t{1} << 40);
  EXPECT_EQ(reread->valueForKey("attachment"), Value(Data{{1, 2, 3}}));
  EXPECT_EQ(reread->valueForKeyPath("task.name"), Value("Report"));
  auto rereadRules = store.context->existingObjectWithID(*store.coordinator->managedObjectIDForURIRepresentation(rulesURI));
  EXPECT_EQ(rereadRules->valueForKey("words"), Value(Value::Array{Value("alpha"), Value("beta")}));
  EXPECT_EQ(rereadRules->valueForKeyPath("task.ruleSet"), Value(rereadRules));
}

TEST(ManagedObjectContext, AFailedSaveWritesNothingAndKeepsThePendingChanges) {
  TestStore store;
  auto& context = *store.context;
  auto kept = makeTask(context, "Kept");
  context.save();
  kept->setValue("Renamed", "name");
  auto incomplete = context.insertNewObject("Session");  // begin is mandatory
  EXPECT_EQ(failureOf([&] { context.save(); }), StoreErrorCode::validationMissingMandatoryProperty);
  EXPECT_TRUE(context.hasChanges());
  EXPECT_TRUE(incomplete->objectID().isTemporaryID());

  auto reader = store.newContext();
  EXPECT_EQ(reader->existingObjectWithID(kept->objectID())->stringForKey("name"), "Kept");
  EXPECT_EQ(reader->count(FetchRequest("Session")), 0u);

  // A value its transformer refuses fails the write itself, which rolls back.
  incomplete->setValue(Date(5), "begin");
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(Value::Array{Value(3)}), "words");
  EXPECT_EQ(failureOf([&] { context.save(); }), StoreErrorCode::persistentStoreSave);
  EXPECT_EQ(reader->count(FetchRequest("Session")), 0u);
  EXPECT_TRUE(incomplete->objectID().isTemporaryID());
  rules->setValue(Value(), "words");
  context.save();
  EXPECT_EQ(reader->count(FetchRequest("Session")), 1u);
  reader->refreshObject(reader->existingObjectWithID(kept->objectID()), false);
  EXPECT_EQ(reader->existingObjectWithID(kept->objectID())->stringForKey("name"), "Renamed");
}

TEST(ManagedObjectContext, TracksChangedValuesAndCommittedValues) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Before");
  context.save();
  EXPECT_TRUE(task->changedValues().empty());
  task->setValue("After", "name");
  task->setValue(true, "archived");
  auto changes = task->changedValues();
  EXPECT_EQ(changes.size(), 2u);
  EXPECT_EQ(changes["name"], Value("After"));
  EXPECT_TRUE(task->isUpdated());
  EXPECT_EQ(context.updatedObjects(), std::vector<std::shared_ptr<ManagedObject>>{task});
  EXPECT_EQ(task->committedValuesForKeys({"name"}), (std::map<std::string, Value>{{"name", Value("Before")}}));
  // Setting a value back is no change.
  task->setValue("Before", "name");
  task->setValue(false, "archived");
  EXPECT_FALSE(task->isUpdated());
  EXPECT_FALSE(context.hasChanges());

  task->setValue("Doomed", "name");
  context.deleteObject(task);
  EXPECT_TRUE(task->isDeleted());
  EXPECT_EQ(context.deletedObjects(), std::vector<std::shared_ptr<ManagedObject>>{task});
  EXPECT_EQ(task->committedValuesForKeys({"name"})["name"], Value("Before"));
  context.save();
  EXPECT_EQ(task->faultingState(), ManagedObject::FaultingState::unusable);
  EXPECT_EQ(task->managedObjectContext(), nullptr);
  EXPECT_EQ(task->committedValuesForKeys({"name"})["name"], Value("Before"));
}

TEST(ManagedObjectContext, RollbackDropsEveryPendingChange) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Saved");
  auto session = makeSession(context, task, 0, 10, 10);
  context.save();
  task->setValue("Edited", "name");
  context.deleteObject(session);
  auto inserted = makeTask(context, "New");
  context.rollback();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(task->stringForKey("name"), "Saved");
  EXPECT_FALSE(session->isDeleted());
  EXPECT_EQ(session->objectForKey("task"), task);
  EXPECT_EQ(inserted->managedObjectContext(), nullptr);
  EXPECT_EQ(context.count(FetchRequest("Task")), 1u);
}

TEST(ManagedObjectContext, DeleteFollowsTheDeleteRules) {
  TestStore store;
  auto& context = *store.context;
  auto folder = context.insertNewObject("Folder");
  auto task = makeTask(context, "Child");
  task->setValue(Value(folder), "parent");
  auto session = makeSession(context, task, 0, 10, 10);
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(task), "task");
  auto sibling = makeTask(context, "Sibling");
  sibling->setValue(Value(folder), "parent");
  context.save();

  // Nullify: deleting a child leaves the parent, without the child.
  context.deleteObject(sibling);
  EXPECT_EQ(folder->objectsForKey("children"), std::vector<std::shared_ptr<ManagedObject>>{task});
  EXPECT_FALSE(folder->isDeleted());

  // Cascade: the folder takes its task, whose sessions and rule set go too.
  context.deleteObject(folder);
  EXPECT_TRUE(task->isDeleted());
  EXPECT_TRUE(session->isDeleted());
  EXPECT_TRUE(rules->isDeleted());
  context.save();
  EXPECT_EQ(context.count(FetchRequest("Node")), 0u);
  EXPECT_EQ(context.count(FetchRequest("Session")), 0u);
  EXPECT_EQ(context.count(FetchRequest("RuleSet")), 0u);

  // Nullify on a to-one whose inverse is to-one clears the partner.
  auto owner = makeTask(context, "Owner");
  auto ownRules = context.insertNewObject("RuleSet");
  ownRules->setValue(Value(owner), "task");
  context.save();
  context.deleteObject(ownRules);
  EXPECT_EQ(owner->objectForKey("ruleSet"), nullptr);
  context.save();
  store.reopen();
  EXPECT_EQ(store.context->fetch(FetchRequest("Task")).front()->objectForKey("ruleSet"), nullptr);
}

TEST(ManagedObjectContext, DenyRuleRefusesTheSaveWhileDestinationsRemain) {
  TestStore store;
  auto& context = *store.context;
  auto client = context.insertNewObject("Client");
  auto project = context.insertNewObject("Project");
  project->setValue(Value(client), "client");
  context.save();
  context.deleteObject(client);
  EXPECT_EQ(failureOf([&] { context.save(); }), StoreErrorCode::validationRelationshipDeniedDelete);
  context.rollback();
  context.deleteObject(project);
  context.deleteObject(client);
  EXPECT_NO_THROW(context.save());
}

TEST(ManagedObjectContext, ObjectsThatAreGoneFailWithReferentialIntegrity) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Short-lived");
  context.save();
  auto id = task->objectID();

  // Deleted here, before the save.
  context.deleteObject(task);
  EXPECT_EQ(failureOf([&] { context.existingObjectWithID(id); }), StoreErrorCode::managedObjectReferentialIntegrity);
  context.save();
  EXPECT_EQ(failureOf([&] { context.existingObjectWithID(id); }), StoreErrorCode::managedObjectReferentialIntegrity);

  // Deleted by another context: a fault held here fails when it fires.
  auto survivor = makeTask(context, "Survivor");
  context.save();
  auto reader = store.newContext();
  auto fault = reader->objectWithID(survivor->objectID());
  EXPECT_TRUE(fault->isFault());
  context.deleteObject(survivor);
  context.save();
  EXPECT_EQ(failureOf([&] { fault->valueForKey("name"); }), StoreErrorCode::managedObjectReferentialIntegrity);
  EXPECT_EQ(failureOf([&] { reader->existingObjectWithID(survivor->objectID()); }),
            StoreErrorCode::managedObjectReferentialIntegrity);
  auto unsaved = makeTask(context, "Unsaved");
  EXPECT_EQ(failureOf([&] { reader->existingObjectWithID(unsaved->objectID()); }),
            StoreErrorCode::managedObjectReferentialIntegrity);
}

TEST(ManagedObjectContext, KeepsOneInstancePerObjectAndFaultsUntilUsed) {
  TestStore store;
  auto task = makeTask(*store.context, "Once");
  store.context->save();
  auto reader = store.newContext();
  auto fault = reader->objectWithID(task->objectID());
  EXPECT_TRUE(fault->isFault());
  EXPECT_EQ(fault->faultingState(), ManagedObject::FaultingState::fault);
  EXPECT_EQ(reader->existingObjectWithID(task->objectID()), fault);
  EXPECT_FALSE(fault->isFault());
  auto fetched = reader->fetch(FetchRequest("Task"));
  ASSERT_EQ(fetched.size(), 1u);
  EXPECT_EQ(fetched.front(), fault);
}

TEST(ManagedObjectContext, ObtainsPermanentIDsBeforeTheSave) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Early");
  auto session = makeSession(context, task, 0, 1, 1);
  auto temporary = task->objectID();
  context.obtainPermanentIDs({task});
  EXPECT_FALSE(task->objectID().isTemporaryID());
  EXPECT_EQ(*session->valueForKey("task").objectID(), task->objectID());
  EXPECT_TRUE(task->isInserted());
  context.save();
  EXPECT_EQ(store.newContext()->existingObjectWithID(task->objectID())->stringForKey("name"), "Early");
  EXPECT_EQ(context.objectWithID(temporary), task);
}

TEST(ManagedObjectContext, RefreshEitherDropsOrKeepsLocalChanges) {
  TestStore store;
  auto task = makeTask(*store.context, "Stored");
  task->setValue(std::int64_t{1}, "order");
  store.context->save();
  auto writer = store.newContext();
  auto copy = writer->existingObjectWithID(task->objectID());
  copy->setValue("Elsewhere", "name");
  writer->save();

  task->setValue(std::int64_t{7}, "order");
  store.context->refreshObject(task, true);
  EXPECT_EQ(task->stringForKey("name"), "Elsewhere");
  EXPECT_EQ(task->integerForKey("order"), 7);
  EXPECT_EQ(task->committedValuesForKeys({"order"})["order"], Value(1));

  store.context->refreshObject(task, false);
  EXPECT_TRUE(task->isFault());
  EXPECT_EQ(task->integerForKey("order"), 1);
  EXPECT_FALSE(store.context->hasChanges());
}

TEST(ManagedObjectContext, ConflictingSavesFollowTheMergePolicy) {
  TestStore store;
  auto original = makeTask(*store.context, "Original");
  original->setValue(1, "order");
  store.context->save();
  auto id = original->objectID();
  auto mine = store.newContext();
  auto theirs = store.newContext();
  auto ours = mine->existingObjectWithID(id);
  auto other = theirs->existingObjectWithID(id);
  other->setValue("Theirs", "name");
  other->setValue(5, "order");
  theirs->save();

  // The default policy fails the save, names the object, writes nothing.
  ours->setValue("Mine", "name");
  try {
    mine->save();
    ADD_FAILURE() << "the conflicting save went through";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectMerge);
    auto conflicts = error.userInfoObject<std::vector<MergeConflict>>(StoreError::kSaveConflictsKey);
    ASSERT_NE(conflicts, nullptr);
    ASSERT_EQ(conflicts->size(), 1u);
    EXPECT_EQ(conflicts->front().sourceObject, ours);
  }
  EXPECT_TRUE(mine->hasChanges());
  auto stored = [&] { return store.newContext()->existingObjectWithID(id); };
  EXPECT_EQ(stored()->stringForKey("name"), "Theirs");

  // Object trump: my change wins, their other change stays.
  mine->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
  mine->save();
  EXPECT_EQ(ours->stringForKey("name"), "Mine");
  EXPECT_EQ(ours->integerForKey("order"), 5);
  EXPECT_EQ(stored()->stringForKey("name"), "Mine");
  EXPECT_EQ(stored()->integerForKey("order"), 5);

  // Store trump: their stored change of the name wins over mine, and my
  // change of a property nobody else touched is written.
  other->setValue("Again", "name");
  other->setValue(7, "order");
  theirs->setMergePolicy(MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType);
  theirs->save();
  EXPECT_EQ(other->stringForKey("name"), "Mine");
  EXPECT_EQ(stored()->stringForKey("name"), "Mine");
  EXPECT_EQ(stored()->integerForKey("order"), 7);
  EXPECT_FALSE(theirs->hasChanges());

  // A row deleted meanwhile is a conflict whatever the policy.
  auto deleter = store.newContext();
  deleter->deleteObject(deleter->existingObjectWithID(id));
  deleter->save();
  ours->setValue("Late", "name");
  EXPECT_EQ(failureOf([&] { mine->save(); }), StoreErrorCode::managedObjectMerge);
}

TEST(ManagedObjectContext, ChildContextSavesIntoItsParent) {
  TestStore store;
  auto parentTask = makeTask(*store.context, "Parent's");
  store.context->save();
  auto child = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  child->setParentContext(store.context);
  EXPECT_EQ(child->persistentStoreCoordinator(), store.coordinator);
  auto mine = child->existingObjectWithID(parentTask->objectID());
  mine->setValue("Child's", "name");
  auto added = makeTask(*child, "Added");
  auto pending = makeTask(*store.context, "Pending in parent");

  // The child reads through its parent and decides its own changes itself.
  EXPECT_EQ(child->count(FetchRequest("Task")), 3u);
  FetchRequest renamed("Task");
  renamed.predicate = Predicate::withFormat("name == %@", {"Child's"});
  EXPECT_EQ(child->fetch(renamed), std::vector<std::shared_ptr<ManagedObject>>{mine});
  renamed.predicate = Predicate::withFormat("name == %@", {"Parent's"});
  EXPECT_TRUE(child->fetch(renamed).empty());
  FetchRequest sorted("Task");
  sorted.sortDescriptors = {{"name", true}};
  sorted.fetchLimit = 2;
  auto firstTwo = child->fetch(sorted);
  ASSERT_EQ(firstTwo.size(), 2u);
  EXPECT_EQ(firstTwo[0], added);
  EXPECT_EQ(firstTwo[1], mine);

  child->save();
  EXPECT_FALSE(child->hasChanges());
  EXPECT_EQ(parentTask->stringForKey("name"), "Child's");
  EXPECT_TRUE(store.context->hasChanges());
  EXPECT_EQ(store.context->insertedObjects().size(), 2u);
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 1u);
  store.context->save();
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 3u);
  EXPECT_FALSE(pending->objectID().isTemporaryID());
}

TEST(ManagedObjectContext, PerformAndWaitIsReentrantAndSerialisesThreads) {
  TestStore store;
  auto context = store.context;
  bool inner = false;
  context->performAndWait([&] { context->performAndWait([&] { inner = true; }); });
  EXPECT_TRUE(inner);
  EXPECT_THROW(context->performAndWaitReturning([]() -> int { throw StoreError(StoreErrorCode::migration, "x"); }),
               StoreError);
  EXPECT_EQ(context->performAndWaitReturning([] { return 42; }), 42);

  // Two threads inserting at once: the queue lets one block in at a time.
  int inside = 0;
  int most = 0;
  auto work = [&] {
    for (int i = 0; i < 200; ++i) {
      context->performAndWait([&] {
        most = std::max(most, ++inside);
        makeTask(*context, "Thread");
        --inside;
      });
    }
  };
  std::thread first(work);
  std::thread second(work);
  first.join();
  second.join();
  EXPECT_EQ(most, 1);
  EXPECT_EQ(context->insertedObjects().size(), 400u);
}

TEST(ManagedObjectContext, HoldsAssociatedObjectsPerContext) {
  TestStore store;
  static const char key = 0;
  auto value = std::make_shared<int>(5);
  store.context->setAssociatedObject(&key, value);
  EXPECT_EQ(store.context->associatedObject(&key), value);
  EXPECT_EQ(store.newContext()->associatedObject(&key), nullptr);
  store.context->setAssociatedObject(&key, nullptr);
  EXPECT_EQ(store.context->associatedObject(&key), nullptr);
}

class TaskObject : public ManagedObject {
 public:
  explicit TaskObject(Construction construction) : ManagedObject(std::move(construction)) {}
  bool awoken = false;

  void validateValue(Value& value, std::string_view key) const override {
    ManagedObject::validateValue(value, key);
    if (key == "name" && value == Value("forbidden")) {
      throw StoreError(StoreErrorCode::managedObjectValidation, "That name is not allowed");
    }
  }

 protected:
  void awakeFromInsert() override { awoken = true; }
};

TEST(ManagedObjectContext, MakesRegisteredClassesAndAsksThemToValidate) {
  ManagedObject::setClassForEntityName("Task", [](ManagedObject::Construction construction) {
    return std::make_shared<TaskObject>(std::move(construction));
  });
  TestStore store;
  auto task = std::dynamic_pointer_cast<TaskObject>(makeTask(*store.context, "forbidden"));
  ASSERT_NE(task, nullptr);
  EXPECT_TRUE(task->awoken);
  EXPECT_EQ(failureOf([&] { store.context->save(); }), StoreErrorCode::managedObjectValidation);
  task->setValue("fine", "name");
  store.context->save();
  EXPECT_NE(std::dynamic_pointer_cast<TaskObject>(store.newContext()->existingObjectWithID(task->objectID())), nullptr);
  ManagedObject::setClassForEntityName("Task", nullptr);
}

}  // namespace
}  // namespace kestrona
