// A session list of 3,000 entries kept live by a fetched results controller:
// what the controller adds to a save that moves one entry, against fetching
// the whole list again, which is what it avoids.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/FetchedResultsController.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"

namespace kestrona {
namespace {

constexpr int kSessions = 3'000;
constexpr double kStart = 1'700'000'000;  // November 2023
constexpr double kSpacing = 3'600;

FetchRequest finishedSessionsNewestFirst() {
  FetchRequest request("Session");
  request.predicate = Predicate::withFormat("end != nil");
  request.sortDescriptors = {{"begin", false}};
  return request;
}

class Counter : public FetchedResultsControllerDelegate {
 public:
  void controllerDidChangeObject(FetchedResultsController&, const std::shared_ptr<ManagedObject>&,
                                 std::optional<IndexPath>, FetchedResultsChangeType,
                                 std::optional<IndexPath>) override {
    ++changes;
  }
  std::size_t changes = 0;
};

struct Fixture {
  Fixture() {
    // On the build tree's disk, not /tmp: a save's flush must reach a disk.
    directory = std::filesystem::path(KESTRONA_OBJECTSTORE_BENCHMARK_SCRATCH) /
                ("controller-benchmark-" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory);
    coordinator = PersistentStoreCoordinator::make(
        ManagedObjectModel::loadNamed("Timesheet", KESTRONA_OBJECTSTORE_BENCHMARK_MODELS));
    coordinator->addPersistentStore(directory / "Store.sqlite");
    context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    context->setPersistentStoreCoordinator(coordinator);
    for (int i = 0; i < kSessions; ++i) {
      auto session = context->insertNewObject("Session");
      double begin = kStart + i * kSpacing;
      session->setValue(Date(begin), "begin");
      session->setValue(Date(begin + 1'800), "end");
      session->setValue(1'800.0, "confirmedDuration");
    }
    context->save();
  }
  ~Fixture() {
    context.reset();
    coordinator.reset();
    std::filesystem::remove_all(directory);
  }

  std::filesystem::path directory;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::shared_ptr<ManagedObjectContext> context;
};

Fixture& fixture() {
  static Fixture made;
  return made;
}

// The controller's own work for one save that moves one session from the
// newest end of the list to the oldest and back: the did-save notification
// posted as the context posts it, without the write to the file.
void BM_ControllerTakesASaveThatMovesOneOf3000(benchmark::State& state) {
  auto& store = fixture();
  FetchedResultsController controller(finishedSessionsNewestFirst(), store.context);
  auto counter = std::make_shared<Counter>();
  controller.setDelegate(counter);
  controller.performFetch();
  auto session = controller.fetchedObjects().front();
  const Date newest = *session->dateForKey("begin");
  const Date oldest(kStart - kSpacing);
  bool atNewest = true;
  for (auto _ : state) {
    session->setValue(atNewest ? oldest : newest, "begin");
    atNewest = !atNewest;
    NotificationCenter::defaultCenter().post(std::string(NSManagedObjectContextDidSaveNotification),
                                             store.context.get(),
                                             {{std::string(NSInsertedObjectsKey), ManagedObjectSet{}},
                                              {std::string(NSUpdatedObjectsKey), ManagedObjectSet{session}},
                                              {std::string(NSDeletedObjectsKey), ManagedObjectSet{}}});
  }
  if (counter->changes != static_cast<std::size_t>(state.iterations())) state.SkipWithError("a move went unreported");
  store.context->rollback();
}
BENCHMARK(BM_ControllerTakesASaveThatMovesOneOf3000)->Unit(benchmark::kMicrosecond);

// What the controller avoids: fetching the 3,000 sessions again after a save.
void BM_FetchAgain3000(benchmark::State& state) {
  auto& store = fixture();
  FetchedResultsController controller(finishedSessionsNewestFirst(), store.context);
  controller.performFetch();
  for (auto _ : state) {
    controller.performFetch();
    benchmark::DoNotOptimize(controller.fetchedObjects().data());
  }
}
BENCHMARK(BM_FetchAgain3000)->Unit(benchmark::kMicrosecond);

// A whole save of one moved session, written to the file, with and without a
// controller on the context.
void saveMovingOneSession(benchmark::State& state, bool withController) {
  auto& store = fixture();
  std::optional<FetchedResultsController> controller;
  if (withController) {
    controller.emplace(finishedSessionsNewestFirst(), store.context);
    controller->performFetch();
  }
  FetchRequest newest = finishedSessionsNewestFirst();
  newest.fetchLimit = 1;
  auto session = store.context->fetch(newest).front();
  const Date original = *session->dateForKey("begin");
  const Date oldest(kStart - kSpacing);
  bool atOriginal = true;
  for (auto _ : state) {
    session->setValue(atOriginal ? oldest : original, "begin");
    atOriginal = !atOriginal;
    store.context->save();
  }
  if (!atOriginal) {
    session->setValue(original, "begin");
    store.context->save();
  }
}

void BM_SaveMovingOneOf3000_WithController(benchmark::State& state) { saveMovingOneSession(state, true); }
BENCHMARK(BM_SaveMovingOneOf3000_WithController)->Unit(benchmark::kMicrosecond);

void BM_SaveMovingOneOf3000_WithoutController(benchmark::State& state) { saveMovingOneSession(state, false); }
BENCHMARK(BM_SaveMovingOneOf3000_WithoutController)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kestrona
