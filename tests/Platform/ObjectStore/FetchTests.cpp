// Fetches, counts and dictionary results, and how they see the context's
// unsaved changes; batch requests.
#include <gtest/gtest.h>

#include <set>

#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeSession;
using testing::makeTask;
using testing::TestStore;
using Rows = std::vector<std::map<std::string, Value>>;

ExpressionDescription aggregate(const std::string& name, const char* function, const std::string& keyPath,
                                AttributeType type = AttributeType::doubleAttributeType) {
  return {name, Expression::expressionForFunction(function, {Expression::expressionForKeyPath(keyPath)}), type};
}

std::vector<double> begins(const std::vector<std::shared_ptr<ManagedObject>>& sessions) {
  std::vector<double> result;
  for (const auto& session : sessions) result.push_back(session->dateForKey("begin")->timeIntervalSince1970());
  return result;
}

// Tasks A and B (B archived); sessions 100–200 and 200–260 of A, 300–340 of B.
class Fetching : public ::testing::Test {
 protected:
  void SetUp() override {
    a = makeTask(context, "A");
    b = makeTask(context, "B", true);
    s1 = makeSession(context, a, 100, 200, 100);
    s2 = makeSession(context, a, 200, 260, 60);
    s3 = makeSession(context, b, 300, 340, 40);
    context.save();
  }

  static FetchRequest dictionaries(std::vector<PropertyToFetch> properties, std::vector<std::string> groupBy = {}) {
    FetchRequest request("Session");
    request.resultType = FetchRequestResultType::dictionaryResultType;
    request.propertiesToFetch = std::move(properties);
    request.propertiesToGroupBy = std::move(groupBy);
    return request;
  }
  // The total confirmed duration of the sessions predicate matches.
  double sum(ManagedObjectContext& reader, const Predicate& predicate) {
    auto request = dictionaries({aggregate("total", "sum:", "confirmedDuration")});
    request.predicate = predicate;
    auto rows = reader.fetchDictionaries(request);
    return rows.size() == 1 && rows[0].count("total") ? *rows[0].at("total").get<double>() : -1;
  }

  TestStore store;
  ManagedObjectContext& context = *store.context;
  std::shared_ptr<ManagedObject> a, b, s1, s2, s3;
};

TEST_F(Fetching, FetchesCountsAndSumsSeeUnsavedInsertsUpdatesAndDeletes) {
  auto ofA = Predicate::withFormat("task == %@", {Value(a)});
  FetchRequest request("Session");
  request.predicate = ofA;
  auto s4 = makeSession(context, a, 400, 425, 25);
  s1->setValue(10.0, "confirmedDuration");
  context.deleteObject(s2);
  s3->setValue(Value(a), "task");  // moves into the predicate

  auto fetched = context.fetch(request);
  EXPECT_EQ(std::set(fetched.begin(), fetched.end()), (std::set<std::shared_ptr<ManagedObject>>{s1, s3, s4}));
  EXPECT_EQ(context.count(request), 3u);
  EXPECT_EQ(sum(context, ofA), 10 + 40 + 25);
  // A stored row that still matches by its stored values is judged by its
  // pending ones.
  EXPECT_EQ(sum(context, Predicate::withFormat("confirmedDuration >= 50")), 0);
  EXPECT_EQ(sum(*store.newContext(), ofA), 160);
  context.save();
  EXPECT_EQ(sum(*store.newContext(), ofA), 75);
}

// Every key path of a request that reaches a to-one destination sees
// unsaved changes of that destination: predicate, sort keys, properties.
TEST_F(Fetching, EveryKeyPathSeesUnsavedChangesOfItsDestination) {
  auto home = context.insertNewObject("Folder");
  auto away = context.insertNewObject("Folder");
  a->setValue(Value(home), "parent");
  b->setValue(Value(home), "parent");
  context.save();

  FetchRequest active("Session");
  active.predicate = Predicate::withFormat("task.archived == false");
  b->setValue(false, "archived");
  EXPECT_EQ(context.count(active), 3u);
  a->setValue(true, "archived");
  EXPECT_EQ(begins(context.fetch(active)), std::vector<double>{300});

  a->setValue("Z", "name");
  FetchRequest sorted("Session");
  sorted.sortDescriptors = {{"task.name", true}, {"begin", true}};
  EXPECT_EQ(begins(context.fetch(sorted)), (std::vector<double>{300, 100, 200}));

  b->setValue(Value(away), "parent");
  std::map<ManagedObjectID, double> totals;
  auto grouped = dictionaries({std::string("task.parent"), aggregate("total", "sum:", "confirmedDuration")},
                              {"task.parent"});
  for (const auto& row : context.fetchDictionaries(grouped)) {
    totals[*row.at("task.parent").objectID()] = *row.at("total").get<double>();
  }
  EXPECT_EQ(totals, (std::map<ManagedObjectID, double>{{home->objectID(), 160}, {away->objectID(), 40}}));
}

TEST_F(Fetching, SortsAndLimitsAcrossStoredAndPendingObjectsWithNilFirstAscending) {
  makeSession(context, nullptr, 150, std::nullopt, 0);
  s1->setValue(Date(500), "begin");
  FetchRequest request("Session");
  request.sortDescriptors = {{"begin", true}};
  request.fetchLimit = 2;
  EXPECT_EQ(begins(context.fetch(request)), (std::vector<double>{150, 200}));
  EXPECT_EQ(context.count(request), 2u);
  request.sortDescriptors = {{"end", false}, {"begin", true}};
  request.fetchLimit = 0;
  EXPECT_EQ(begins(context.fetch(request)), (std::vector<double>{300, 200, 500, 150}));
  context.save();
  EXPECT_EQ(begins(store.newContext()->fetch(request)), (std::vector<double>{300, 200, 500, 150}));
}

TEST_F(Fetching, ParentEntitiesIncludeTheirSubentitiesAndPrefetchingLoadsDestinations) {
  context.insertNewObject("Folder");
  context.save();
  EXPECT_EQ(context.count(FetchRequest("Node")), 3u);
  FetchRequest onlyNodes("Node");
  onlyNodes.includesSubentities = false;
  EXPECT_EQ(context.count(onlyNodes), 0u);
  EXPECT_EQ(context.fetch(FetchRequest("Folder")).front()->entity().name(), "Folder");

  auto reader = store.newContext();
  FetchRequest request("Session");
  request.returnsObjectsAsFaults = false;
  request.relationshipKeyPathsForPrefetching = {"task"};
  EXPECT_FALSE(reader->fetch(request).front()->isFault());
  EXPECT_FALSE(reader->objectRegisteredForID(a->objectID())->isFault());
}

TEST_F(Fetching, DictionaryResultsGroupAndAggregateStoredAndPendingRowsAlike) {
  auto totals = [&] {
    std::map<std::string, std::pair<double, std::int64_t>> result;
    auto request = dictionaries({std::string("task"), aggregate("total", "sum:", "confirmedDuration"),
                                 aggregate("count", "count:", "begin", AttributeType::integer64AttributeType)},
                                {"task"});
    for (const auto& row : context.fetchDictionaries(request)) {
      auto task = row.find("task");
      std::string name =
          task == row.end() ? "-" : *context.objectWithID(*task->second.objectID())->stringForKey("name");
      result[name] = {*row.at("total").get<double>(), *row.at("count").get<std::int64_t>()};
    }
    return result;
  };
  using Totals = std::map<std::string, std::pair<double, std::int64_t>>;
  makeTask(context, "Idle");
  EXPECT_EQ(totals(), (Totals{{"A", {160, 2}}, {"B", {40, 1}}}));
  auto c = makeTask(context, "C");
  makeSession(context, c, 10, 20, 10);
  makeSession(context, b, 10, 20, 5);
  makeSession(context, nullptr, 10, 20, 7);
  context.deleteObject(s1);
  EXPECT_EQ(totals(), (Totals{{"A", {60, 1}}, {"B", {45, 2}}, {"C", {10, 1}}, {"-", {7, 1}}}));
  context.save();
  EXPECT_EQ(totals(), (Totals{{"A", {60, 1}}, {"B", {45, 2}}, {"C", {10, 1}}, {"-", {7, 1}}}));

  auto tracked = dictionaries({std::string("task")});
  tracked.returnsDistinctResults = true;
  EXPECT_EQ(context.fetchDictionaries(tracked).size(), 4u);
}

// A date's extremes compare with unsaved dates; a sum or count over no rows
// is 0, an extreme over no rows is absent.
TEST_F(Fetching, AggregatesKeepTheirTypesAndAreZeroOverNothing) {
  makeSession(context, a, 1000, std::nullopt, 0);
  makeSession(context, b, 10, 20, 10);
  auto request = dictionaries({aggregate("first", "min:", "begin", AttributeType::dateAttributeType),
                               aggregate("last", "max:", "begin", AttributeType::dateAttributeType)});
  EXPECT_EQ(context.fetchDictionaries(request),
            (Rows{{{"first", Value(Date(10))}, {"last", Value(Date(1000))}}}));

  request.predicate = Predicate::withFormat("begin > %@", {Date(1e9)});
  EXPECT_EQ(context.fetchDictionaries(request), Rows{{}});
  request.propertiesToFetch = {aggregate("total", "sum:", "confirmedDuration"),
                               aggregate("count", "count:", "begin", AttributeType::integer64AttributeType)};
  EXPECT_EQ(context.fetchDictionaries(request), (Rows{{{"total", Value(0.0)}, {"count", Value(0)}}}));
}

// An unknown key is named, with the role it had in the request.
TEST_F(Fetching, AnUnknownKeyIsNamed) {
  auto refusedKey = [&](const FetchRequest& request) {
    try {
      auto rows = context.fetchDictionaries(request);
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectValidation);
      auto key = error.userInfoValue<std::string>(StoreError::kKeyKey);
      return key ? *key : std::string("(no key)");
    }
    return std::string("(accepted)");
  };
  auto sorted = dictionaries({std::string("begin")});
  sorted.sortDescriptors = {{"noSuchKey", true}};
  EXPECT_EQ(refusedKey(sorted), "noSuchKey");
  EXPECT_EQ(refusedKey(dictionaries({std::string("task.nothing")})), "task.nothing");
  EXPECT_EQ(refusedKey(dictionaries({std::string("begin")}, {"end"})), "end");
  EXPECT_EQ(refusedKey(dictionaries({aggregate("x", "median:", "begin")})), "x");
  EXPECT_EQ(testing::failureOf([&] { auto objects = context.fetch(FetchRequest("Nothing")); }),
            StoreErrorCode::managedObjectValidation);
}

TEST_F(Fetching, BatchRequestsChangeStoredRowsThroughExecute) {
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
  EXPECT_EQ(context.execute(remove).objectIDs, std::vector<ManagedObjectID>{s3->objectID()});
  EXPECT_EQ(store.newContext()->count(FetchRequest("Session")), 2u);

  for (const auto& [key, value] : std::vector<std::pair<std::string, Value>>{
           {"task", Value()}, {"task.name", Value("x")}, {"begin", Value(5)}, {"noSuchKey", Value(1)}}) {
    BatchUpdateRequest wrong("Session");
    wrong.propertiesToUpdate = {{key, value}};
    EXPECT_EQ(testing::failureOf([&] { context.execute(wrong); }), StoreErrorCode::managedObjectValidation) << key;
  }
}

}  // namespace
}  // namespace kestrona
