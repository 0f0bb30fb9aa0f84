// Contexts and their objects: identity, values, relationships, saving,
// validation, deletion, refreshing and child contexts.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::failureOf;
using testing::makeSession;
using testing::makeTask;
using testing::TestStore;
using Objects = std::vector<std::shared_ptr<ManagedObject>>;

TEST(ManagedObjectID, PrintsItsEntityComparesByRowAndKeepsOneObjectPerRow) {
  TestStore store;
  auto task = makeTask(*store.context, "Plan");
  const auto temporary = task->objectID();
  store.context->save();
  const auto& permanent = task->objectID();
  EXPECT_EQ(permanent.URIRepresentation(), "x-kestrona://" + store.coordinator->storeIdentifier().uuidString() +
                                               "/Task/p" + std::to_string(permanent.primaryKey()));
  // The same row named through the parent entity is the same ID.
  const auto& model = store.coordinator->managedObjectModel();
  auto throughParent = ManagedObjectID::permanent(permanent.storeIdentifier(), model.entity("Node")->entityPointer(),
                                                  permanent.primaryKey());
  EXPECT_EQ(throughParent, permanent);
  EXPECT_EQ(throughParent.hashValue(), permanent.hashValue());
  // The old temporary ID still finds the object in its context.
  EXPECT_EQ(store.context->objectWithID(temporary), task);

  auto reader = store.newContext();
  auto fault = reader->objectWithID(permanent);
  EXPECT_TRUE(fault->isFault());
  EXPECT_EQ(reader->existingObjectWithID(permanent), fault);
  EXPECT_FALSE(fault->isFault());
  EXPECT_EQ(reader->fetch(FetchRequest("Task")), Objects{fault});
}

TEST(ManagedObjectContext, InsertsWithDefaultsAndConvertsOrRefusesValues) {
  TestStore store;
  auto task = store.context->insertNewObject("Task");
  EXPECT_TRUE(task->isInserted());
  EXPECT_EQ(task->valueForKey("archived"), Value(false));
  EXPECT_EQ(task->stringForKey("name"), "");
  EXPECT_TRUE(task->valueForKey("notes").isNil());
  task->setValue(1, "archived");
  EXPECT_NE(task->valueForKey("archived").get<bool>(), nullptr);
  task->setValue(3.0, "order");
  EXPECT_NE(task->valueForKey("order").get<std::int64_t>(), nullptr);
  for (const auto& refused : std::vector<std::function<void()>>{
           [&] { task->setValue(40000, "order"); },  // beyond 16 bits
           [&] { task->setValue("text", "confirmedDuration"); },
           [&] { task->setValue(1, "noSuchKey"); },
           [&] { auto value = task->valueForKey("noSuchKey"); },
           [&] { store.context->insertNewObject("Node"); },  // abstract
           [&] { store.context->insertNewObject("Nothing"); },
           [&] { makeSession(*store.context, makeTask(*store.newContext(), "Elsewhere"), 0, 1, 1); }}) {
    EXPECT_EQ(failureOf(refused), StoreErrorCode::managedObjectValidation);
  }
}

TEST(ManagedObjectContext, KeepsBothSidesOfARelationshipConsistent) {
  TestStore store;
  auto& context = *store.context;
  auto first = makeTask(context, "First");
  auto second = makeTask(context, "Second");
  auto session = makeSession(context, first, 100, 200, 100);
  EXPECT_EQ(first->objectsForKey("sessions"), Objects{session});
  session->setValue(Value(second), "task");
  EXPECT_TRUE(first->objectsForKey("sessions").empty());
  context.save();
  EXPECT_EQ(second->objectsForKey("sessions"), Objects{session});

  // Setting the to-many side sets the to-one of each member, saved or not.
  auto another = makeSession(context, nullptr, 300, 400, 100);
  first->setValue(Value(Value::Array{Value(session), Value(another)}), "sessions");
  EXPECT_EQ(session->objectForKey("task"), first);
  EXPECT_TRUE(second->objectsForKey("sessions").empty());
  first->setValue(Value(Value::Array{Value(another)}), "sessions");
  EXPECT_EQ(session->objectForKey("task"), nullptr);

  // A to-one with a to-one inverse: taking the partner unhooks its old one.
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(first), "task");
  second->setValue(Value(rules), "ruleSet");
  EXPECT_EQ(rules->objectForKey("task"), second);
  EXPECT_EQ(first->objectForKey("ruleSet"), nullptr);
}

TEST(ManagedObjectContext, SavesEveryKindOfValueAtOnceAndTheyOutliveTheProcess) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Report");
  auto session = makeSession(context, task, 1000, 4600, 3600);
  session->setValue(Data{{1, 2, 3}}, "attachment");
  session->setValue(std::int64_t{1} << 40, "sequence");
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(Value::Array{Value("alpha"), Value("beta")}), "words");
  rules->setValue(Value(task), "task");
  EXPECT_EQ(context.insertedObjects().size(), 3u);
  context.save();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_FALSE(session->objectForKey("task")->objectID().isTemporaryID());
  auto sessionURI = session->objectID().URIRepresentation();
  auto rulesURI = rules->objectID().URIRepresentation();

  store.reopen();
  auto reread = [&](const std::string& uri) {
    return store.context->existingObjectWithID(*store.coordinator->managedObjectIDForURIRepresentation(uri));
  };
  auto saved = reread(sessionURI);
  EXPECT_EQ(saved->dateForKey("begin"), Date(1000));
  EXPECT_EQ(saved->dateForKey("end"), Date(4600));
  EXPECT_EQ(saved->doubleForKey("confirmedDuration"), 3600);
  EXPECT_EQ(saved->integerForKey("sequence"), std::int64_t{1} << 40);
  EXPECT_EQ(saved->valueForKey("attachment"), Value(Data{{1, 2, 3}}));
  EXPECT_EQ(saved->valueForKeyPath("task.name"), Value("Report"));
  auto savedRules = reread(rulesURI);
  EXPECT_EQ(savedRules->valueForKey("words"), Value(Value::Array{Value("alpha"), Value("beta")}));
  EXPECT_EQ(savedRules->valueForKeyPath("task.ruleSet"), Value(savedRules));
}

TEST(ManagedObjectContext, AFailedSaveWritesNothingAndKeepsThePendingChanges) {
  TestStore store;
  auto& context = *store.context;
  auto kept = makeTask(context, "Kept");
  context.save();
  kept->setValue("Renamed", "name");
  auto incomplete = context.insertNewObject("Session");  // begin is mandatory
  EXPECT_EQ(failureOf([&] { context.save(); }), StoreErrorCode::validationMissingMandatoryProperty);
  EXPECT_TRUE(incomplete->objectID().isTemporaryID());

  // A value its transformer refuses fails the write itself, which rolls back.
  incomplete->setValue(Date(5), "begin");
  auto rules = context.insertNewObject("RuleSet");
  rules->setValue(Value(Value::Array{Value(3)}), "words");
  EXPECT_EQ(failureOf([&] { context.save(); }), StoreErrorCode::persistentStoreSave);
  EXPECT_EQ(store.stored(kept->objectID())->stringForKey("name"), "Kept");
  EXPECT_EQ(store.newContext()->count(FetchRequest("Session")), 0u);
  EXPECT_TRUE(context.hasChanges());

  rules->setValue(Value(), "words");
  context.save();
  EXPECT_EQ(store.stored(kept->objectID())->stringForKey("name"), "Renamed");
  EXPECT_EQ(store.newContext()->count(FetchRequest("Session")), 1u);
}

// Only a changed object keeps its committed values apart; every read of
// them must still see the values as last saved.
TEST(ManagedObjectContext, TracksChangedValuesAgainstTheCommittedOnesAndRollsBack) {
  TestStore store;
  auto& context = *store.context;
  auto task = makeTask(context, "Before");
  auto session = makeSession(context, task, 0, 10, 10);
  context.save();
  EXPECT_TRUE(task->changedValues().empty());
  task->setValue("After", "name");
  task->setValue(true, "archived");
  EXPECT_EQ(task->changedValues(),
            (std::map<std::string, Value>{{"name", Value("After")}, {"archived", Value(true)}}));
  EXPECT_EQ(context.updatedObjects(), Objects{task});
  EXPECT_EQ(task->committedValuesForKeys({"name"}), (std::map<std::string, Value>{{"name", Value("Before")}}));
  // Setting a value back is no change.
  task->setValue("Before", "name");
  task->setValue(false, "archived");
  EXPECT_FALSE(context.hasChanges());

  task->setValue("Edited", "name");
  context.deleteObject(session);
  auto inserted = makeTask(context, "New");
  context.rollback();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(task->stringForKey("name"), "Before");
  EXPECT_FALSE(session->isDeleted());
  EXPECT_EQ(session->objectForKey("task"), task);
  EXPECT_EQ(inserted->managedObjectContext(), nullptr);

  task->setValue("Doomed", "name");
  context.deleteObject(task);
  EXPECT_EQ(context.deletedObjects().size(), 2u);  // the task and, by cascade, its session
  context.save();
  EXPECT_EQ(task->faultingState(), ManagedObject::FaultingState::unusable);
  EXPECT_EQ(task->committedValuesForKeys({"name"})["name"], Value("Before"));
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

  context.deleteObject(sibling);  // nullify
  EXPECT_EQ(folder->objectsForKey("children"), Objects{task});
  context.deleteObject(folder);  // cascade, through the task to its session and rules
  EXPECT_TRUE(session->isDeleted() && rules->isDeleted());
  context.save();
  for (const char* entity : {"Node", "Session", "RuleSet"}) EXPECT_EQ(context.count(FetchRequest(entity)), 0u);

  // Deny: the save is refused while a destination remains, naming the
  // live object; deleting the destination first lets it go.
  auto client = context.insertNewObject("Client");
  auto project = context.insertNewObject("Project");
  project->setValue(Value(client), "client");
  context.save();
  context.deleteObject(client);
  try {
    context.save();
    ADD_FAILURE() << "a denied delete was saved";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::validationRelationshipDeniedDelete);
    auto object = error.userInfoObject<std::shared_ptr<ManagedObject>>(StoreError::kValidationObjectKey);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(*object, client);
  }
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
  auto reader = store.newContext();
  auto fault = reader->objectWithID(task->objectID());
  context.deleteObject(task);
  EXPECT_EQ(failureOf([&] { context.existingObjectWithID(task->objectID()); }),
            StoreErrorCode::managedObjectReferentialIntegrity);
  context.save();
  auto unsaved = makeTask(context, "Unsaved");
  for (const auto& gone : std::vector<std::function<void()>>{
           [&] { auto value = fault->valueForKey("name"); },
           [&] { reader->existingObjectWithID(task->objectID()); },
           [&] { reader->existingObjectWithID(unsaved->objectID()); }}) {
    EXPECT_EQ(failureOf(gone), StoreErrorCode::managedObjectReferentialIntegrity);
  }
}

TEST(ManagedObjectContext, RefreshEitherDropsOrKeepsLocalChangesAndPermanentIDsComeEarly) {
  TestStore store;
  auto task = makeTask(*store.context, "Stored");
  auto session = makeSession(*store.context, task, 0, 1, 1);
  auto temporary = task->objectID();
  store.context->obtainPermanentIDs({task});
  EXPECT_FALSE(task->objectID().isTemporaryID());
  EXPECT_EQ(*session->valueForKey("task").objectID(), task->objectID());
  EXPECT_EQ(store.context->objectWithID(temporary), task);
  store.context->save();

  auto writer = store.newContext();
  writer->existingObjectWithID(task->objectID())->setValue("Elsewhere", "name");
  writer->save();
  task->setValue(7, "order");
  store.context->refreshObject(task, true);
  EXPECT_EQ(task->stringForKey("name"), "Elsewhere");
  EXPECT_EQ(task->committedValuesForKeys({"order"})["order"], Value(0));
  store.context->refreshObject(task, false);
  EXPECT_TRUE(task->isFault());
  EXPECT_EQ(task->integerForKey("order"), 0);
  EXPECT_FALSE(store.context->hasChanges());
}

TEST(ManagedObjectContext, AChildContextReadsThroughAndSavesIntoItsParent) {
  TestStore store;
  auto parentTask = makeTask(*store.context, "Parent's");
  store.context->save();
  auto child = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  child->setParentContext(store.context);
  auto mine = child->existingObjectWithID(parentTask->objectID());
  mine->setValue("Child's", "name");
  auto added = makeTask(*child, "Added");
  auto pending = makeTask(*store.context, "Pending in parent");

  EXPECT_EQ(child->count(FetchRequest("Task")), 3u);
  FetchRequest renamed("Task");
  renamed.predicate = Predicate::withFormat("name == %@", {"Child's"});
  EXPECT_EQ(child->fetch(renamed), Objects{mine});
  FetchRequest sorted("Task");
  sorted.sortDescriptors = {{"name", true}};
  sorted.fetchLimit = 2;
  EXPECT_EQ(child->fetch(sorted), (Objects{added, mine}));

  child->save();
  EXPECT_EQ(parentTask->stringForKey("name"), "Child's");
  EXPECT_EQ(store.context->insertedObjects().size(), 2u);
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 1u);
  store.context->save();
  EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 3u);
}

TEST(ManagedObjectContext, PerformAndWaitIsReentrantAndSerialisesThreads) {
  TestStore store;
  auto context = store.context;
  bool inner = false;
  context->performAndWait([&] { context->performAndWait([&] { inner = true; }); });
  EXPECT_TRUE(inner);
  EXPECT_EQ(context->performAndWaitReturning([] { return 42; }), 42);
  EXPECT_THROW(context->performAndWaitReturning([]() -> int { throw StoreError(StoreErrorCode::migration, "x"); }),
               StoreError);
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
  task->setValue(Value(), "name");
  try {
    store.context->save();
    ADD_FAILURE() << "a task without a name was saved";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::validationMissingMandatoryProperty);
    EXPECT_EQ(*error.userInfoValue<std::string>(StoreError::kKeyKey), "name");
    auto object = error.userInfoObject<std::shared_ptr<ManagedObject>>(StoreError::kValidationObjectKey);
    EXPECT_EQ(object ? *object : nullptr, task);
  }
  task->setValue("fine", "name");
  store.context->save();
  EXPECT_NE(std::dynamic_pointer_cast<TaskObject>(store.stored(task->objectID())), nullptr);
  ManagedObject::setClassForEntityName("Task", nullptr);
}

}  // namespace
}  // namespace kestrona
