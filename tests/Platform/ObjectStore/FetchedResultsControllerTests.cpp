#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Platform/ObjectStore/FetchedResultsController.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/RunLoop/MainLoop.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::TestStore;
using Type = FetchedResultsChangeType;

struct RecordedChange {
  Type type;
  std::shared_ptr<ManagedObject> object;
  std::optional<IndexPath> indexPath;
  std::optional<IndexPath> newIndexPath;
};

// Records every call and checks, at did-change, that the events turn the list
// a reader had at will-change into the controller's new list, the way a table
// applies them: deletes and the removal half of moves at old rows, inserts and
// the placing half of moves at new rows, updates naming the same object in
// both lists.
class RecordingDelegate : public FetchedResultsControllerDelegate {
 public:
  void controllerWillChangeContent(FetchedResultsController& controller) override {
    calls.push_back("will");
    rowsBefore = controller.fetchedObjects();
    batch.clear();
  }
  void controllerDidChangeObject(FetchedResultsController&, const std::shared_ptr<ManagedObject>& object,
                                 std::optional<IndexPath> indexPath, FetchedResultsChangeType type,
                                 std::optional<IndexPath> newIndexPath) override {
    calls.push_back("change");
    batch.push_back({type, object, indexPath, newIndexPath});
  }
  void controllerDidChangeContent(FetchedResultsController& controller) override {
    calls.push_back("did");
    const auto& rowsAfter = controller.fetchedObjects();
    std::vector<std::size_t> removed;
    std::vector<std::pair<std::size_t, std::shared_ptr<ManagedObject>>> placed;
    for (const auto& change : batch) {
      EXPECT_EQ(change.indexPath.has_value(), change.type != Type::insert);
      EXPECT_EQ(change.newIndexPath.has_value(), change.type != Type::deleteChange);
      if (change.indexPath) {
        EXPECT_EQ(rowsBefore.at(change.indexPath->row), change.object);
      }
      if (change.newIndexPath) {
        EXPECT_EQ(rowsAfter.at(change.newIndexPath->row), change.object);
      }
      if (change.type == Type::deleteChange || change.type == Type::move) removed.push_back(change.indexPath->row);
      if (change.type == Type::insert || change.type == Type::move) {
        placed.emplace_back(change.newIndexPath->row, change.object);
      }
    }
    auto rows = rowsBefore;
    std::sort(removed.rbegin(), removed.rend());
    for (auto row : removed) rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(row));
    std::sort(placed.begin(), placed.end(), [](const auto& lhs, const auto& rhs) { return lhs.first < rhs.first; });
    for (const auto& [row, object] : placed) rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(row), object);
    EXPECT_EQ(rows, rowsAfter) << "the events do not turn the old list into the new one";
    changes.insert(changes.end(), batch.begin(), batch.end());
  }

  std::vector<std::string> calls;
  std::vector<RecordedChange> changes;
  std::vector<std::shared_ptr<ManagedObject>> rowsBefore;

 private:
  std::vector<RecordedChange> batch;
};

std::shared_ptr<ManagedObject> addSession(ManagedObjectContext& context, const std::string& name, double begin,
                                          bool billable = true) {
  auto session = context.insertNewObject("Session");
  session->setValue(name, "identifier");
  session->setValue(Date(begin), "begin");
  session->setValue(billable, "isBillable");
  return session;
}

// Newest first, billable only: the shape of the session list.
FetchRequest billableSessionsNewestFirst() {
  FetchRequest request("Session");
  request.predicate = Predicate::withFormat("isBillable == YES");
  request.sortDescriptors = {{"begin", false}};
  return request;
}

std::vector<std::string> names(const std::vector<std::shared_ptr<ManagedObject>>& objects) {
  std::vector<std::string> result;
  for (const auto& object : objects) result.push_back(object->stringForKey("identifier").value_or("?"));
  return result;
}

std::string describe(const std::vector<RecordedChange>& changes) {
  std::string text;
  for (const auto& change : changes) {
    text += std::to_string(rawValue(change.type)) + ":" + change.object->stringForKey("identifier").value_or("?");
    text += change.indexPath ? "@" + std::to_string(change.indexPath->row) : std::string("@-");
    text += change.newIndexPath ? ">" + std::to_string(change.newIndexPath->row) : std::string(">-");
    text += " ";
  }
  return text;
}

// Billable a, b, c at 100, 200, 300 and unbillable "off" at 250, saved.
void seed(ManagedObjectContext& context) {
  addSession(context, "a", 100);
  addSession(context, "b", 200);
  addSession(context, "c", 300);
  addSession(context, "off", 250, false);
  context.save();
}

std::shared_ptr<ManagedObject> sessionNamed(ManagedObjectContext& context, const std::string& name) {
  FetchRequest request("Session");
  request.predicate = Predicate::withFormat("identifier == %@", {Value(name)});
  auto found = context.fetch(request);
  return found.empty() ? nullptr : found.front();
}

class FetchedResultsControllerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    context = store.context;
    seed(*context);
    controller = std::make_unique<FetchedResultsController>(billableSessionsNewestFirst(), context);
    controller->setDelegate(delegate);
    controller->performFetch();
    ASSERT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"c", "b", "a"}));
  }

  std::shared_ptr<ManagedObject> named(const std::string& name) { return sessionNamed(*context, name); }

  TestStore store;
  std::shared_ptr<ManagedObjectContext> context;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::unique_ptr<FetchedResultsController> controller;
};

TEST_F(FetchedResultsControllerTest, OneSaveGivesOneBatchOfInsertDeleteMoveAndUpdateWithTheirIndexPaths) {
  auto c = named("c");
  auto b = named("b");
  auto a = named("a");
  EXPECT_EQ(controller->indexPathForObject(*a), (IndexPath{0, 2}));
  EXPECT_EQ(controller->objectAtIndexPath({0, 1}), b);

  addSession(*context, "d", 250);
  context->deleteObject(c);
  a->setValue(Date(400), "begin");
  b->setValue(12.0, "confirmedDuration");
  context->save();

  EXPECT_EQ(delegate->calls, (std::vector<std::string>{"will", "change", "change", "change", "change", "did"}));
  EXPECT_EQ(names(delegate->rowsBefore), (std::vector<std::string>{"c", "b", "a"}));
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"a", "d", "b"}));
  // Deletes at old rows, inserts at new rows, then moves, then updates.
  EXPECT_EQ(describe(delegate->changes), "2:c@0>- 1:d@->1 3:a@2>0 4:b@1>2 ");
  EXPECT_EQ(controller->indexPathForObject(*a), (IndexPath{0, 0}));
  EXPECT_EQ(controller->indexPathForObject(*c), std::nullopt);
  EXPECT_EQ(controller->objectAtIndexPath({0, 2}), b);
}

TEST_F(FetchedResultsControllerTest, ChangedSortKeysMoveOnlyWhenTheOrderAmongTheOthersChanges) {
  // Between the same neighbours: an update.
  named("b")->setValue(Date(280), "begin");
  context->save();
  EXPECT_EQ(describe(delegate->changes), "4:b@1>1 ");

  // Two neighbours that trade places both move.
  delegate->changes.clear();
  named("b")->setValue(Date(50), "begin");
  named("a")->setValue(Date(150), "begin");
  context->save();
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"c", "a", "b"}));
  EXPECT_EQ(describe(delegate->changes), "3:a@2>1 3:b@1>2 ");

  // Ending at its old row is not enough when it passed a neighbour.
  delegate->changes.clear();
  addSession(*context, "e", 500);
  named("a")->setValue(Date(400), "begin");
  context->save();
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"e", "a", "c", "b"}));
  EXPECT_EQ(describe(delegate->changes), "1:e@->0 3:a@1>1 ");
}

// Saves that miss the results call nothing; changes of the predicate's
// values take objects out and bring them in.
TEST_F(FetchedResultsControllerTest, FollowsThePredicateAndIgnoresSavesThatMissTheResults) {
  testing::makeTask(*context, "Another entity");
  named("off")->setValue(Date(260), "begin");
  addSession(*context, "also off", 10, false);
  context->save();
  EXPECT_TRUE(delegate->calls.empty());
  named("b")->setValue(false, "isBillable");
  named("off")->setValue(true, "isBillable");
  context->save();
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"c", "off", "a"}));
  EXPECT_EQ(describe(delegate->changes), "2:b@1>- 1:off@->1 ");

  // Without a delegate the list is still kept; destroyed, it hears no more.
  delegate.reset();
  context->deleteObject(named("a"));
  context->save();
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"c", "off"}));
  controller.reset();
  addSession(*context, "e", 360);
  context->save();
}

TEST_F(FetchedResultsControllerTest, PerformFetchTakesInWhatTheControllerWasNotToldAbout) {
  // A batch update tells no context; unsaved changes are not followed.
  BatchUpdateRequest unbill("Session");
  unbill.predicate = Predicate::withFormat("identifier == %@", {Value("c")});
  unbill.propertiesToUpdate = {{"isBillable", Value(false)}};
  context->execute(unbill);
  addSession(*context, "unsaved", 150);
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"c", "b", "a"}));

  context->refreshObject(named("c"), false);
  controller->performFetch();
  EXPECT_EQ(names(controller->fetchedObjects()), (std::vector<std::string>{"b", "unsaved", "a"}));
  EXPECT_TRUE(delegate->calls.empty());

  // Saving the object the fetch already holds reports it where it stands.
  context->save();
  EXPECT_EQ(describe(delegate->changes), "4:unsaved@1>1 ");
}

TEST_F(FetchedResultsControllerTest, ManyMixedSavesKeepTheListEqualToAFreshFetch) {
  // Every batch is checked by the delegate against the list it replaces;
  // here the list itself is checked against the store's own answer.
  std::mt19937 random(11);
  std::uniform_real_distribution<double> begins(0, 1'000);
  for (int round = 0; round < 40; ++round) {
    auto sessions = context->fetch(FetchRequest("Session"));
    for (int edit = 0; edit < 3; ++edit) {
      auto& session = sessions[random() % sessions.size()];
      switch (random() % 4) {
        case 0:
          addSession(*context, "n" + std::to_string(round) + "." + std::to_string(edit), begins(random),
                     random() % 2 == 0);
          break;
        case 1:
          if (!session->isDeleted() && sessions.size() > 4) context->deleteObject(session);
          break;
        case 2:
          if (!session->isDeleted()) session->setValue(Date(begins(random)), "begin");
          break;
        default:
          if (!session->isDeleted()) session->setValue(!session->boolForKey("isBillable"), "isBillable");
      }
    }
    context->save();
    ASSERT_EQ(controller->fetchedObjects(), context->fetch(billableSessionsNewestFirst())) << "after round " << round;
  }
  EXPECT_FALSE(delegate->changes.empty());
}

// The merge runs on the main loop, reports the save once (the fetch had
// seen the earlier save already), with the main context's own objects.
TEST(FetchedResultsControllerMerge, APrivateSaveMergedIntoTheMainContextIsReportedOnceWithItsObjects) {
  TestStore store;
  MainLoop loop;
  auto mainContext = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType,
                                                std::make_unique<MainContextQueue>(loop));
  mainContext->setPersistentStoreCoordinator(store.coordinator);
  mainContext->setAutomaticallyMergesChangesFromParent(true);
  seed(*store.context);
  FetchedResultsController controller(billableSessionsNewestFirst(), mainContext);
  auto delegate = std::make_shared<RecordingDelegate>();
  controller.setDelegate(delegate);
  controller.performFetch();
  auto b = controller.objectAtIndexPath({0, 1});

  std::thread writer([&store] {
    auto context = store.newContext();
    context->performAndWait([&] {
      sessionNamed(*context, "b")->setValue(Date(400), "begin");
      context->deleteObject(sessionNamed(*context, "a"));
      addSession(*context, "d", 250);
      sessionNamed(*context, "off")->setValue(Date(260), "begin");
      context->save();
    });
  });
  writer.join();
  EXPECT_TRUE(delegate->calls.empty());
  loop.poll();
  EXPECT_EQ(delegate->calls, (std::vector<std::string>{"will", "change", "change", "change", "did"}));
  EXPECT_EQ(describe(delegate->changes), "2:a@2>- 1:d@->2 3:b@1>0 ");
  EXPECT_EQ(controller.fetchedObjects()[0], b);
  for (const auto& object : controller.fetchedObjects()) EXPECT_EQ(object->managedObjectContext(), mainContext.get());
}

TEST(FetchedResultsController, AFailedFetchThrowsAndKeepsNoResults) {
  TestStore store;
  addSession(*store.context, "a", 100);
  store.context->save();
  FetchRequest request("Session");
  request.sortDescriptors = {{"noSuchKey", true}};
  FetchedResultsController controller(request, store.context);
  EXPECT_THROW(controller.performFetch(), Error);
  EXPECT_TRUE(controller.fetchedObjects().empty());
}

TEST(FetchedResultsControllerDeathTest, RequestsWithoutSortDescriptorsAreProgrammingErrors) {
  TestStore store;
  EXPECT_DEATH({ FetchedResultsController controller(FetchRequest("Session"), store.context); },
               "Fatal error: A fetched results controller needs a fetch request with at least one sort descriptor");
}

}  // namespace
}  // namespace kestrona
