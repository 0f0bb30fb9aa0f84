#include <gtest/gtest.h>

#include <set>

#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeSession;
using testing::makeTask;
using testing::TestStore;

ExpressionDescription sumOf(const std::string& name, const std::string& keyPath) {
  return {name,
          Expression::expressionForFunction("sum:", {Expression::expressionForKeyPath(keyPath)}),
          AttributeType::doubleAttributeType};
}

ExpressionDescription countOf(const std::string& name, const std::string& keyPath) {
  return {name,
          Expression::expressionForFunction("count:", {Expression::expressionForKeyPath(keyPath)}),
          AttributeType::integer64AttributeType};
}

std::vector<double> begins(const std::vector<std::shared_ptr<ManagedObject>>& sessions) {
  std::vector<double> result;
  for (const auto& session : sessions) result.push_back(session->dateForKey("begin")->timeIntervalSince1970());
  return result;
}

class Fetching : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& context = *store.context;
    a = makeTask(context, "A");
    b = makeTask(context, "B", true);
    s1 = makeSession(context, a, 100, 200, 100);
    s2 = makeSession(context, a, 200, 260, 60);
    s3 = makeSession(context, b, 300, 340, 40);
    context.save();
  }

  double sum(ManagedObjectContext& context, const Predicate& predicate) {
    FetchRequest request("Session");
    request.resultType = FetchRequestResultType::dictionaryResultType;
    request.predicate = predicate;
    request.propertiesToFetch = {sumOf("SumDuration", "confirmedDuration"), countOf("Count", "begin")};
    auto rows = context.fetchDictionaries(request);
    EXPECT_EQ(rows.size(), 1u);
    auto found = rows.front().find("SumDuration");
    return found == rows.front().end() ? 0 : *found->second.get<double>();
  }

  TestStore store;
  std::shared_ptr<ManagedObject> a, b, s1, s2, s3;
};

TEST_F(Fetching, FetchesCountsAndSumsSeeUnsavedInsertsUpdatesAndDeletes) {
  auto& context = *store.context;
  auto ofA = Predicate::withFormat("task == %@", {Value(a)});
  FetchRequest request("Session");
  request.predicate = ofA;
  EXPECT_EQ(context.count(request), 2u);
  EXPECT_EQ(sum(context, ofA), 160);

  auto s4 = makeSession(context, a, 400, 425, 25);  // insert
  s1->setValue(10.0, "confirmedDuration");           // update
  context.deleteObject(s2);                          // delete
  s3->setValue(Value(a), "task");                    // moves into the predicate

  auto fetched = context.fetch(request);
  std::set<std::shared_ptr<ManagedObject>> found(fetched.begin(), fetched.end());
  EXPECT_EQ(found, (std::set<std::shared_ptr<ManagedObject>>{s1, s3, s4}));
  EXPECT_EQ(context.count(request), 3u);
  EXPECT_EQ(sum(context, ofA), 10 + 40 + 25);

  // A stored row that still matches the stored values is judged by the
  // pending ones: s1 is 10 now, s2 is deleted.
  auto large = Predicate::withFormat("confirmedDuration >= 50");
  EXPECT_EQ(sum(context, large), 0);
  FetchRequest largeRequest("Session");
  largeRequest.predicate = large;
  EXPECT_TRUE(context.fetch(largeRequest).empty());

  // Another context sees only what is saved.
  EXPECT_EQ(sum(*store.newContext(), ofA), 160);
  context.save();
  EXPECT_EQ(sum(*store.newContext(), ofA), 75);
}

TEST_F(Fetching, AKeyPathSeesAnUnsavedChangeOfItsDestination) {
  auto& context = *store.context;
  FetchRequest request("Session");
  request.predicate = Predicate::withFormat("task.archived == false");
  EXPECT_EQ(context.count(request), 2u);
  b->setValue(false, "archived");
  EXPECT_EQ(context.count(request), 3u);
  EXPECT_EQ(sum(context, *request.predicate), 200);
  a->setValue(true, "archived");
  EXPECT_EQ(begins(context.fetch(request)), std::vector<double>{300});
}

TEST_F(Fetching, SortsAndLimitsAcrossStoredAndPendingObjects) {
  auto& context = *store.context;
  makeSession(context, nullptr, 150, std::nullopt, 0);
  s1->setValue(Date(500), "begin");
  FetchRequest request("Session");
  request.sortDescriptors = {{"begin", true}};
  EXPECT_EQ(begins(context.fetch(request)), (std::vector<double>{150, 200, 300, 500}));
  request.fetchLimit = 2;
  EXPECT_EQ(begins(context.fetch(request)), (std::vector<double>{150, 200}));
  EXPECT_EQ(context.count(request), 2u);
  request.sortDescriptors = {{"end", false}, {"begin", true}};
  request.fetchLimit = 0;
  // Descending puts nil last; ties fall to the next descriptor.
  EXPECT_EQ(begins(context.fetch(request)), (std::vector<double>{300, 200, 500, 150}));
  context.save();
  EXPECT_EQ(begins(store.newContext()->fetch(request)), (std::vector<double>{300, 200, 500, 150}));
}

TEST_F(Fetching, ParentEntitiesIncludeTheirSubentitiesUnlessAskedNotTo) {
  auto& context = *store.context;
  context.insertNewObject("Folder");
  context.save();
  EXPECT_EQ(context.count(FetchRequest("Node")), 3u);
  FetchRequest onlyNodes("Node");
  onlyNodes.includesSubentities = false;
  EXPECT_EQ(context.count(onlyNodes), 0u);
  FetchRequest folders("Folder");
  EXPECT_EQ(context.fetch(folders).front()->entity().name(), "Folder");
  context.insertNewObject("Folder");
  EXPECT_EQ(context.count(folders), 2u);
  EXPECT_EQ(context.count(FetchRequest("Task")), 2u);
  FetchRequest unknown("Nothing");
  EXPECT_THROW(context.fetch(unknown), StoreError);
}

TEST_F(Fetching, ObjectResultsComeAsFaultsOrLoadedAndPrefetchDestinations) {
  auto reader = store.newContext();
  FetchRequest request("Session");
  request.returnsObjectsAsFaults = false;
  request.relationshipKeyPathsForPrefetching = {"task"};
  auto sessions = reader->fetch(request);
  ASSERT_EQ(sessions.size(), 3u);
  EXPECT_FALSE(sessions.front()->isFault());
  auto task = reader->objectRegisteredForID(a->objectID());
  ASSERT_NE(task, nullptr);
  EXPECT_FALSE(task->isFault());

  auto other = store.newContext();
  FetchRequest bare("Session");
  bare.includesPropertyValues = false;
  auto faults = other->fetch(bare);
  EXPECT_TRUE(faults.front()->isFault());
  EXPECT_TRUE(faults.front()->dateForKey("begin").has_value());
  EXPECT_FALSE(faults.front()->isFault());
}

TEST_F(Fetching, DictionaryResultsGroupByATaskAndMergePendingChanges) {
  auto& context = *store.context;
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.propertiesToFetch = {std::string("task"), sumOf("total", "confirmedDuration"), countOf("count", "begin")};
  request.propertiesToGroupBy = {"task"};
  auto totals = [&] {
    std::map<std::string, std::pair<double, std::int64_t>> result;
    for (const auto& row : context.fetchDictionaries(request)) {
      auto id = row.at("task").get<ManagedObjectID>();
      EXPECT_NE(id, nullptr);
      result[*context.objectWithID(*id)->stringForKey("name")] = {*row.at("total").get<double>(),
                                                                  *row.at("count").get<std::int64_t>()};
    }
    return result;
  };
  using Totals = std::map<std::string, std::pair<double, std::int64_t>>;
  EXPECT_EQ(totals(), (Totals{{"A", {160, 2}}, {"B", {40, 1}}}));
  auto c = makeTask(context, "C");
  makeSession(context, c, 10, 20, 10);
  makeSession(context, b, 10, 20, 5);
  context.deleteObject(s1);
  EXPECT_EQ(totals(), (Totals{{"A", {60, 1}}, {"B", {45, 2}}, {"C", {10, 1}}}));

  // Distinct to-one values: the tracked tasks.
  FetchRequest tracked("Session");
  tracked.resultType = FetchRequestResultType::dictionaryResultType;
  tracked.propertiesToFetch = {std::string("task")};
  tracked.returnsDistinctResults = true;
  EXPECT_EQ(context.fetchDictionaries(tracked).size(), 3u);
  context.save();
  EXPECT_EQ(store.newContext()->fetchDictionaries(tracked).size(), 3u);
}

TEST_F(Fetching, GroupingByATaskKeepsEntriesWithoutOneAndSkipsEmptyTasks) {
  auto& context = *store.context;
  makeSession(context, nullptr, 10, 20, 7);
  makeTask(context, "Idle");
  context.save();
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.predicate = Predicate::withFormat("begin < %@", {Date(250)});
  request.propertiesToFetch = {std::string("task"), sumOf("total", "confirmedDuration")};
  request.propertiesToGroupBy = {"task"};
  std::map<std::string, double> totals;
  for (const auto& row : store.newContext()->fetchDictionaries(request)) {
    auto task = row.find("task");
    std::string name = task == row.end() ? "(none)" : *context.objectWithID(*task->second.get<ManagedObjectID>())->stringForKey("name");
    totals[name] = *row.at("total").get<double>();
  }
  EXPECT_EQ(totals, (std::map<std::string, double>{{"A", 160}, {"(none)", 7}}));
}

TEST_F(Fetching, AnAggregateOverNothingIsEmptyButPresent) {
  auto nothing = Predicate::withFormat("begin > %@", {Date(1e9)});
  EXPECT_EQ(sum(*store.context, nothing), 0);
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.predicate = nothing;
  request.propertiesToFetch = {countOf("Count", "begin")};
  auto rows = store.context->fetchDictionaries(request);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows.front().at("Count"), Value(0));
  request.propertiesToFetch = {std::string("noSuchKey")};
  EXPECT_THROW(store.context->fetchDictionaries(request), StoreError);
}

TEST_F(Fetching, BatchRequestsChangeStoredRowsThroughExecute) {
  auto& context = *store.context;
  BatchUpdateRequest update("Session");
  update.predicate = Predicate::withFormat("task == %@", {Value(a)});
  update.propertiesToUpdate = {{"isBillable", Value(true)}, {"billingStatusValue", Value(2)}};
  update.resultType = BatchUpdateRequestResultType::updatedObjectsCountResultType;
  EXPECT_EQ(context.execute(update).count, 2);
  FetchRequest billable("Session");
  billable.predicate = Predicate::withFormat("isBillable == YES AND billingStatusValue == 2");
  EXPECT_EQ(store.newContext()->count(billable), 2u);

  BatchDeleteRequest remove{FetchRequest("Session")};
  remove.fetchRequest.predicate = Predicate::withFormat("task.archived == YES");
  remove.resultType = BatchDeleteRequestResultType::resultTypeObjectIDs;
  auto result = context.execute(remove);
  EXPECT_EQ(result.objectIDs, std::vector<ManagedObjectID>{s3->objectID()});
  EXPECT_EQ(store.newContext()->count(FetchRequest("Session")), 2u);

  BatchUpdateRequest wrong("Session");
  wrong.propertiesToUpdate = {{"task", Value()}};
  EXPECT_THROW(context.execute(wrong), StoreError);
}

TEST_F(Fetching, MinAndMaxOfADateSeeUnsavedObjects) {
  auto& context = *store.context;
  makeSession(context, a, 1000, std::nullopt, 0);
  makeSession(context, b, 10, 20, 10);
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  auto date = [](const char* name, const char* function) {
    return ExpressionDescription{name, Expression::expressionForFunction(function, {Expression::expressionForKeyPath("begin")}),
                                 AttributeType::dateAttributeType};
  };
  request.propertiesToFetch = {date("first", "min:"), date("last", "max:")};
  auto rows = context.fetchDictionaries(request);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].at("first"), Value(Date(10)));
  EXPECT_EQ(rows[0].at("last"), Value(Date(1000)));
}

TEST_F(Fetching, EveryKeyPathSeesUnsavedChangesOfItsDestination) {
  auto& context = *store.context;
  auto home = context.insertNewObject("Folder");
  auto away = context.insertNewObject("Folder");
  a->setValue(Value(home), "parent");
  b->setValue(Value(home), "parent");
  context.save();

  a->setValue("Z", "name");
  FetchRequest sorted("Session");
  sorted.sortDescriptors = {{"task.name", true}, {"begin", true}};
  EXPECT_EQ(begins(context.fetch(sorted)), (std::vector<double>{300, 100, 200}));

  b->setValue(Value(away), "parent");
  FetchRequest grouped("Session");
  grouped.resultType = FetchRequestResultType::dictionaryResultType;
  grouped.propertiesToFetch = {std::string("task.parent"), sumOf("total", "confirmedDuration")};
  grouped.propertiesToGroupBy = {"task.parent"};
  std::map<ManagedObjectID, double> totals;
  for (const auto& row : context.fetchDictionaries(grouped)) {
    totals[*row.at("task.parent").objectID()] = *row.at("total").get<double>();
  }
  EXPECT_EQ(totals, (std::map<ManagedObjectID, double>{{home->objectID(), 160}, {away->objectID(), 40}}));
}

TEST_F(Fetching, AnUnknownKeyIsNamedWithItsRole) {
  auto refusedKey = [&](FetchRequest request) -> std::string {
    try {
      auto rows = store.context->fetchDictionaries(request);
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectValidation);
      auto key = error.userInfoValue<std::string>(StoreError::kKeyKey);
      return key ? *key : "(no key)";
    }
    return "(accepted)";
  };
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.sortDescriptors = {{"noSuchKey", true}};
  EXPECT_EQ(refusedKey(request), "noSuchKey");
  request.sortDescriptors = {};
  request.propertiesToFetch = {std::string("task.nothing")};
  EXPECT_EQ(refusedKey(request), "task.nothing");
}

TEST_F(Fetching, ASumAndACountOverNoRowsAreZero) {
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.predicate = Predicate::withFormat("begin > %@", {Date(1e9)});
  request.propertiesToFetch = {sumOf("total", "confirmedDuration"), countOf("count", "begin")};
  auto rows = store.context->fetchDictionaries(request);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0], (std::map<std::string, Value>{{"total", Value(0.0)}, {"count", Value(0)}}));
}

class GuardedContext : public ManagedObjectContext {
 public:
  GuardedContext()
      : ManagedObjectContext(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType,
                             std::make_unique<PrivateContextQueue>()) {}
  int refused = 0;

  PersistentStoreResult execute(const PersistentStoreRequest& request) override {
    if (std::holds_alternative<BatchDeleteRequest>(request)) {
      ++refused;
      throw StoreError(StoreErrorCode::managedObjectValidation, "refused");
    }
    return ManagedObjectContext::execute(request);
  }
};

TEST_F(Fetching, ASubclassCanGuardExecute) {
  auto guarded = std::make_shared<GuardedContext>();
  guarded->setPersistentStoreCoordinator(store.coordinator);
  ManagedObjectContext& base = *guarded;
  EXPECT_THROW(base.execute(BatchDeleteRequest{FetchRequest("Session")}), StoreError);
  EXPECT_EQ(guarded->refused, 1);
  FetchRequest counting("Session");
  counting.resultType = FetchRequestResultType::countResultType;
  EXPECT_EQ(base.execute(counting).count, 3);
}

}  // namespace
}  // namespace kestrona
