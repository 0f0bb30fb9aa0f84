// What a loaded object costs: 100,000 time entries fetched as loaded
// objects into a fresh context, with the heap the process holds for them
// afterwards and at its peak during the fetch, per object. Every C++
// allocation of this program is counted (operator new and delete are
// replaced); SQLite's own page cache is not, since it does not grow with
// the objects held.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "benchmarks/ObjectStore/TimesheetStore.h"

namespace {

std::atomic<std::size_t> liveBytes{0};
std::atomic<std::size_t> peakBytes{0};

void* counted(void* pointer) {
  if (pointer == nullptr) throw std::bad_alloc();
  std::size_t now = liveBytes.fetch_add(malloc_usable_size(pointer)) + malloc_usable_size(pointer);
  std::size_t peak = peakBytes.load();
  while (now > peak && !peakBytes.compare_exchange_weak(peak, now)) {
  }
  return pointer;
}

void released(void* pointer) noexcept {
  if (pointer == nullptr) return;
  liveBytes.fetch_sub(malloc_usable_size(pointer));
  std::free(pointer);
}

}  // namespace

void* operator new(std::size_t size) { return counted(std::malloc(size == 0 ? 1 : size)); }
void* operator new[](std::size_t size) { return counted(std::malloc(size == 0 ? 1 : size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return counted(std::aligned_alloc(static_cast<std::size_t>(alignment), size == 0 ? 1 : size));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return counted(std::aligned_alloc(static_cast<std::size_t>(alignment), size == 0 ? 1 : size));
}
void operator delete(void* pointer) noexcept { released(pointer); }
void operator delete[](void* pointer) noexcept { released(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { released(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { released(pointer); }
void operator delete(void* pointer, std::align_val_t) noexcept { released(pointer); }
void operator delete[](void* pointer, std::align_val_t) noexcept { released(pointer); }
void operator delete(void* pointer, std::size_t, std::align_val_t) noexcept { released(pointer); }
void operator delete[](void* pointer, std::size_t, std::align_val_t) noexcept { released(pointer); }

namespace kestrona {
namespace {

constexpr int kSessions = 100'000;

benchmarks::TimesheetStore& store() {
  static benchmarks::TimesheetStore instance(kSessions);
  return instance;
}

void BM_FetchAllSessionsAsLoadedObjects(benchmark::State& state) {
  auto& timesheet = store();
  FetchRequest request("Session");
  request.returnsObjectsAsFaults = false;
  std::size_t objects = 0;
  std::size_t held = 0;
  std::size_t peak = 0;
  for (auto _ : state) {
    std::size_t base = liveBytes.load();
    peakBytes.store(base);
    auto context = timesheet.newContext();
    auto fetched = context->fetch(request);
    objects = fetched.size();
    held = liveBytes.load() - base;
    peak = peakBytes.load() - base;
    state.PauseTiming();
    fetched.clear();
    context.reset();
    state.ResumeTiming();
  }
  state.counters["objects"] = static_cast<double>(objects);
  state.counters["bytesPerObject"] = static_cast<double>(held) / static_cast<double>(objects);
  state.counters["peakBytesPerObject"] = static_cast<double>(peak) / static_cast<double>(objects);
}
BENCHMARK(BM_FetchAllSessionsAsLoadedObjects)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
}  // namespace kestrona
