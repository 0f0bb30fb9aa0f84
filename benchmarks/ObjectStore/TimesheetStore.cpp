#include "benchmarks/ObjectStore/TimesheetStore.h"

#include <unistd.h>

#include <random>
#include <string>

namespace kestrona::benchmarks {

std::shared_ptr<const ManagedObjectModel> TimesheetStore::model() {
  return ManagedObjectModel::loadNamed("Timesheet", KESTRONA_OBJECTSTORE_BENCHMARK_MODELS);
}

TimesheetStore::TimesheetStore(int sessions) {
  directory = std::filesystem::path(KESTRONA_OBJECTSTORE_BENCHMARK_SCRATCH) /
              ("timesheet-" + std::to_string(::getpid()) + "-" + std::to_string(sessions));
  std::filesystem::create_directories(directory);
  url = directory / "Store.sqlite";
  coordinator = PersistentStoreCoordinator::make(model());
  coordinator->addPersistentStore(url);
  auto context = newContext();
  std::mt19937 random(7);
  std::vector<std::shared_ptr<ManagedObject>> tasks;
  for (int i = 0; i < kTasks; ++i) {
    auto task = context->insertNewObject("Task");
    task->setValue("Task " + std::to_string(i), "name");
    task->setValue(i % 10 == 9, "archived");
    tasks.push_back(task);
  }
  const double spacing = 2 * kYear / sessions;
  for (int i = 0; i < sessions; ++i) {
    auto session = context->insertNewObject("Session");
    double begin = kStart + i * spacing;
    double duration = 600 + static_cast<double>(random() % 3000);
    session->setValue(Date(begin), "begin");
    session->setValue(Date(begin + duration), "end");
    session->setValue(duration, "confirmedDuration");
    session->setValue(duration / 36, "confirmedRevenue");
    session->setValue(Value(tasks[random() % kTasks]), "task");
    if (i % 10'000 == 9'999) {
      context->save();
      context->reset();
      for (auto& task : tasks) task = context->existingObjectWithID(task->objectID());
    }
  }
  context->save();
  for (const auto& task : tasks) taskIDs.push_back(task->objectID());
  tasks.clear();
  context.reset();
  coordinator.reset();
  coordinator = PersistentStoreCoordinator::make(model());
  coordinator->addPersistentStore(url);
}

TimesheetStore::~TimesheetStore() {
  coordinator.reset();
  std::filesystem::remove_all(directory);
}

std::shared_ptr<ManagedObjectContext> TimesheetStore::newContext() const {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
  return context;
}

}  // namespace kestrona::benchmarks
