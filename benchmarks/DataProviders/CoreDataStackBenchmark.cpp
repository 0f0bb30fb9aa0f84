// One write through the store stack, end to end: an untracked write that
// renames one task on the serial write queue, saved to the store, merged by
// the view context on the main loop, and heard there by an observer of the
// task's name. The clock stops when the observer has heard the new name.
// For comparison, the same write timed only to its completion on the queue,
// without the merge. CPU time is the whole process's, all threads.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <future>
#include <string>

#include "Platform/Bundle/Bundle.h"
#include "Platform/RunLoop/MainLoop.h"
#include "SharedCore/DataProviders/CoreDataStack.h"

namespace kestrona {
namespace {

// A stack over a new store on the build tree's disk, not /tmp: a save's
// flush must reach a disk. It holds one task, loaded in the view context.
struct StackFixture {
  StackFixture()
      : directory(std::filesystem::path(KESTRONA_STACK_BENCHMARK_SCRATCH) /
                  ("stack-benchmark-" + std::to_string(::getpid()))) {
    std::filesystem::remove_all(directory);
    stack = std::make_unique<CoreDataStack>("StackBenchmark", URL::fileURLWithPath(directory, true), "Store.sqlite",
                                            Bundle::load(std::filesystem::path(KESTRONA_STACK_BENCHMARK_MODELS)));
    auto viewContext = stack->viewContext();
    task = viewContext->insertNewObject("Task");
    task->setValue(std::string("Task"), "name");
    viewContext->save();
  }
  ~StackFixture() {
    task.reset();
    stack.reset();
    std::filesystem::remove_all(directory);
  }

  std::filesystem::path directory;
  std::unique_ptr<CoreDataStack> stack;
  std::shared_ptr<ManagedObject> task;
};

void BM_WriteUntilTheViewContextObserverHears(benchmark::State& state) {
  {
    StackFixture fixture;
    CoreDataStack& stack = *fixture.stack;
    auto& task = fixture.task;
    MainLoop& loop = MainLoop::main();
    const ManagedObjectID taskID = task->objectID();

    std::string expected;
    bool heard = false;
    auto observation = task->observe("name", KeyValueObservingOption::newValue, [&](const KeyValueChange& change) {
      if (change.newValue == Value(expected)) {
        heard = true;
        loop.stop();
      }
    });

    std::int64_t counter = 0;
    for (auto _ : state) {
      expected = "Task " + std::to_string(++counter);
      heard = false;
      stack.executeUntrackedWriteOperation([taskID, name = expected](ManagedObjectContext& context) {
        context.existingObjectWithID(taskID)->setValue(name, "name");
      });
      while (!heard) {
        loop.restart();
        loop.run();
      }
    }
    state.SetItemsProcessed(state.iterations());
  }
}
BENCHMARK(BM_WriteUntilTheViewContextObserverHears)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_WriteUntilItsCompletion(benchmark::State& state) {
  StackFixture fixture;
  const ManagedObjectID taskID = fixture.task->objectID();
  std::int64_t counter = 0;
  for (auto _ : state) {
    std::promise<void> done;
    fixture.stack->executeUntrackedWriteOperation(
        [taskID, name = "Task " + std::to_string(++counter)](ManagedObjectContext& context) {
          context.existingObjectWithID(taskID)->setValue(name, "name");
        },
        [&done](std::exception_ptr, std::optional<std::monostate>) { done.set_value(); });
    done.get_future().wait();
  }
  // The view context's merges were posted to the main loop; let them run.
  MainLoop::main().poll();
}
BENCHMARK(BM_WriteUntilItsCompletion)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
}  // namespace kestrona
